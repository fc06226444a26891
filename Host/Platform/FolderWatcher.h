// FolderWatcher.h - reports what changes in folders (inotify(7)).
//
//     FolderWatcher watcher;
//     const FolderWatcher::Added added = watcher.add("/home/me/project");
//     … poll(watcher.descriptor()) …
//     for (const FolderEvent& event : watcher.takeEvents()) { … }
#pragma once

#include <string>
#include <vector>

#include "Platform/Export.h"
#include "Platform/FileDescriptor.h"

namespace neb {

/// A change in a watched folder.
struct FolderEvent {
    enum class Kind {
        /// An entry of the folder was created, removed, renamed, written or got other permissions.
        changed,
        /// The same, and the entry is a folder that is new at this name.
        folderAppeared,
        /// The watched folder itself was removed, or its file system was unmounted. It is no longer
        /// watched.
        folderRemoved,
        /// The watched folder itself was moved. It is still watched.
        folderMoved,
        /// The system dropped events: anything may have changed. Has no folder.
        eventsLost,
    };

    Kind kind;
    /// The number of the watched folder, as FolderWatcher::add() returned it.
    int folder = -1;
    /// The name of the entry. Empty for an event of the folder itself.
    std::string name{};
};

/// Watches folders, not what is below them. Not thread-safe.
class NEB_EXPORT FolderWatcher {
public:
    /// Whether the system can watch folders at all.
    [[nodiscard]] static bool isAvailable();

    /// Opens the watcher; see failure().
    FolderWatcher();

    /// Why the watcher could not be opened, as an error number: EMFILE if a limit for the user
    /// (fs.inotify.max_user_instances) or the process is reached, ENOSYS without isAvailable(). 0
    /// if it is open.
    [[nodiscard]] int failure() const { return _failure; }
    /// Becomes readable when there are events. -1 after a failure, which poll() ignores.
    [[nodiscard]] int descriptor() const { return _descriptor.get(); }

    struct Added {
        /// The number of the folder; that of the first call if the folder is already watched.
        int folder = -1;
        /// 0, or an error number: ENOENT or ENOTDIR if there is no such folder, ENOSPC if the limit
        /// for the user (fs.inotify.max_user_watches) is reached.
        int failure = 0;
    };
    /// Watches the folder until remove() or the end of this object. Does not follow a symbolic
    /// link.
    [[nodiscard]] Added add(const std::string& path);
    /// Ends the watch of a folder. Events that it has caused can still follow.
    void remove(int folder);

    /// Returns the events since the last call, in order. Does not block.
    [[nodiscard]] std::vector<FolderEvent> takeEvents();

private:
    FileDescriptor _descriptor;
    int _failure = 0;
};

}  // namespace neb
