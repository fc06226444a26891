// RepositoryScheduler.h - a scheduler that runs requests in parallel, but those that write to the
// same working copy or path one after the other, in the order of arrival. In parallel, they would
// fail because of each other's lock files or overwrite each other's output.
//
//     RepositoryScheduler scheduler(queue);
//     scheduler.add({.location = writtenLocationOf(request)}, [] { … });
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "NEBFoundation/NEBSourceControlRequest.h"
#include "Platform/Mutex.h"
#include "Platform/OperationQueue.h"

namespace neb::nebsc {

/// Returns the location that the request writes to: the top of its working copy, the path of a new
/// repository, or the destination of an export. Empty if the request names no location. Absent if
/// it only reads, or exports to a new temporary name. Reads the file system. Thread-safe.
[[nodiscard]] std::optional<std::string> writtenLocationOf(const NEBSourceControlRequest& request);

/// Decides when work runs.
struct WorkPlace {
    /// Work for one location runs one after the other. Work without a location waits for nothing.
    std::optional<std::string> location{};
    /// Whether no user waits for the work.
    bool isBackground = false;
};

/// Runs work in an operation queue, with at most one block per location at a time. Thread-safe.
///
/// Background work has a few threads of its own, so that foreground work never waits for a thread
/// because of it, and it never starves. At one location, foreground work goes before background
/// work that waits, up to mostOvertakings times.
class RepositoryScheduler {
public:
    static constexpr std::size_t backgroundThreads = 4;
    static constexpr int mostOvertakings = 16;

    /// The queue is for foreground work. It must outlive the scheduler.
    explicit RepositoryScheduler(OperationQueue& queue) : _queue(queue) {}
    RepositoryScheduler(const RepositoryScheduler&) = delete;
    RepositoryScheduler& operator=(const RepositoryScheduler&) = delete;
    /// Waits until all work is done, because it uses this object.
    ~RepositoryScheduler() { waitUntilAllWorkIsDone(); }

    /// Adds work, which must not throw. Throws std::bad_alloc; then the work does not run.
    void add(WorkPlace place, std::function<void()> work);

    /// Waits until no work is waiting or running. No other thread may add work meanwhile.
    void waitUntilAllWorkIsDone();

private:
    struct Work {
        std::function<void()> run;
        bool isBackground = false;
        int overtakings = 0;
    };

    [[nodiscard]] OperationQueue& queueFor(bool isBackground) {
        return isBackground ? _backgroundQueue : _queue;
    }
    void insert(std::deque<Work>& waiting, Work work) NEB_REQUIRES(_mutex);
    void runNext(const std::string& location);
    /// Runs the first work for the location. Returns whether the next one is background work;
    /// absent if no more is waiting.
    std::optional<bool> runFirst(const std::string& location);
    /// Removes the first work for the location. Returns the same.
    std::optional<bool> popFirst(const std::string& location);
    [[nodiscard]] bool hasWorkForLocations();

    OperationQueue& _queue;
    OperationQueue _backgroundQueue{backgroundThreads};
    Mutex _mutex;
    /// The work for each location, the running one first.
    std::map<std::string, std::deque<Work>> _waiting NEB_GUARDED_BY(_mutex);
};

}  // namespace neb::nebsc
