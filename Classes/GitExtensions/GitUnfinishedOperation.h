// GitUnfinishedOperation.h - request type 1010 (unfinished operation): what a merge, rebase,
// cherry-pick, revert or bisect has left to do. The pseudo references are those of gitrevisions(7);
// the other files those that git's own git-prompt.sh reads.
#pragma once

#include <memory>
#include <string>

#include "GitExtensions/GitQuery.h"

namespace neb {

/// Reports what is under way in the working copy of the request, and what is in conflict.
///
/// The result has a record per operation, usually one: NEBSourceControlOperationKindKey ("merge",
/// "rebase", "apply", "cherry-pick", "revert", "bisect"); of a merge, cherry-pick, revert or a
/// stopped rebase NEBSourceControlOperationObjectIDKey, the commit that is being applied; of a
/// rebase or apply NEBSourceControlOperationStepKey and NEBSourceControlOperationStepCountKey; of a
/// rebase NEBSourceControlOperationBranchKey (full name; absent if none is rebased) and
/// NEBSourceControlOperationOntoKey. Then, for each path in conflict, a record with the kind
/// "conflict", NEBSourceControlOperationPathKey (from the working directory),
/// NEBSourceControlOperationConflictKey and NEBSourceControlOperationStagesKey. Empty if nothing is
/// under way.
class GitUnfinishedOperation : public GitQueryComposite {
public:
    using GitQueryComposite::GitQueryComposite;

    [[nodiscard]] std::string className() const override { return "GitUnfinishedOperation"; }
    void main() override;
};

/// Lists the paths in conflict, as above; see git-ls-files(1), --unmerged.
class GitConflictsOperation : public GitReadingOperation {
public:
    explicit GitConflictsOperation(const std::shared_ptr<NEBSourceControlRequest>& request);

    [[nodiscard]] std::string className() const override { return "GitConflictsOperation"; }
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;
};

}  // namespace neb
