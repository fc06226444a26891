// GitNames.h - git commands that nebsc offers under another name.
#pragma once

#include <span>
#include <string_view>

namespace neb::nebsc {

struct GitName {
    /// The command of git: "pull".
    std::string_view nameInGit;
    /// The command of nebsc that does the same: "update".
    std::string_view name;
};

/// Returns all rows. A git command without a counterpart has none.
[[nodiscard]] std::span<const GitName> gitNames();

/// Returns the nebsc command that does what the git command does, or an empty text.
[[nodiscard]] std::string_view nameOfGitCommand(std::string_view nameInGit);

}  // namespace neb::nebsc
