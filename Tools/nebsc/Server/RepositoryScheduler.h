// RepositoryScheduler.h - lets work run side by side, but of what writes to one working copy only
// one at a time, in the order in which it came: two would trip over each other's lock. The same
// holds of what writes to one path elsewhere, where one would take the other's file away.
//
//     RepositoryScheduler order(queue);
//     order.add(writtenPlaceOf(request), [] { … });
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

/// The place to which the request's operation writes: the top of its working copy, or the path
/// where one is to be, or to which it exports; empty where the request does not tell. Absent for
/// one that only reads, or exports to a name of its own. Looks at the file system. From any thread.
[[nodiscard]] std::optional<std::string> writtenPlaceOf(const NEBSourceControlRequest& request);

/// Thread-safe.
class RepositoryScheduler {
public:
    explicit RepositoryScheduler(OperationQueue& queue) : _queue(queue) {}
    RepositoryScheduler(const RepositoryScheduler&) = delete;
    RepositoryScheduler& operator=(const RepositoryScheduler&) = delete;
    /// Waits until the queue has done all its work, which uses this object.
    ~RepositoryScheduler() { _queue.waitUntilAllOperationsAreFinished(); }

    /// Lets the queue do the work: at once without a place, else when all that came before for the
    /// same place is done. The work must not throw. Throws std::bad_alloc, and then the work is not
    /// done.
    void add(std::optional<std::string> place, std::function<void()> work);

private:
    void runNext(const std::string& place);
    /// Does the first work of the place, and returns whether more of it waits.
    bool runFirst(const std::string& place);
    bool dropFirst(const std::string& place);

    OperationQueue& _queue;
    Mutex _mutex;
    /// The work of each place, the one that runs in front.
    std::map<std::string, std::deque<std::function<void()>>> _waiting NEB_GUARDED_BY(_mutex);
};

}  // namespace neb::nebsc
