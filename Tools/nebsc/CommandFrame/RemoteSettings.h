// RemoteSettings.h - the settings of a repository about its remotes and what its branches track.
//
// Names are as git has them, not printable.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "CommandFrame/GitQueries.h"

namespace neb::nebsc {

/// The branch of another repository that a branch is configured to track.
struct TrackedBranch {
    /// The remote's name or a URL; "." for the repository itself.
    std::string remote;
    /// Without "refs/heads/".
    std::string branch;
};

/// Reads all settings about remotes and branches with one git process, when the first one is
/// needed. Later changes are not seen. Not thread-safe.
class RemoteSettings {
public:
    /// `git` must outlive the object.
    explicit RemoteSettings(const GitQueries& git) : _git(git) {}

    /// Returns whether the repository has a remote of this name.
    [[nodiscard]] bool isRemote(const std::string& name) const;
    /// Returns the text itself if it is or could be the name of a remote, else its
    /// repositoryLocation().
    [[nodiscard]] std::string remoteOrLocation(const std::string& text) const;
    /// Returns what the branch is configured to track; absent without a remote or its branch.
    [[nodiscard]] std::optional<TrackedBranch> trackedBranchOf(const std::string& branch) const;
    /// Returns "'origin/main'", or a longer form if there is no such remote; printable.
    [[nodiscard]] std::string shownBranch(const TrackedBranch& tracked) const;

private:
    /// The last value of each setting: git-config(1) writes section and variable in lower case.
    using Values = std::map<std::string, std::string>;

    [[nodiscard]] const Values& values() const;
    [[nodiscard]] std::optional<std::string> value(const std::string& name) const;

    const GitQueries& _git;
    mutable std::optional<Values> _values;
};

}  // namespace neb::nebsc
