// GitNames.h - what git's own commands are called here, for those that have another name.
#pragma once

#include <span>
#include <string_view>

namespace neb::nebsc {

struct GitName {
    /// Behind "git".
    std::string_view nameInGit;
    /// Behind "nebsc": a command that does the same.
    std::string_view name;
};

/// All of them. What git does and nebsc does not has no row.
[[nodiscard]] std::span<const GitName> gitNames();

/// Returns the nebsc command that does what the git command does, or an empty text.
[[nodiscard]] std::string_view nameOfGitCommand(std::string_view nameInGit);

}  // namespace neb::nebsc
