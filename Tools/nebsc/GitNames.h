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

/// The command of nebsc that does what the one of git does; empty where there is none.
[[nodiscard]] std::string_view nameOfGitCommand(std::string_view nameInGit);

}  // namespace neb::nebsc
