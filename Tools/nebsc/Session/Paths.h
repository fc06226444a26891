// Paths.h - the current folder, and absolute paths for the paths on the command line. Every
// function is thread-safe while the current folder does not change.
#pragma once

#include <optional>
#include <string>

namespace neb::nebsc {

/// A path, or the reason why it cannot be found.
struct PathSearch {
    std::optional<std::string> path;
    /// One sentence; empty if there is a path.
    std::string failure;
};

/// Returns the absolute path of the current folder, without symbolic links.
[[nodiscard]] PathSearch findCurrentFolder();

/// Returns the absolute path of `path`, which need not exist. Resolves symbolic links in all
/// components but the last, as git does. Removes a "/" at the end.
[[nodiscard]] PathSearch findAbsolutePath(const std::string& currentFolder,
                                          const std::string& path);

/// Returns whether anything exists at the path, including a dangling symbolic link.
[[nodiscard]] bool isAnythingAt(const std::string& path);

/// Returns whether the path is a regular file or a symbolic link to one. Opening another one, such
/// as a named pipe, could block forever.
[[nodiscard]] bool isRegularFile(const std::string& path);

/// Returns whether the path is a folder or a symbolic link to one.
[[nodiscard]] bool isFolder(const std::string& path);

/// Returns whether the path is a folder. Does not follow a symbolic link.
[[nodiscard]] bool isFolderItself(const std::string& path);

}  // namespace neb::nebsc
