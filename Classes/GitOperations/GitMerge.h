// GitMerge.h - request types 9 (merge) and 39 (merge base).
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitOperation.h"

namespace neb {

/// Merges the ending revision, or otherwise the destination, into the current branch, and resolves
/// conflicting hunks in favour of the current branch. Without either, git merges the upstream
/// branch. No result.
class GitMergeOperation : public GitOperation {
public:
    explicit GitMergeOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitMergeOperation"; }
};

/// Finds the common ancestor of the starting and the ending revision, which are both required;
/// missing ones are reported. The result is one record with NEBSourceControlOperationRevisionKey
/// (12 characters); absent when there is no common ancestor.
class GitMergeBaseOperation : public GitOperation {
public:
    explicit GitMergeBaseOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitMergeBaseOperation"; }
    void parseData() override;
};

}  // namespace neb
