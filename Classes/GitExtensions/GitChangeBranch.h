// GitChangeBranch.h - request type 1021 (change branch); see --move and --set-upstream-to in
// git-branch(1).
#pragma once

#include <optional>
#include <string>

#include "GitExtensions/GitChange.h"

namespace neb {

/// Does what NEBSourceControlRequestOptionAction says with the local branch
/// NEBSourceControlRequestOptionBranch, without it the current one.
///
/// - "begin": checks out `destination`, a new branch without commits. The current branch, which it
///   leaves, must have none either.
/// - "rename": gives it the name `destination`, also if it has no commits yet. Another branch of
///   this name is replaced only with NEBSourceControlRequestOptionForce.
/// - "set-upstream": makes `destination`, "origin/main" or a local branch, its upstream branch.
/// - "unset-upstream": removes the upstream branch.
///
/// The result is one record: NEBSourceControlOperationNameKey, the full name; after a rename
/// NEBSourceControlOperationSourceKey, the full name before;
/// NEBSourceControlOperationObjectIDKey, unless it has no commits; and
/// NEBSourceControlOperationUpstreamKey (full name), if it has one.
class GitChangeBranchOperation : public GitChangeComposite {
public:
    using GitChangeComposite::GitChangeComposite;

    [[nodiscard]] std::string className() const override { return "GitChangeBranchOperation"; }

protected:
    void perform() override;

private:
    /// Returns the name of the branch to change. Absent if the composite does not go on.
    [[nodiscard]] std::optional<std::string> queriedBranch();
    /// Returns the short name that a value stands for: "@{-1}" is the previous branch. Absent if
    /// the composite does not go on: the name is invalid or missing.
    [[nodiscard]] std::optional<std::string> queriedName(const NEBValue& value);
    /// Returns whether the name, which may be short or symbolic, is another one of the branch.
    [[nodiscard]] bool isSameBranch(const std::string& branch, const std::string& name);
    void begin(const std::string& branch);
    void rename(const std::string& branch);
    void setUpstream(const std::string& branch);
    void unsetUpstream(const std::string& branch);
    /// Returns the record of a branch, without its source. Absent if the composite does not go on.
    [[nodiscard]] std::optional<NEBDictionary> queriedRecord(const std::string& branch);
};

}  // namespace neb
