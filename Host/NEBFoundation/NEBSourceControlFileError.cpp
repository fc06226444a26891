#include "NEBFoundation/NEBSourceControlFileError.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"

namespace neb {

namespace {

struct Row {
    int errorNumber;
    std::string_view errorClass;
};

constexpr Row rows[] = {
    {EACCES, "permission-denied"},
    {EPERM, "permission-denied"},
    {EROFS, "permission-denied"},
    {ENOSPC, "disk-full"},
    {EDQUOT, "disk-full"},
    {EEXIST, "destination-exists"},
    {ENOENT, "path-unknown"},
    {ENOTDIR, "path-unknown"},
    {ENAMETOOLONG, "path-invalid"},
    {EINVAL, "path-invalid"},
    {ECANCELED, NEBSourceControlCancelledErrorClass.text()},
};

}  // namespace

NEBSourceControlError NEBSourceControlErrorFromFileFailure(const FileFailure& failure) {
    auto error = NEBSourceControlError::withDescription(failure.errorNumber, failure.description);
    error.domain = NEBPOSIXErrorDomain.text();
    const auto* row = std::find_if(
        std::begin(rows), std::end(rows),
        [&failure](const Row& candidate) { return candidate.errorNumber == failure.errorNumber; });
    error.errorClass =
        row != std::end(rows) ? row->errorClass : NEBSourceControlUnknownErrorClass.text();
    return error;
}

}  // namespace neb
