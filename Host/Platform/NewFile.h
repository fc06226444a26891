// NewFile.h - a file or folder that appears at its path complete, or not at all.
//
//     NewFile file("/home/me/copy.c", "main.c");
//     if (const auto failure = file.prepare()) { … }
//     write(file.draft());                          // /home/me/.draft-x3Kd9a/main.c
//     if (const auto failure = file.publish()) { … }
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "Platform/Export.h"
#include "Platform/FileFailure.h"

namespace neb {

/// Creates something under another name beside its path and then moves it there. Never overwrites
/// anything. The destructor removes what was not published. Not thread-safe.
class NEB_EXPORT NewFile {
public:
    /// `path` is where the file or folder will appear, in a folder that exists; `draftName` is its
    /// name until then.
    NewFile(std::string path, std::string draftName)
        : _path(std::move(path)), _draftName(std::move(draftName)) {}
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile();

    /// Creates a private folder beside the path, so on the same file system.
    [[nodiscard]] std::optional<FileFailure> prepare();
    /// The path at which to create the file or folder. Valid after prepare().
    [[nodiscard]] std::string draft() const;
    /// Moves the draft to the path. Fails with EEXIST if something exists there.
    [[nodiscard]] std::optional<FileFailure> publish();

    [[nodiscard]] const std::string& path() const { return _path; }

private:
    [[nodiscard]] std::optional<FileFailure> publishPortably(const std::string& from);

    std::string _path;
    std::string _draftName;
    std::string _folder;  // empty before prepare()
};

}  // namespace neb
