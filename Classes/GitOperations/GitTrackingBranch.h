// GitTrackingBranch.h - request types 38 and 36 (upstream branches).
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitComposite.h"
#include "GitOperations/GitOperation.h"

namespace neb {

/// The base of operations that read a setting of the branch in the option
/// NEBSourceControlRequestOptionBranch. The result is one record with
/// NEBSourceControlOperationNameKey, absent when the setting is missing.
class GitBranchSettingOperation : public GitOperation {
public:
    void parseData() override;

protected:
    /// `keyFormat` is the key of the setting, with "%@" for the branch.
    GitBranchSettingOperation(std::shared_ptr<NEBSourceControlRequest> request,
                              std::string_view keyFormat);
};

/// Reads the name of the branch's remote.
class GitRemoteRefForBranchOperation : public GitBranchSettingOperation {
public:
    explicit GitRemoteRefForBranchOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override {
        return "GitRemoteRefForBranchOperation";
    }
};

/// Reads the upstream reference on the remote: "refs/heads/topic".
class GitMergeBranchForBranchOperation : public GitBranchSettingOperation {
public:
    explicit GitMergeBranchForBranchOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override {
        return "GitMergeBranchForBranchOperation";
    }
};

/// Returns the upstream branch: one record with NEBSourceControlOperationRemoteNameKey and
/// NEBSourceControlOperationNameKey, the last component of the reference. The record is empty
/// without a remote, and has only the remote without a reference.
class GitTrackingBranchNameOperation : public GitComposite<NEBSourceControlOperation> {
public:
    using GitComposite::GitComposite;

    [[nodiscard]] std::string className() const override {
        return "GitTrackingBranchNameOperation";
    }
    void main() override;
};

/// Fetches from the remote, then creates a branch that tracks a branch of the remote. No result.
class GitTrackRemoteBranchOperation : public GitComposite<GitOperation> {
public:
    using GitComposite::GitComposite;

    [[nodiscard]] std::string className() const override { return "GitTrackRemoteBranchOperation"; }
    void main() override;
};

}  // namespace neb
