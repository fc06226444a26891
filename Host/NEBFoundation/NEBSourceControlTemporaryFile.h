// NEBSourceControlTemporaryFile.h - names for temporary files.
#pragma once

#include <string_view>

#include "LOMFoundation/LOMFilePath.h"
#include "Platform/Export.h"

namespace neb {

/// A path in the user's temporary folder (TMPDIR, or else /tmp) at which nothing is yet, named
/// after the file with a head in front: "/tmp/3F09A1B2C4D5E6F7-main.c" for "/w/src/main.c". No two
/// calls answer the same path. Nothing is created there; whoever does removes it. From any thread.
[[nodiscard]] NEB_EXPORT LOMFilePath
NEBSourceControl_filePathForTmpFileBasedOnFileName(std::string_view name);

}  // namespace neb
