// WorkingCopyLocation.h - what a person means by the current folder and by a path.
#pragma once

#include <optional>
#include <string>

#include "Session/Interruption.h"
#include "Session/Trace.h"

namespace neb::nebsc {

struct WorkingCopyLocation {
    /// The top of the working copy; where there is none, the folder in which it was looked for, so
    /// that git itself says what is wrong.
    std::string location;
    /// The absolute path of the current folder, without symbolic links.
    std::string currentFolder;
    /// Whether there is a working copy.
    bool isWorkingCopy = false;
};

/// A path, or why there is none.
struct PathSearch {
    std::optional<std::string> path;
    /// One sentence; empty when there is a path.
    std::string failure;
};

/// The absolute path of the current folder, without symbolic links.
[[nodiscard]] PathSearch findCurrentFolder();

/// The absolute path of `path`, which need not exist any more: links on the way to it are followed,
/// as git does, but not the last one. An end "/" is dropped.
[[nodiscard]] PathSearch findAbsolutePath(const std::string& currentFolder,
                                          const std::string& path);

/// The absolute path of a repository that is in the file system, as seen from the current folder;
/// otherwise the URL (or HOST:PATH) as it is.
[[nodiscard]] std::string repositoryLocation(const std::string& currentFolder,
                                             const std::string& url);

/// The working copy in which the folder lies. A git is asked; a signal ends it.
[[nodiscard]] WorkingCopyLocation findWorkingCopy(Interruption& interruption, const Trace& trace,
                                                  const std::string& currentFolder,
                                                  const std::string& folder);

/// Whether the path is the folder or lies in it. Both are absolute.
[[nodiscard]] bool liesWithin(const std::string& path, const std::string& folder);

/// Whether anything is at the path, be it a link that leads nowhere.
[[nodiscard]] bool isAnythingAt(const std::string& path);

/// The path as the person sees it: from the current folder when that lies in the same working copy,
/// else as it is. A folder's "/" at the end stays.
[[nodiscard]] std::string pathAsSeenFrom(const WorkingCopyLocation& place, const std::string& path);

}  // namespace neb::nebsc
