// RepositoryScheduler.h - a scheduler that runs requests in parallel, but those that write to the
// same working copy or path one after the other, in the order of arrival. In parallel, they would
// fail because of each other's lock files or overwrite each other's output.
//
//     RepositoryScheduler scheduler(queue);
//     scheduler.add(writtenLocationOf(request), [] { … });
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

/// Adds work to an operation queue, with at most one block per location at a time. Thread-safe.
class RepositoryScheduler {
public:
    /// The queue must outlive the scheduler.
    explicit RepositoryScheduler(OperationQueue& queue) : _queue(queue) {}
    RepositoryScheduler(const RepositoryScheduler&) = delete;
    RepositoryScheduler& operator=(const RepositoryScheduler&) = delete;
    /// Waits until the queue is empty, because its blocks use this object.
    ~RepositoryScheduler() { _queue.waitUntilAllOperationsAreFinished(); }

    /// Runs the work in the queue: without a location at once, otherwise after all earlier work for
    /// the same location. The work must not throw. Throws std::bad_alloc; then the work does not
    /// run.
    void add(std::optional<std::string> location, std::function<void()> work);

private:
    void runNext(const std::string& location);
    /// Runs the first work for the location. Returns whether more is waiting.
    bool runFirst(const std::string& location);
    /// Removes the first work for the location. Returns whether more is waiting.
    bool popFirst(const std::string& location);

    OperationQueue& _queue;
    Mutex _mutex;
    /// The work for each location, the running one first.
    std::map<std::string, std::deque<std::function<void()>>> _waiting NEB_GUARDED_BY(_mutex);
};

}  // namespace neb::nebsc
