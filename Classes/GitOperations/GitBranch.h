// GitBranch.h - branches, of the repository and of another one: request types 1, 2, 25, 26, 31 and
// 32, and the second half of 36.
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitOperation.h"

namespace neb {

/// Makes the branch that the destination names, at the option
/// NEBSourceControlRequestOptionSourceLocation or else at the latest commit (type 1); deletes it,
/// by force with NEBSourceControlRequestOptionForce (type 2); or makes it so that it tracks the
/// branch of a remote that two options name (type 36, whose three names should be there; what is
/// missing is reported). No result.
class GitBranchOperation : public GitOperation {
public:
    explicit GitBranchOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitBranchOperation"; }
};

/// Names the current branch: one record with NEBSourceControlOperationNameKey. On no branch it is
/// git's own words, "(HEAD detached at 0123456)". Absent in a repository without a commit.
class GitCurrentBranchOperation : public GitOperation {
public:
    explicit GitCurrentBranchOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitCurrentBranchOperation"; }
    void parseData() override;
};

/// Lists the branches of the repository: a record with NEBSourceControlOperationNameKey for each,
/// and one more, whose name is empty, for the end of git's output. Absent in a repository without a
/// commit.
class GitListBranchesOperation : public GitOperation {
public:
    explicit GitListBranchesOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitListBranchesOperation"; }
    void parseData() override;
};

/// Lists the branches of the repository that the one file names, a remote's name or location; with
/// no file or several git chooses. A record for each with NEBSourceControlOperationRevisionKey, 12
/// characters, and NEBSourceControlOperationNameKey, and one more, without entries, for the end of
/// git's output. Empty for a repository without a branch.
class GitListRemoteBranchesOperation : public GitOperation {
public:
    explicit GitListRemoteBranchesOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override {
        return "GitListRemoteBranchesOperation";
    }
    void parseData() override;
};

}  // namespace neb
