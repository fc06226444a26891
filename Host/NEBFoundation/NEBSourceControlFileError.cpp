#include "NEBFoundation/NEBSourceControlFileError.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

namespace neb {

namespace {

struct Row {
    int errorNumber;
    std::string_view errorClass;
};

constexpr Row rows[] = {
    {EACCES, NEBSourceControlPermissionDeniedErrorClass},
    {EPERM, NEBSourceControlPermissionDeniedErrorClass},
    {EROFS, NEBSourceControlPermissionDeniedErrorClass},
    {ENOSPC, NEBSourceControlDiskFullErrorClass},
    {EDQUOT, NEBSourceControlDiskFullErrorClass},
    {EEXIST, NEBSourceControlDestinationExistsErrorClass},
    {ENOENT, NEBSourceControlPathUnknownErrorClass},
    {ENOTDIR, NEBSourceControlPathUnknownErrorClass},
    {ENAMETOOLONG, NEBSourceControlPathInvalidErrorClass},
    {EINVAL, NEBSourceControlPathInvalidErrorClass},
    {ECANCELED, NEBSourceControlCancelledErrorClass},
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
