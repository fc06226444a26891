// GitWorktrees.h - request type 1017 (worktrees); see "Porcelain format" in git-worktree(1).
#pragma once

#include <memory>
#include <string>

#include "GitExtensions/GitExtension.h"

namespace neb {

/// Lists the worktrees of the repository, the main one first. Requires git 2.36 or later.
///
/// The result has a record per worktree: NEBSourceControlOperationWorktreeKey; unless it is bare or
/// has no commit, NEBSourceControlOperationObjectIDKey of its HEAD;
/// NEBSourceControlOperationBranchKey (full name) or NEBSourceControlOperationIsDetachedKey; and
/// where they apply NEBSourceControlOperationIsMainKey, NEBSourceControlOperationIsBareKey,
/// NEBSourceControlOperationIsLockedKey, NEBSourceControlOperationLockReasonKey,
/// NEBSourceControlOperationIsPrunableKey, NEBSourceControlOperationPruneReasonKey.
class GitWorktreesOperation : public GitReadingOperation {
public:
    explicit GitWorktreesOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitWorktreesOperation"; }
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;
};

}  // namespace neb
