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

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "Platform/Export.h"
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
    /// system gives no thread at all, the work is done at once, on the caller's.
    void addOperation(std::shared_ptr<Operation> operation);
    /// Runs the block once. It must not throw.
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
    void addThread();
    void runThread();
    void runOne(std::unique_lock<std::mutex>& lock);

    const std::size_t _width;
    std::mutex _mutex;
    std::condition_variable _workCame;
    std::condition_variable _allDone;
    // All below are guarded by _mutex.
    std::deque<Work> _waiting;
    std::set<std::shared_ptr<Operation>> _running;
    std::size_t _busyThreads = 0;
    bool _closing = false;
    std::vector<std::thread> _threads;
};

}  // namespace neb
