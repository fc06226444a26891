// GitBranch.h - request types 1, 2, 25, 26, 31 and 32 (branches), and a part of 36.
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitOperation.h"

namespace neb {

/// Creates the branch `destination` at the option NEBSourceControlRequestOptionSourceLocation,
/// otherwise at HEAD (type 1); deletes it, with NEBSourceControlRequestOptionForce even if it is
/// not merged (type 2); or creates it as a tracking branch of the remote and branch in the options
/// (type 36, where all three names are required; missing ones are reported). No result.
class GitBranchOperation : public GitOperation {
public:
    explicit GitBranchOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitBranchOperation"; }
};

/// Returns the current branch: one record with NEBSourceControlOperationNameKey. For a detached
/// HEAD it is the text of git, "(HEAD detached at 0123456)". Absent in a repository without
/// commits.
class GitCurrentBranchOperation : public GitOperation {
public:
    explicit GitCurrentBranchOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitCurrentBranchOperation"; }
    void parseData() override;
};

/// Lists the local branches: a record with NEBSourceControlOperationNameKey for each, and one with
/// an empty name at the end. Absent in a repository without commits.
class GitListBranchesOperation : public GitOperation {
public:
    explicit GitListBranchesOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitListBranchesOperation"; }
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;
    void parseData() override;
};

/// Lists the branches of the remote that the only file names, by name or location; without a file,
/// or with several, git chooses the remote. A record for each with
/// NEBSourceControlOperationRevisionKey (12 characters) and NEBSourceControlOperationNameKey, and
/// an empty record at the end. Empty for a repository without branches.
class GitListRemoteBranchesOperation : public GitOperation {
public:
    explicit GitListRemoteBranchesOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override {
        return "GitListRemoteBranchesOperation";
    }
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;
};

}  // namespace neb
