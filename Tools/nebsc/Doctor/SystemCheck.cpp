#include <unistd.h>

#include <cerrno>

#include "Doctor/Checks.h"
#include "Platform/ErrnoText.h"
#include "Platform/FolderWatcher.h"

namespace neb::nebsc {

namespace {

/// Processes are listed in /proc (proc(5)) on Linux.
void checkProcesses(Examination& examination) {
    const std::string own = "/proc/" + std::to_string(::getpid()) + "/stat";
    if (::access(own.c_str(), R_OK) != 0) {
        examination.add(Health::note, "processes",
                        "cannot be listed, because /proc is not readable; what a cancelled command "
                        "leaves in other process groups keeps running, and so do its lock files",
                        "Mount the file system proc on /proc.");
    }
}

/// Folders are watched with inotify(7) on Linux.
void checkWatching(Examination& examination) {
    FolderWatcher watcher;
    const int failure = watcher.add("/").failure;
    if (failure == 0) {
        return;
    }
    const bool isLimit = failure == EMFILE || failure == ENOSPC;
    examination.add(
        Health::note, "watching",
        "editors are not informed of changes by other programs: " + textOfErrno(failure),
        isLimit ? "Raise fs.inotify.max_user_instances and fs.inotify.max_user_watches with sysctl."
                : "Refresh the editor after such changes.");
}

}  // namespace

void checkSystem(Examination& examination) {
    checkProcesses(examination);
    checkWatching(examination);
}

}  // namespace neb::nebsc
