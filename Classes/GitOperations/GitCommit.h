// GitCommit.h - request type 3 (commit).
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitOperation.h"

namespace neb {

/// Commits the staged changes, or those of the request's files, with the message in the options.
/// Without a message, git refuses: neither a message nor files are passed to it.
///
/// The result is one record with NEBSourceControlOperationRevisionKey: the second word that git
/// prints, usually the abbreviated id of the new commit ("[main 0123456] …"). For the first commit
/// of a repository ("[main (root-commit) 0123456] …") it is "(root-commit", on a detached HEAD
/// ("[detached HEAD 0123456] …") "HEAD". Absent when git printed at most one word. When there is
/// nothing to commit ("On branch main …") there is a record too, beside the error.
class GitCommitOperation : public GitOperation {
public:
    explicit GitCommitOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitCommitOperation"; }
    void parseData() override;

protected:
    /// Distinguishes a hook that refuses from failures of git.
    [[nodiscard]] std::optional<NEBSourceControlError> diagnoseFailure(
        std::string_view text) const override;
};

}  // namespace neb
