// BranchQueries.h - questions to git about branches.
//
// Names are as git has them, not printable.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "CommandFrame/GitQueries.h"
#include "NEBFoundation/NEBDictionary.h"

namespace neb::nebsc {

/// What the full name of a local branch begins with.
inline constexpr std::string_view localBranchPrefix = "refs/heads/";
/// What the full name of a remote-tracking branch begins with.
inline constexpr std::string_view remoteBranchPrefix = "refs/remotes/";

/// Returns the text without the prefix, if it begins with that.
[[nodiscard]] std::string withoutPrefix(const std::string& text, std::string_view prefix);

/// Returns the printable name of the branch in a record of a branch list; empty for the record at
/// the end of the list and for git's "(no branch)".
[[nodiscard]] std::string branchNameOf(const NEBDictionary& record);

/// Returns the branch that is checked out, with or without commits; absent if HEAD is detached.
[[nodiscard]] std::optional<std::string> currentBranch(const GitQueries& git);
/// Returns a sentence that says what is checked out if that is no branch with a commit; not
/// printable.
[[nodiscard]] std::string describeHEAD(const GitQueries& git);
[[nodiscard]] bool isBranch(const GitQueries& git, const std::string& name);

/// Returns whether the repository is connected to a Subversion repository.
[[nodiscard]] bool hasSubversion(const GitQueries& git);

}  // namespace neb::nebsc
