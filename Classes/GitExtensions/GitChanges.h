// GitChanges.h - request type 1004 (changes); see "Generating patch text with -p" in git-diff(1).
#pragma once

#include <memory>
#include <string>

#include "GitExtensions/GitExtension.h"

namespace neb {

/// Compares two states, limited to the files of the request, if there are any:
/// - by default the index with the working copy: what is not staged;
/// - with NEBSourceControlRequestOptionStaged a commit, the starting revision or HEAD, with the
///   index: what is staged;
/// - with a starting revision that commit with the working copy;
/// - with an ending revision two commits, the first by default HEAD; with
///   NEBSourceControlRequestOptionDiffFromCommonAncestor the ending revision with the common
///   ancestor of both.
/// Of a file in conflict, our side is compared with the working copy. Filters of the user that only
/// make a difference readable are not run, so that the hunks can be staged.
///
/// The result has a record per changed file: NEBSourceControlOperationPathKey,
/// NEBSourceControlOperationStateKey, of a renamed or copied file
/// NEBSourceControlOperationOriginalPathKey and NEBSourceControlOperationSimilarityKey, modes and
/// ids of both sides where the file exists, NEBSourceControlOperationAddedLinesKey,
/// NEBSourceControlOperationDeletedLinesKey and NEBSourceControlOperationHunksKey, or
/// NEBSourceControlOperationIsBinaryKey. Each hunk has NEBSourceControlOperationOldStartKey,
/// NEBSourceControlOperationOldCountKey, NEBSourceControlOperationNewStartKey,
/// NEBSourceControlOperationNewCountKey, NEBSourceControlOperationHeadingKey and
/// NEBSourceControlOperationLinesKey. A file whose type changed has two records, "deleted" and
/// "added".
///
/// Further options: NEBSourceControlRequestOptionContextLines,
/// NEBSourceControlRequestOptionIgnoreWhiteSpace.
class GitChangesOperation : public GitReadingOperation {
public:
    explicit GitChangesOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitChangesOperation"; }
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;

private:
    void appendComparison(std::vector<std::string>& arguments) const;
};

}  // namespace neb
