// OperationQueue.h - runs operations and blocks on threads of its own.
//
//     OperationQueue queue;
//     queue.addOperation(operation);
//     queue.addBlock([&] { copied = copy(); });   // side by side with the operation, in no order
//     queue.waitUntilAllOperationsAreFinished();
//
// Every member may be called from any thread. An operation may wait on another queue than the one
// that runs it; each queue has its own threads, so neither starves the other.
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

class NEB_EXPORT OperationQueue {
public:
    /// As wide as the machine has cores.
    OperationQueue();
    /// At most `width` pieces of work at once; 0 counts as 1.
    explicit OperationQueue(std::size_t width);
    OperationQueue(const OperationQueue&) = delete;
    OperationQueue& operator=(const OperationQueue&) = delete;
    /// Waits until all work is done and joins the threads.
    ~OperationQueue();

    /// Shares the operation until it has finished. Without effect for an absent one. Where the
    /// system gives no thread at all, the work is done at once, on the caller's. An operation whose
    /// start() throws does not finish; the exception is dropped.
    void addOperation(std::shared_ptr<Operation> operation);
    /// Runs the block once. What it throws is dropped.
    void addBlock(std::function<void()> block);
    /// Blocks until nothing is waiting or running. Not to be called by work of this queue.
    void waitUntilAllOperationsAreFinished();
    /// Cancels all operations that wait or run. Blocks run as they are.
    void cancelAllOperations();

private:
    struct Work {
        std::shared_ptr<Operation> operation;  // either this
        std::function<void()> block;           // or this
    };

    void add(Work work);
    void addThread() NEB_REQUIRES(_mutex);
    void runThread();
    void runOne() NEB_REQUIRES(_mutex);
    void finish(Work& work) NEB_ACQUIRE(_mutex);

    const std::size_t _width;
    Mutex _mutex;
    Condition _workCame;
    Condition _allDone;
    std::deque<Work> _waiting NEB_GUARDED_BY(_mutex);
    std::set<std::shared_ptr<Operation>> _running NEB_GUARDED_BY(_mutex);
    std::size_t _busyThreads NEB_GUARDED_BY(_mutex) = 0;
    bool _closing NEB_GUARDED_BY(_mutex) = false;
    std::vector<std::thread> _threads NEB_GUARDED_BY(_mutex);
};

}  // namespace neb
