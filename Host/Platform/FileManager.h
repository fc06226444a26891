// FileManager.h - copies files and folders, makes folders, writes texts.
//
//     FileManager manager;
//     if (const auto failure = manager.copyItem("/w/src", "/w/src2")) {
//         failure->description;   // "\"/w/src\" could not be copied to \"/w/src2\": File exists."
//     }
//
// Paths are taken as they are ("~" is a name like any other), relative ones as seen from the
// process's working directory; whoever means another folder puts it in front. A failure is
// answered, nothing is thrown for it.
#pragma once

#include <atomic>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Export.h"

namespace neb {

struct FileFailure {
    /// The system's own number, from <errno.h>.
    int errorNumber;
    /// One sentence: the path or paths concerned and the system's cause.
    std::string description;
};

/// The work is done on the calling thread; cancel() may be called from any.
class NEB_EXPORT FileManager {
public:
    /// Copies a file, a symbolic link (as a link) or a folder with all that is in it, permissions
    /// included (not its dates), to a path at which nothing is yet, in a folder that is there.
    /// Nothing is ever overwritten. The copy appears at its place once it is whole; when it fails,
    /// what had been copied until then is removed again.
    [[nodiscard]] std::optional<FileFailure> copyItem(std::string_view source,
                                                      std::string_view destination);

    /// Makes the folder and those on the way to it. One that is there already is no failure.
    [[nodiscard]] std::optional<FileFailure> createDirectory(std::string_view path);

    /// Writes the text into the file, which is made, or replaced in place, bytes as they are.
    [[nodiscard]] std::optional<FileFailure> writeText(std::string_view path,
                                                       std::string_view text);

    /// Lets a copy that runs, or comes later, fail with ECANCELED soon.
    void cancel() { _isCancelled = true; }

private:
    std::atomic<bool> _isCancelled = false;
};

}  // namespace neb
