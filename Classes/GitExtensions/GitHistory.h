// GitHistory.h - request type 1001 (history); see git-log(1), and the raw format in
// git-diff-tree(1).
#pragma once

#include <memory>
#include <string>

#include "GitExtensions/GitExtension.h"

namespace neb {

/// Lists commits with their parents, newest first. It starts at the starting revision or at the
/// array NEBSourceControlRequestOptionStartingRevisions, by default at HEAD, and leaves out what
/// can be reached from the ending revision or from NEBSourceControlRequestOptionExcludedRevisions.
/// Limited to commits that changed the files of the request, if there are any.
///
/// The result has a record per commit: NEBSourceControlOperationObjectIDKey,
/// NEBSourceControlOperationParentsKey (full ids; absent for a root, and at the end of a shallow
/// history, which has NEBSourceControlOperationIsGraftedKey),
/// NEBSourceControlOperationReferencesKey (full names; UTF-8 or bytes) and
/// NEBSourceControlOperationIsHEADKey, author and committer after .mailmap, each with name, e-mail,
/// time and time zone, NEBSourceControlOperationSubjectKey and NEBSourceControlOperationBodyKey.
/// Texts have U+FFFD for bytes that are not UTF-8.
///
/// With NEBSourceControlRequestOptionLogOutputFilesChanged or
/// NEBSourceControlRequestOptionLineCounts also NEBSourceControlOperationChangesKey, an array with
/// a dictionary per changed file (of a merge compared with its first parent):
/// NEBSourceControlOperationPathKey, of a renamed or copied file
/// NEBSourceControlOperationOriginalPathKey; with the first option
/// NEBSourceControlOperationStateKey, NEBSourceControlOperationSimilarityKey, modes and ids of both
/// sides; with the second one NEBSourceControlOperationAddedLinesKey and
/// NEBSourceControlOperationDeletedLinesKey, or NEBSourceControlOperationIsBinaryKey.
///
/// Further options: NEBSourceControlRequestOptionLogOutputLimit, Follow (one file), AllReferences,
/// Order ("date", "author date", "topology"), Reverse, FirstParent, RewriteParents (of files: the
/// parents are the nearest commits of the result), SearchMessage, SearchAuthor, SearchContent (each
/// a literal text), IgnoreCase, Since, Until. A repository without a commit has
/// no history: an error of the class "no-commits".
class GitHistoryOperation : public GitReadingOperation {
public:
    explicit GitHistoryOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitHistoryOperation"; }
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;

private:
    void appendSelection(std::vector<std::string>& arguments) const;
    void appendRevisions(std::vector<std::string>& arguments) const;
    [[nodiscard]] bool hasFiles() const;
    [[nodiscard]] bool isSearch() const;
};

}  // namespace neb
