// MissingFolder.h - a folder that is created for work and removed if the work fails.
//
//     MissingFolder folder("/home/me/new/demo");
//     if (const auto failure = folder.make()) { … }
//     …
//     folder.keep();   // without this, the destructor removes what was created
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Platform/FileManager.h"

namespace neb::nebsc {

/// Creates a folder with its parents, and removes them again unless keep() is called. Not
/// thread-safe.
class MissingFolder {
public:
    /// Takes an absolute path.
    explicit MissingFolder(std::string path) : _path(std::move(path)) {}
    MissingFolder(const MissingFolder&) = delete;
    MissingFolder& operator=(const MissingFolder&) = delete;
    /// Calls rollBack() and ignores failures.
    ~MissingFolder() { static_cast<void>(rollBack()); }

    /// Creates the folder and its parents where nothing exists. Leaves existing files and folders
    /// alone: a file at the path is not a failure here. Returns the failure, if any.
    [[nodiscard]] std::optional<FileFailure> make();
    /// Returns whether the folder was missing or empty before make().
    [[nodiscard]] bool isNew() const { return _wasEmpty || !_made.empty(); }
    /// Makes rollBack() and the destructor do nothing.
    void keep() {
        _made.clear();
        _wasEmpty = false;
    }
    /// Removes the folder if make() created it, with its contents, and the parents that make()
    /// created if they are empty. If the folder existed and was empty, removes only its contents.
    /// Leaves everything else alone. Returns the first failure, if any.
    [[nodiscard]] std::optional<FileFailure> rollBack();

private:
    /// Returns the path without a "/" at its end.
    [[nodiscard]] std::filesystem::path target() const;

    std::filesystem::path _path;
    /// The folders that make() created, outermost first.
    std::vector<std::filesystem::path> _made;
    /// Whether the folder existed and was empty before make().
    bool _wasEmpty = false;
};

}  // namespace neb::nebsc
