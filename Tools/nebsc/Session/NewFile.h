// NewFile.h - something that is made apart and then put in a place where nothing is yet, whole or
// not at all.
//
//     NewFile file("/home/me/copy.c", "main.c");
//     if (const auto failure = file.prepare()) { … }
//     write(file.draft());                          // /home/me/.nebsc-x3Kd9a/main.c
//     if (const auto failure = file.publish()) { … }
#pragma once

#include <optional>
#include <string>

#include "Platform/FileManager.h"

namespace neb::nebsc {

/// Of one thread at a time. What was not published is removed with the object.
class NewFile {
public:
    /// The absolute path where it is to be, and the name under which it is made: a file's or a
    /// folder's.
    NewFile(std::string path, std::string draftName)
        : _path(std::move(path)), _draftName(std::move(draftName)) {}
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile();

    /// Makes a folder of its own beside the place.
    [[nodiscard]] std::optional<FileFailure> prepare();
    /// Where to make it, once prepared.
    [[nodiscard]] std::string draft() const;
    /// Moves it to its place. Fails with EEXIST when something is there by now.
    [[nodiscard]] std::optional<FileFailure> publish();

    [[nodiscard]] const std::string& path() const { return _path; }

private:
    [[nodiscard]] std::optional<FileFailure> publishPortably(const std::string& from);

    std::string _path;
    std::string _draftName;
    /// Empty until prepared.
    std::string _folder;
};

}  // namespace neb::nebsc
