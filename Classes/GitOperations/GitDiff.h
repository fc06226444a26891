// GitDiff.h - request type 30 (diff).
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitOperation.h"

namespace neb {

/// Compares the two revisions of the request; without an ending revision, the starting revision
/// with the working copy; without a starting revision, HEAD with the working copy, never with the
/// index. Limited to the request's files, if there are any. External diff programs of the user are
/// not run; textconv programs are, and what they hide is no difference. The paths of git start at
/// the top of the working copy, so the location should be that top.
///
/// The result is one record with NEBSourceControlOperationContentKey, the whole patch. With the
/// option for names and states only, it has a record per changed file, as in
/// GitOperation::parseForStatusAndPathWithLine() with the location of the source tree prepended;
/// the path of a renamed file is everything after the "R": score, TAB, old path, TAB, new path.
/// Absent in both forms when there is no difference.
class GitDiffOperation : public GitOperation {
public:
    explicit GitDiffOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitDiffOperation"; }
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;
    void parseData() override;

private:
    [[nodiscard]] std::string revisionArgument() const;

    bool _diffNameAndStatusOnly;
};

}  // namespace neb
