// GitBlame.h - request type 28 (blame).
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitOperation.h"

namespace neb {

/// Finds the commit that last changed each line of the request's only file: of the file in the
/// working copy or, if the starting revision is one of git's, of that revision. Symbolic revision
/// names stand for the working copy.
///
/// The result has a record per line with NEBSourceControlOperationRevisionKey (at most 12
/// characters), NEBSourceControlOperationAuthorKey, NEBSourceControlOperationDateKey and
/// NEBSourceControlOperationLineNumberKey (a string), as far as git printed them. An empty record
/// follows the last line. Absent when git printed nothing, as for an empty file. A line that is not
/// committed has the revision "000000000000" and the author "Not Committed Yet". Leading blanks of
/// an author are removed; an author of blanks only is missing, and is replaced with the date.
class GitBlameOperation : public GitOperation {
public:
    explicit GitBlameOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitBlameOperation"; }
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;
    void parseData() override;
};

}  // namespace neb
