// GitBlame.h - who last changed each line of a file: request type 28.
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitOperation.h"
#include "Platform/DateFormatter.h"

namespace neb {

/// Blames the request's one file, as it is in the working copy or, when the starting revision is
/// one of git's, as it was then. The host's symbolic names stand for the working copy, too.
///
/// The result has one record a line, with what could be read of it:
/// NEBSourceControlOperationRevisionKey (at most 12 characters),
/// NEBSourceControlOperationAuthorKey, NEBSourceControlOperationDateKey and
/// NEBSourceControlOperationLineNumberKey (a string). An empty record follows the last line's.
/// Absent when git printed nothing, as for an empty file. A line that is not committed yet has the
/// revision "000000000000" and the author "Not Committed Yet". An author's name is without the
/// blanks before it; one of nothing but blanks is lost, and the date then stands in its place.
class GitBlameOperation : public GitOperation {
public:
    explicit GitBlameOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitBlameOperation"; }
    void parseData() override;

private:
    [[nodiscard]] NEBDictionary recordOf(const Data& text, std::string_view line) const;

    DateFormatter _formatter;
};

}  // namespace neb
