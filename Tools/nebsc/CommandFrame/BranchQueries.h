// BranchQueries.h - questions to git about branches and remotes.
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

/// The branch of another repository that a branch is configured to track.
struct TrackedBranch {
    /// The remote's name or a URL; "." for the repository itself.
    std::string remote;
    /// Without "refs/heads/".
    std::string branch;
};

/// Returns the printable name of the branch in a record of a branch list; empty for the record at
/// the end of the list and for git's "(no branch)".
[[nodiscard]] std::string branchNameOf(const NEBDictionary& record);

/// Returns the branch that is checked out, with or without commits; absent if HEAD is detached.
[[nodiscard]] std::optional<std::string> currentBranch(const GitQueries& git);
/// Returns a sentence that says what is checked out if that is no branch with a commit; not
/// printable.
[[nodiscard]] std::string describeHEAD(const GitQueries& git);
[[nodiscard]] bool isBranch(const GitQueries& git, const std::string& name);

[[nodiscard]] bool isRemote(const GitQueries& git, const std::string& name);
/// Returns the text itself if it is or could be the name of a remote, else its
/// repositoryLocation().
[[nodiscard]] std::string remoteOrLocation(const GitQueries& git, const std::string& text);
/// Returns what the branch is configured to track; absent without a remote or its branch.
[[nodiscard]] std::optional<TrackedBranch> trackedBranchOf(const GitQueries& git,
                                                           const std::string& branch);
/// Returns "origin/main", or a longer form if there is no such remote; printable.
[[nodiscard]] std::string shownBranch(const GitQueries& git, const TrackedBranch& tracked);

/// Returns whether the repository is connected to a Subversion repository.
[[nodiscard]] bool hasSubversion(const GitQueries& git);

}  // namespace neb::nebsc
