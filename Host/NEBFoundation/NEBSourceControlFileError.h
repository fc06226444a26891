// NEBSourceControlFileError.h - errors of the file system.
//
//     if (const auto failure = manager.createDirectory(path)) {
//         setError(NEBSourceControlErrorFromFileFailure(*failure));
//     }
#pragma once

#include "NEBFoundation/NEBSourceControlError.h"
#include "Platform/Export.h"
#include "Platform/FileManager.h"

namespace neb {

/// The domain of errors whose code is a number of <errno.h>.
inline constexpr NEBConstant NEBPOSIXErrorDomain{"NEBPOSIXErrorDomain"};

/// Returns a failure of the file manager as an error in NEBPOSIXErrorDomain. Its code is the errno
/// number, its description the text of the failure. Its class depends on the number:
/// "permission-denied", "disk-full", "destination-exists", "path-unknown", "path-invalid",
/// "cancelled", or "unknown". Thread-safe.
[[nodiscard]] NEB_EXPORT NEBSourceControlError
NEBSourceControlErrorFromFileFailure(const FileFailure& failure);

}  // namespace neb
