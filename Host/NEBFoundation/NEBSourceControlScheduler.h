// NEBSourceControlScheduler.h - runs operations in parallel, but those that write to the same place
// one after the other. In parallel, they would fail because of each other's lock files or overwrite
// each other's output.
//
//     NEBSourceControlScheduler scheduler;
//     const auto ticket = scheduler.addOperation(operation, [operation] {
//     show(operation->result()); }); scheduler.cancel(ticket);                 // if it still waits
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "NEBFoundation/NEBSourceControlOperation.h"
#include "NEBFoundation/NEBSourceControlRequest.h"
#include "Platform/Export.h"
#include "Platform/Mutex.h"
#include "Platform/OperationQueue.h"

namespace neb {

/// Returns the places that a request writes to, for NEBSourceControlWork::places. Empty if it only
/// reads, or exports to a new temporary file.
///
/// A request that changes something writes to the index of its worktree. Unless it changes nothing
/// but the index and files, it also writes to the references and settings of the repository, which
/// all its linked worktrees share. A repository and its submodules count as one there, because some
/// commands work in both. An export writes to its destination; a new repository, to its path; a
/// request without a location, to the place "".
///
/// Reads the file system. Throws only std::bad_alloc. Thread-safe.
[[nodiscard]] NEB_EXPORT std::vector<std::string> NEBSourceControlWrittenPlaces(
    const NEBSourceControlRequest& request);

/// Describes work for a scheduler.
struct NEBSourceControlWork {
    /// Work with a place in common runs one after the other. Work without places waits for nothing
    /// but a thread.
    std::vector<std::string> places{};
    /// Whether no user waits for it.
    bool isBackground = false;
};

/// Runs work on threads of its own. Thread-safe.
///
/// - Work with a place in common runs in the order in which it was added. Work that waits delays
///   later work with the same place, so that none starves.
/// - Foreground work overtakes background work that waits, up to mostOvertakings times for each.
/// - Background work has a few threads of its own, so that foreground work never waits for a thread
///   because of it, and it never starves.
/// - Work that is ready waits for a thread in the order in which it became ready, so that no
///   repository blocks the others.
/// - As many operations run at once as there are threads. Most have one child process at a time.
class NEB_EXPORT NEBSourceControlScheduler {
public:
    static constexpr std::size_t backgroundThreads = 4;
    static constexpr int mostOvertakings = 16;
    /// Identifies work. Never reused.
    using Ticket = std::uint64_t;

    /// Creates a scheduler that runs as much foreground work at once as the machine has cores, but
    /// at least 4.
    NEBSourceControlScheduler();
    /// `mostAtOnce`: how much foreground work runs at once. 0 means 1.
    explicit NEBSourceControlScheduler(std::size_t mostAtOnce);
    NEBSourceControlScheduler(const NEBSourceControlScheduler&) = delete;
    NEBSourceControlScheduler& operator=(const NEBSourceControlScheduler&) = delete;
    /// Waits until all work is done.
    ~NEBSourceControlScheduler();

    /// Adds work, which must not throw. It runs on any thread, on the calling one if the system can
    /// create no thread. Throws std::bad_alloc; then the work does not run.
    Ticket add(const NEBSourceControlWork& work, std::function<void()> run);

    /// Adds an operation, which runs with the places of its request, in the background if
    /// isBackgroundWork(). Then calls `finished`, which may be empty and must not throw, on the
    /// same thread. The operation must not be null. Throws std::bad_alloc; then nothing runs.
    Ticket addOperation(std::shared_ptr<NEBSourceControlOperation> operation,
                        std::function<void()> finished);

    /// Removes work that has not begun, and destroys its function. Returns false if it has begun or
    /// is done. Work that has begun ends as usual; call cancel() of its operation.
    bool cancel(Ticket ticket);

    /// Waits until no work is waiting or running. No other thread may add work meanwhile. Must not
    /// be called by work of this scheduler.
    void waitUntilAllWorkIsDone();

private:
    /// A place with work.
    struct Place {
        /// How many entries have it.
        std::size_t uses = 0;
        /// Whether work that has started has it.
        bool isHeld = false;
        /// The scan in which work that waits reserved it.
        std::uint64_t reservedIn = 0;
    };
    /// By name.
    using Places = std::map<std::string, Place>;

    /// Work, from add() to its end.
    struct Entry {
        Ticket ticket = 0;
        /// Empty once it has begun or was cancelled.
        std::function<void()> run;
        std::vector<Places::iterator> places;
        bool isBackground = false;
        /// Whether it has started.
        bool holdsPlaces = false;
        /// How many entries with a place in common were put before it.
        int overtakings = 0;
    };
    using Entries = std::list<Entry>;

    [[nodiscard]] OperationQueue& queueFor(const Entry& entry) {
        return entry.isBackground ? _backgroundQueue : _queue;
    }
    /// Adds the places to the entry. Throws std::bad_alloc; then it has none.
    void usePlaces(Entry& entry, const std::vector<std::string>& names) NEB_REQUIRES(_mutex);
    /// Removes the places from the entry.
    void releasePlaces(Entry& entry) NEB_REQUIRES(_mutex);
    [[nodiscard]] Entries::iterator positionFor(Entry& entry) NEB_REQUIRES(_mutex);
    [[nodiscard]] std::optional<Entries::iterator> takeReady(const Entry* only)
        NEB_REQUIRES(_mutex);
    [[nodiscard]] std::optional<Entries::iterator> lockAndTakeReady();
    /// Gives all work that is ready to its queue.
    void startReady();
    /// Runs work that has started, unless it was cancelled, and removes it.
    void perform(Entries::iterator entry);
    void remove(Entries& entries, Entries::iterator entry) NEB_REQUIRES(_mutex);

    Mutex _mutex;
    Condition _workWasRemoved;
    Ticket _lastTicket NEB_GUARDED_BY(_mutex) = 0;
    std::uint64_t _scan NEB_GUARDED_BY(_mutex) = 0;
    Places _places NEB_GUARDED_BY(_mutex);
    Entries _waiting NEB_GUARDED_BY(_mutex);  // in the order in which it will run
    Entries _started NEB_GUARDED_BY(_mutex);  // waits for a thread, or runs
    // Last: their threads use the members above until they have ended.
    OperationQueue _queue;
    OperationQueue _backgroundQueue{backgroundThreads};
};

}  // namespace neb
