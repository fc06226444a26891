// LockFiles.h - the lock files of a repository and the processes that hold them. git creates one
// for the duration of a change. If git is killed, the orphaned file blocks all later changes.
#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace neb::nebsc {

struct LockFile {
    /// Absolute.
    std::string path;
    /// By the machine's clock; 0 for one from the future.
    std::chrono::seconds age{0};
    /// The processes that may hold it, as in "git (1234)": those that have it open, and all git
    /// processes that run in the repository, because git closes the file while hooks and editors
    /// run. Processes of other users are not visible. Empty if the file is orphaned.
    std::vector<std::string> holders;
};

/// Returns the lock files of the repository with these folders and of its submodules, sorted by
/// path: next to the index, in the object folders and below refs. `workingCopy` is the top of the
/// working copy; empty for a bare repository. Skips unreadable folders. Thread-safe.
[[nodiscard]] std::vector<LockFile> findLockFiles(std::vector<std::string> gitFolders,
                                                  const std::string& workingCopy);

/// Returns an age as in "12 s", "5 minutes", "3 hours", "2 days".
[[nodiscard]] std::string textOfAge(std::chrono::seconds age);

}  // namespace neb::nebsc
