// ErrnoText.h - what a failed system call means, in words.
#pragma once

#include <string>

#include "Platform/Export.h"

namespace neb {

/// "No such file or directory" for ENOENT; in the language of the process. From any thread.
[[nodiscard]] NEB_EXPORT std::string textOfErrno(int number);

}  // namespace neb
