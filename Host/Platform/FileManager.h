// FileManager.h - copies files and folders, creates folders, writes text files.
//
//     FileManager manager;
//     if (const auto failure = manager.copyItem("/w/src", "/w/src2")) {
//         failure->description;   // "\"/w/src\" could not be copied to \"/w/src2\": File exists."
//     }
//
// Paths are used as they are: "~" is an ordinary name, and a relative path starts at the working
// directory of the process. Symbolic links in the folders of a path are followed. The functions
// return a failure, or nothing on success, and throw only std::bad_alloc.
#pragma once

#include <atomic>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Export.h"
#include "Platform/FileFailure.h"

namespace neb {

/// Does its work on the calling thread. One thread may use an object at a time, except that any
/// thread may call cancel().
class NEB_EXPORT FileManager {
public:
    /// Copies a file, a symbolic link (as a link) or a folder with its contents. Permissions are
    /// copied, dates are not. `destination` must not exist, its folder must. The copy appears there
    /// when it is complete; on failure nothing remains of it.
    ///
    /// Error numbers: EEXIST if `destination` exists, EINVAL for a folder that would be copied into
    /// itself and for a path with a NUL character, ECANCELED after cancel(), ENOTSUP for a device,
    /// socket or named pipe; otherwise the system's.
    [[nodiscard]] std::optional<FileFailure> copyItem(std::string_view source,
                                                      std::string_view destination);

    /// Creates the folder and its missing parents. A folder that exists is a success.
    [[nodiscard]] std::optional<FileFailure> createDirectory(std::string_view path);

    /// Writes the bytes of the text to the file, which is created if it does not exist. Otherwise
    /// its contents are replaced in place. Fails instead of blocking when the file is a named pipe.
    [[nodiscard]] std::optional<FileFailure> writeText(std::string_view path,
                                                       std::string_view text);

    /// Makes the current copyItem() and all later ones fail with ECANCELED. Thread-safe.
    void cancel() { _isCancelled = true; }

private:
    std::atomic<bool> _isCancelled = false;
};

}  // namespace neb
