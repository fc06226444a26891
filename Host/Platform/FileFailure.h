// FileFailure.h - why the system could not do something with a file.
//
//     return FileFailure::of(errno, "\"/w/src\" could not be removed");
#pragma once

#include <string>

#include "Platform/Export.h"

namespace neb {

/// A failed operation on a file or folder. A value; copies are independent.
struct NEB_EXPORT FileFailure {
    /// The error number of the system, from <errno.h>. Never 0.
    int errorNumber;
    /// One sentence with a full stop that names the paths and the reason:
    /// `"/w/src" could not be copied to "/w/src2": File exists.`
    std::string description;

    /// Returns a failure whose description is `what`, a colon and the text of the error number.
    /// `what` names the operation and its paths, without a full stop.
    static FileFailure of(int errorNumber, const std::string& what);
};

}  // namespace neb
