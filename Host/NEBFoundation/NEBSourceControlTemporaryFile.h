// NEBSourceControlTemporaryFile.h - names for temporary files.
#pragma once

#include <string_view>

#include "LOMFoundation/LOMFilePath.h"
#include "Platform/Export.h"

namespace neb {

/// Returns an unused path in the temporary folder (TMPDIR if that exists, otherwise /tmp), named
/// after the file with a random prefix: "/tmp/3F09A1B2C4D5E6F7-main.c" for "/w/src/main.c". Each
/// call returns another path. The first occurrence of the name in the path is the one after the
/// prefix. If the name could occur in a prefix, or is too long for one, the path is in an unused
/// folder instead: "/tmp/3F09A1B2C4D5E6F7/A". Creates nothing. Thread-safe.
[[nodiscard]] NEB_EXPORT LOMFilePath
NEBSourceControl_filePathForTmpFileBasedOnFileName(std::string_view name);

}  // namespace neb
