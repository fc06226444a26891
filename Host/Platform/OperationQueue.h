// OperationQueue.h - runs operations and blocks on its own threads.
//
//     OperationQueue queue;
//     queue.addOperation(operation);
//     queue.addBlock([&] { copied = copy(); });   // runs at the same time as the operation
//     queue.waitUntilAllOperationsAreFinished();
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Mutex.h"
#include "Platform/Operation.h"

namespace neb {

class Interceptor;

/// A queue with its own threads, which start when they are needed and block all signals, so that
/// the signal handlers of the host never run on them. Work starts in the order in which it was
/// added.
///
/// Thread-safe. An operation may wait for another queue, but not for the queue that runs it.
class NEB_EXPORT OperationQueue {
public:
    /// Creates a queue with as many threads as the machine has cores.
    OperationQueue();
    /// Creates a queue with at most `width` threads. 0 means 1.
    explicit OperationQueue(std::size_t width);
    OperationQueue(const OperationQueue&) = delete;
    OperationQueue& operator=(const OperationQueue&) = delete;
    /// Waits until all work is done, and joins the threads.
    ~OperationQueue();

    /// Adds an operation and keeps a reference to it until it has finished. Does nothing for null.
    /// If the system can create no thread at all, the work is done immediately on the calling
    /// thread. An exception from start() is dropped; the operation then does not finish.
    void addOperation(std::shared_ptr<Operation> operation);
    /// Adds a function that is called once. Does nothing for an empty function. An exception from
    /// it is dropped.
    void addBlock(std::function<void()> block);
    /// Blocks until no work is waiting or running. Must not be called by work of this queue.
    void waitUntilAllOperationsAreFinished();
    /// Calls cancel() on all operations that are waiting or running. They still run to their end.
    /// Has no effect on blocks.
    void cancelAllOperations();

private:
    /// Either an operation or a block.
    struct Work {
        /// Null for a block.
        std::shared_ptr<Operation> operation;
        /// Empty for an operation.
        std::function<void()> block;
        /// That of the thread that added the work; null if it had none.
        std::shared_ptr<Interceptor> interceptor;
    };

    /// Adds work and makes sure that a thread does it, or does it on the calling thread.
    void add(Work work);
    /// Starts a thread if the system permits.
    void addThread() NEB_REQUIRES(_mutex);
    /// The function of each thread: does work until the queue is destroyed.
    void runThread();
    /// Does the oldest work.
    void runOne() NEB_REQUIRES(_mutex);
    /// Records that the work is done and destroys it.
    void finish(Work& work) NEB_ACQUIRE(_mutex);

    /// The largest number of threads, at least 1.
    const std::size_t _width;
    Mutex _mutex;
    Condition _workCame;  // or the queue is closing
    Condition _allDone;
    std::deque<Work> _waiting NEB_GUARDED_BY(_mutex);
    std::set<std::shared_ptr<Operation>> _running NEB_GUARDED_BY(_mutex);
    std::size_t _busyThreads NEB_GUARDED_BY(_mutex) = 0;
    bool _closing NEB_GUARDED_BY(_mutex) = false;
    std::vector<std::thread> _threads NEB_GUARDED_BY(_mutex);
};

}  // namespace neb
