// LockFiles.h - the lock files of a repository, and who holds them. git makes one for as long as it
// changes something; one that a git which died has left behind stops all others for ever.
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
    /// The processes that may hold it, "git (1234)": those that have it open, and the gits at work
    /// in the repository, as git closes a lock's file while hooks and editors run. Of other users'
    /// processes nothing can be known. Empty: it was left behind.
    std::vector<std::string> holders;
};

/// Those of the repository with these folders of its own and of its submodules, by path: beside the
/// index, in the objects' folders and below the references. `workingCopy` is its top; empty without
/// one. What may not be read is passed over. Nothing is changed. From any thread.
[[nodiscard]] std::vector<LockFile> findLockFiles(std::vector<std::string> gitFolders,
                                                  const std::string& workingCopy);

/// "12 s", "5 minutes", "3 hours", "2 days".
[[nodiscard]] std::string textOfAge(std::chrono::seconds age);

}  // namespace neb::nebsc
