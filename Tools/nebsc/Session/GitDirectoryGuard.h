// GitDirectoryGuard.h - keeps requests for files from changing a git directory.
//
// git mv(1), a copy and a new folder would otherwise put a file into ".git", where it could become
// a hook, a program that git runs later.
#pragma once

#include <optional>
#include <string>

#include "NEBFoundation/NEBSourceControlError.h"
#include "NEBFoundation/NEBSourceControlRequest.h"

namespace neb::nebsc {

/// What happens with a symbolic link in the last component of a path.
enum class LastLink {
    /// Its target is changed.
    isFollowed,
    /// It is changed itself, as git mv(1) moves it.
    isKept
};

/// Returns the git directory that the path is, or lies in, or would lie in; absent if it is
/// elsewhere. Follows symbolic links in all components but, if so wanted, the last. A path that has
/// the name ".git", or a folder of that name on the way from the top of its working copy, is in a
/// git directory, even if nothing is there. A relative path starts at the current folder.
/// Thread-safe.
[[nodiscard]] std::optional<std::string> gitDirectoryAround(const std::string& path, LastLink last);

/// Returns the error of a request that would create a folder (type 8), copy (10) or move (11)
/// something from or to a git directory; absent for all others. Thread-safe.
[[nodiscard]] std::optional<NEBSourceControlError> errorOfChangeInGitDirectory(
    const NEBSourceControlRequest& request);

}  // namespace neb::nebsc
