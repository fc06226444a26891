// NEBSourceControlTemporaryFile.h - names for temporary files.
#pragma once

#include <string_view>

#include "LOMFoundation/LOMFilePath.h"
#include "Platform/Export.h"

namespace neb {

/// A path in the user's temporary folder (TMPDIR where that is there, else /tmp) at which nothing
/// is yet, named after the file with a head in front: "/tmp/3F09A1B2C4D5E6F7-main.c" for
/// "/w/src/main.c". No two calls answer the same path. The head ends where the name first occurs in
/// the whole. With a name of which that could not be said, or that is too long for a head, it is
/// the plain name in a folder of its own, at which nothing is yet either:
/// "/tmp/3F09A1B2C4D5E6F7/A". Nothing is created there; whoever does removes it. From any thread.
[[nodiscard]] NEB_EXPORT LOMFilePath
NEBSourceControl_filePathForTmpFileBasedOnFileName(std::string_view name);

}  // namespace neb
