// GitCreateCommit.h - request type 1011 (create commit); see git-commit(1).
#pragma once

#include <memory>
#include <string>

#include "GitExtensions/GitChange.h"
#include "GitOperations/GitCommit.h"

namespace neb {

/// Commits the staged changes, or those of the request's files, staged or not; with the option
/// NEBSourceControlRequestOptionAll those of all tracked files. Without a message, git uses that of
/// the amended commit or of the merge that is being concluded; otherwise it refuses. Other options:
/// NEBSourceControlRequestOptionAmend, NEBSourceControlRequestOptionAuthor,
/// NEBSourceControlRequestOptionSignOff, NEBSourceControlRequestOptionAllowEmptyCommit.
///
/// The result is one record with NEBSourceControlOperationObjectIDKey, the full id of the commit.
class GitCreateCommitOperation : public GitChangeComposite {
public:
    using GitChangeComposite::GitChangeComposite;

    [[nodiscard]] std::string className() const override { return "GitCreateCommitOperation"; }

protected:
    void perform() override;
};

/// Runs the commit. No result.
class GitCommitFromInputOperation : public GitCommitOperation {
public:
    explicit GitCommitFromInputOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitCommitFromInputOperation"; }
    void parseData() override {}
};

}  // namespace neb
