// NEBSourceControlABIMismatch.h - compares stamps with the one of the host library, and reads the
// stamp of a plug-in from its file. See NEBSourceControlABIStamp.h.
#pragma once

#include <string>
#include <string_view>

#include "Platform/Export.h"

namespace neb {

/// Compares the stamp with the one of the host library. Returns the sentence "SUBJECT does not fit
/// the host library: …" that names the first difference and both values, or nothing if the stamps
/// are equal. Thread-safe.
[[nodiscard]] NEB_EXPORT std::string NEBSourceControlABIMismatch(std::string_view subject,
                                                                 std::string_view stamp);

/// What a file contains of the stamp.
struct NEBSourceControlFileStamp {
    /// Whether the file is an ELF file of this machine's kind. No other file can be loaded.
    bool isLibrary = false;
    /// Empty if the file has no stamp.
    std::string stamp;
};

/// Reads the stamp from the notes of the file, without loading it. A file that cannot be read has
/// none. Thread-safe.
[[nodiscard]] NEB_EXPORT NEBSourceControlFileStamp
NEBSourceControlStampOfFile(const std::string& path);

}  // namespace neb
