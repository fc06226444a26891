// GitCommit.h - request type 3.
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitOperation.h"

namespace neb {

/// Records the staged changes, or those of the request's files, with the message of the options.
/// Without a message neither it nor the files are handed over, and git refuses for want of one.
///
/// The result is one record with NEBSourceControlOperationRevisionKey: the second word of what git
/// prints first, "[main 0123456] …", so the new commit's abbreviated name as a rule. For the first
/// commit of a repository ("[main (root-commit) 0123456] …") it is "(root-commit", for a commit on
/// no branch ("[detached HEAD 0123456] …") "HEAD". Absent when git printed nothing or one word
/// alone. What git prints when there is nothing to commit ("On branch main …") gives a record too,
/// beside the error.
class GitCommitOperation : public GitOperation {
public:
    explicit GitCommitOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitCommitOperation"; }
    void parseData() override;

protected:
    /// Tells a hook that refuses from git's own failures, whatever it prints.
    [[nodiscard]] std::optional<NEBSourceControlError> diagnoseFailure(
        std::string_view text) const override;
};

}  // namespace neb
