// Paths.h - the current folder, and what the paths that a person types stand for.
#pragma once

#include <optional>
#include <string>

namespace neb::nebsc {

/// A path, or why it cannot be found.
struct PathSearch {
    std::optional<std::string> path;
    /// One sentence; empty if there is a path.
    std::string failure;
};

/// Returns the absolute path of the current folder, without symbolic links.
[[nodiscard]] PathSearch findCurrentFolder();

/// Returns the absolute path of `path`, which need not exist. Follows the symbolic links on the way
/// to it, as git does, but not the last component. Drops a "/" at the end.
[[nodiscard]] PathSearch findAbsolutePath(const std::string& currentFolder,
                                          const std::string& path);

/// Returns whether anything is at the path, including a symbolic link that leads nowhere.
[[nodiscard]] bool isAnythingAt(const std::string& path);

/// Returns whether the path leads to a folder. Follows symbolic links.
[[nodiscard]] bool isFolder(const std::string& path);

/// Returns whether the path itself is a folder. Does not follow a symbolic link.
[[nodiscard]] bool isFolderItself(const std::string& path);

}  // namespace neb::nebsc
