// GitTrackingBranch.h - which branch of a remote a branch tracks: request types 38 and 36.
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitComposite.h"
#include "GitOperations/GitOperation.h"

namespace neb {

/// The base of the questions for what is configured for the branch of the option
/// NEBSourceControlRequestOptionBranch. The result is one record with
/// NEBSourceControlOperationNameKey, absent where nothing is configured.
class GitBranchSettingOperation : public GitOperation {
public:
    void parseData() override;

protected:
    /// `keyFormat` is the setting's key with "%@" for the branch.
    GitBranchSettingOperation(std::shared_ptr<NEBSourceControlRequest> request,
                              std::string_view keyFormat);
};

/// The name of the remote that the branch belongs to.
class GitRemoteRefForBranchOperation : public GitBranchSettingOperation {
public:
    explicit GitRemoteRefForBranchOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override {
        return "GitRemoteRefForBranchOperation";
    }
};

/// The reference, on the remote, that is merged into the branch: "refs/heads/topic".
class GitMergeBranchForBranchOperation : public GitBranchSettingOperation {
public:
    explicit GitMergeBranchForBranchOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override {
        return "GitMergeBranchForBranchOperation";
    }
};

/// Names the branch that the branch tracks: one record with NEBSourceControlOperationRemoteNameKey
/// and NEBSourceControlOperationNameKey, the last component of the reference. Without a remote the
/// record has no entries, without a reference only the first.
class GitTrackingBranchNameOperation : public GitComposite<NEBSourceControlOperation> {
public:
    using GitComposite::GitComposite;

    [[nodiscard]] std::string className() const override {
        return "GitTrackingBranchNameOperation";
    }
    void main() override;
};

/// Fetches from the remote, and then makes a branch that tracks the remote's. No result.
class GitTrackRemoteBranchOperation : public GitComposite<GitOperation> {
public:
    using GitComposite::GitComposite;

    [[nodiscard]] std::string className() const override { return "GitTrackRemoteBranchOperation"; }
    void main() override;
};

}  // namespace neb
