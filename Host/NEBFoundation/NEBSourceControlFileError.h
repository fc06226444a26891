// NEBSourceControlFileError.h - a file manager's failure as an error that a person is told of.
#pragma once

#include "NEBFoundation/NEBSourceControlError.h"
#include "Platform/Export.h"
#include "Platform/FileManager.h"

namespace neb {

/// The domain of errors whose code is one of the system's numbers (<errno.h>).
inline constexpr NEBConstant NEBPOSIXErrorDomain{"NEBPOSIXErrorDomain"};

/// In NEBPOSIXErrorDomain, with the system's number as the code and the failure's sentence as the
/// description. The class is that of the number: "permission-denied", "disk-full",
/// "destination-exists", "path-unknown", "path-invalid", "cancelled", else "unknown".
[[nodiscard]] NEB_EXPORT NEBSourceControlError
NEBSourceControlErrorFromFileFailure(const FileFailure& failure);

}  // namespace neb
