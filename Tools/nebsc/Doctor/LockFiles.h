// LockFiles.h - finds the lock files of a repository.
#pragma once

#include <string>
#include <vector>

#include "NEBFoundation/NEBSourceControlLockFile.h"

namespace neb::nebsc {

/// Returns the lock files of the repository with these folders and of its submodules, sorted by
/// path: next to the index, in the object folders and below refs. `workingCopy` is the top of the
/// working copy; empty for a bare repository. Skips unreadable folders. Thread-safe.
[[nodiscard]] std::vector<NEBSourceControlLockFile> findLockFiles(
    std::vector<std::string> gitFolders, const std::string& workingCopy);

}  // namespace neb::nebsc
