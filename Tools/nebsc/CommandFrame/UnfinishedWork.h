// UnfinishedWork.h - git operations in progress in a repository, such as a rebase that a conflict
// has stopped.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "CommandFrame/GitQueries.h"

namespace neb::nebsc {

struct UnfinishedWork {
    /// "a rebase"
    std::string_view work;
    /// How to resume it and how to cancel it: a sentence.
    std::string_view advice;
    /// Whether it consists of steps, of which request type 1010 knows the number.
    bool hasSteps = false;
    /// Whether it goes on after a switch to another branch.
    bool survivesSwitch = false;
};

/// Returns the operations in progress, usually none. `gitFolder` is the ".git" folder of the
/// working copy; for a linked worktree, its own one. Thread-safe.
[[nodiscard]] std::vector<UnfinishedWork> unfinishedWorkIn(const std::string& gitFolder);

/// The same for the working copy of the queries. Asks git for the folder only if it is not ".git".
[[nodiscard]] std::vector<UnfinishedWork> unfinishedWorkIn(const GitQueries& git);

}  // namespace neb::nebsc
