// GitWorkingCopyState.h - request type 1000 (working copy state); see git-status(1), porcelain
// format version 2.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "GitExtensions/GitExtension.h"
#include "GitOperations/GitComposite.h"

namespace neb {

/// Reports the branch and the state of each path that differs between HEAD, the index and the
/// working copy, or is untracked; limited to the files of the request, if there are any. Paths
/// start at the top of the working copy.
///
/// The first record describes HEAD: NEBSourceControlOperationKindKey "head";
/// NEBSourceControlOperationObjectIDKey, absent before the first commit;
/// NEBSourceControlOperationNameKey, the branch, absent if HEAD is detached;
/// NEBSourceControlOperationUpstreamKey, and, if the upstream exists,
/// NEBSourceControlOperationAheadKey and NEBSourceControlOperationBehindKey;
/// NEBSourceControlOperationStashCountKey (git 2.35 or later) if there is a stash.
///
/// Each other record has NEBSourceControlOperationPathKey and a kind. "untracked" and "ignored"
/// have no more; a folder ends with "/". "changed" and "renamed" have
/// NEBSourceControlOperationIndexStateKey (the index compared with HEAD) and
/// NEBSourceControlOperationWorkingTreeStateKey (the files compared with the index), each absent
/// without a difference; NEBSourceControlOperationHEADModeKey,
/// NEBSourceControlOperationIndexModeKey and NEBSourceControlOperationWorkingTreeModeKey,
/// NEBSourceControlOperationHEADObjectIDKey and NEBSourceControlOperationIndexObjectIDKey, each
/// absent where the path does not exist. "renamed" also has
/// NEBSourceControlOperationOriginalPathKey and NEBSourceControlOperationSimilarityKey. "conflict"
/// has NEBSourceControlOperationConflictKey and NEBSourceControlOperationStagesKey. A submodule has
/// NEBSourceControlOperationIsSubmoduleKey and what changed in it:
/// NEBSourceControlOperationSubmoduleCommitChangedKey,
/// NEBSourceControlOperationSubmoduleModifiedKey and
/// NEBSourceControlOperationSubmoduleHasUntrackedKey.
///
/// Options: NEBSourceControlRequestOptionUntrackedFiles ("no", "normal" by default, "all"),
/// NEBSourceControlRequestOptionIgnoredFiles. A bare repository has no state: an error.
/// So is a branch whose file cannot be read, of the class "reference-broken".
class GitWorkingCopyStateOperation : public GitComposite<GitReadingOperation> {
public:
    explicit GitWorkingCopyStateOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitWorkingCopyStateOperation"; }
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;
    [[nodiscard]] std::optional<NEBSourceControlCommand> command() override {
        // NOLINTNEXTLINE(bugprone-parent-virtual-call): the command is the one of this operation
        return GitReadingOperation::command();
    }

protected:
    void main() override;

private:
    void failIfBranchIsBroken();

    bool _lacksBranch = false;  // set by the parser
};

}  // namespace neb
