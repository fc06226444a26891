// GitMerge.h - request types 9 (merge) and 39 (merge base).
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitOperation.h"

namespace neb {

/// Merges the request's ending revision, or else its destination, into the current branch; every
/// hunk in conflict is settled in favour of the current branch. Without either, git merges what the
/// branch tracks. No result.
class GitMergeOperation : public GitOperation {
public:
    explicit GitMergeOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitMergeOperation"; }
};

/// Finds the common ancestor of the starting and the ending revision. Both should be there; what is
/// missing is reported. The result is one record with NEBSourceControlOperationRevisionKey, 12
/// characters; absent when git printed nothing, as the two have no common ancestor.
class GitMergeBaseOperation : public GitOperation {
public:
    explicit GitMergeBaseOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitMergeBaseOperation"; }
    void parseData() override;
};

}  // namespace neb
