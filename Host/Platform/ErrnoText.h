// ErrnoText.h - the text of an error number.
#pragma once

#include <string>

#include "Platform/Export.h"

namespace neb {

/// Returns the text of an error number from <errno.h> in the locale of the process: "No such file
/// or directory" for ENOENT. Thread-safe.
[[nodiscard]] NEB_EXPORT std::string textOfErrno(int number);

}  // namespace neb
