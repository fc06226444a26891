// GitAnnotation.h - request type 1003 (annotation); see "The porcelain format" in git-blame(1).
#pragma once

#include <memory>
#include <string>

#include "GitExtensions/GitExtension.h"

namespace neb {

/// Finds the commit that each line of the only file of the request comes from, at the starting
/// revision or, without one, in the working copy or in the text
/// NEBSourceControlRequestOptionContent.
///
/// The result has a record per group of lines that follow each other both in the file and in the
/// commit, in the order of the file: NEBSourceControlOperationFirstLineKey,
/// NEBSourceControlOperationLineCountKey, NEBSourceControlOperationLinesKey,
/// NEBSourceControlOperationOriginalLineKey, NEBSourceControlOperationOriginalPathKey. Lines that
/// are not committed have NEBSourceControlOperationIsUncommittedKey; others
/// NEBSourceControlOperationObjectIDKey, author and committer (each with name, e-mail, time and
/// time zone), NEBSourceControlOperationSubjectKey and, where they apply,
/// NEBSourceControlOperationPreviousIDKey and NEBSourceControlOperationIsBoundaryKey. An empty file
/// has no records.
///
/// Further options: NEBSourceControlRequestOptionFirstLine, NEBSourceControlRequestOptionLastLine,
/// NEBSourceControlRequestOptionIgnoreWhiteSpace, NEBSourceControlRequestOptionDetectMoves,
/// NEBSourceControlRequestOptionDetectCopies.
class GitAnnotationOperation : public GitReadingOperation {
public:
    explicit GitAnnotationOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitAnnotationOperation"; }
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;
};

}  // namespace neb
