// NEBSourceControlLockFile.h - a lock file of a repository, and the processes that hold it.
//
//     for (const auto& lock : NEBSourceControlExamineLockFiles({path}, {gitDirectory,
//     workingCopy})) {
//         show(lock.path, NEBSourceControlTextOfAge(lock.age), lock.holders.front().command);
//     }
//
// git creates `NAME.lock` for the duration of a change of the file `NAME`; see the technical
// documentation of git, api-lockfile. If git is killed, the orphaned file blocks all later changes.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

#include "NEBFoundation/NEBSourceControlError.h"
#include "Platform/Export.h"

namespace neb {

/// A process that may hold a lock file.
struct NEBSourceControlLockHolder {
    pid_t process = 0;
    /// The name of the program and of its command, without other arguments: "git commit".
    std::string command;
};

/// A lock file that exists.
struct NEBSourceControlLockFile {
    /// Absolute.
    std::string path;
    /// By the machine's clock; 0 for a file from the future.
    std::chrono::seconds age{0};
    /// The processes that have it open, and all git processes that run in the repository, because
    /// git closes the file while hooks and editors run. Those that have it open come first.
    /// Processes of other users are not visible. Empty if the file is orphaned, and on systems
    /// without /proc.
    std::vector<NEBSourceControlLockHolder> holders;
};

/// Returns those of the files that exist, in order. `folders` are the folders of the repository, in
/// which its git processes run; empty ones are skipped. Throws only std::bad_alloc. Thread-safe.
[[nodiscard]] NEB_EXPORT std::vector<NEBSourceControlLockFile> NEBSourceControlExamineLockFiles(
    const std::vector<std::string>& paths, const std::vector<std::string>& folders);

/// Returns an age as in "12 s", "5 minutes", "3 hours", "2 days". Thread-safe.
[[nodiscard]] NEB_EXPORT std::string NEBSourceControlTextOfAge(std::chrono::seconds age);

/// If the error is of the class "index-locked" or "ref-locked" and its text names a lock file that
/// still exists, describes the file in the recovery suggestion and in the values
/// NEBSourceControlErrorLock…Key of the user info. `folder` is the one in which git ran.
/// Thread-safe.
NEB_EXPORT void NEBSourceControlAddLockDetails(NEBSourceControlError& error,
                                               const std::string& folder);

}  // namespace neb
