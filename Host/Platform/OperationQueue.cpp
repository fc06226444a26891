#include "Platform/OperationQueue.h"

#include <cxxabi.h>

#include <algorithm>
#include <new>
#include <utility>

#include "Platform/SignalFreeThread.h"

namespace neb {

OperationQueue::OperationQueue() : OperationQueue(std::thread::hardware_concurrency()) {}

OperationQueue::OperationQueue(std::size_t width) : _width(std::max<std::size_t>(width, 1)) {}

/// Work may add work until none is left; from then on the threads are no longer touched by others.
OperationQueue::~OperationQueue() {
    waitUntilAllOperationsAreFinished();
    std::vector<std::thread> threads;
    {
        const MutexLock lock(_mutex);
        _closing = true;
        threads.swap(_threads);
    }
    _workCame.notify_all();
    for (std::thread& thread : threads) {
        thread.join();
    }
}

void OperationQueue::addOperation(std::shared_ptr<Operation> operation) {
    if (operation) {
        add({.operation = std::move(operation), .block = {}});
    }
}

void OperationQueue::addBlock(std::function<void()> block) {
    if (block) {
        add({.operation = {}, .block = std::move(block)});
    }
}

void OperationQueue::add(Work work) {
    MutexLock lock(_mutex);
    _waiting.push_back(std::move(work));
    const std::size_t idleThreads = _threads.size() - std::min(_busyThreads, _threads.size());
    if (idleThreads < _waiting.size() && _threads.size() < _width) {
        addThread();
    }
    if (_threads.empty()) {
        runOne();
    }
    _workCame.notify_one();
}

/// Without a further thread the work is done by those that there are, without any by the caller.
void OperationQueue::addThread() {
    try {
        _threads.reserve(_threads.size() +
                         1);  // a thread without a place in the list would go astray
    } catch (const std::bad_alloc&) {
        return;
    }
    std::thread thread = startSignalFreeThread([this] { runThread(); });
    if (thread.joinable()) {
        _threads.push_back(std::move(thread));
    }
}

void OperationQueue::runThread() {
    MutexLock lock(_mutex);
    while (true) {
        _workCame.wait(lock,
                       [this]() NEB_REQUIRES(_mutex) { return _closing || !_waiting.empty(); });
        if (_waiting.empty()) {
            return;
        }
        runOne();
    }
}

namespace {

/// Only work of the host's or a plug-in's own may throw. The thread goes on with other work, unless
/// the exception is its end (pthread_cancel, pthread_exit), which must not be kept.
template <typename Work>
void doWithoutExceptions(const Work& work) {
    try {
        work();
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (...) {
        return;
    }
}

}  // namespace

/// Does the piece of work that has waited longest. The mutex is unlocked meanwhile.
void OperationQueue::runOne() {
    Work work = std::move(_waiting.front());
    _waiting.pop_front();
    ++_busyThreads;
    try {
        if (work.operation) {
            _running.insert(work.operation);
        }
    } catch (const std::bad_alloc&) {
        // It runs all the same; cancelAllOperations() cannot see it.
    }
    _mutex.unlock();

    try {
        doWithoutExceptions([&work] {
            if (work.operation) {
                work.operation->start();
            } else {
                work.block();
            }
        });
    } catch (...) {  // the end of the thread: another takes its place
        finish(work);
        addThread();
        throw;
    }
    finish(work);
}

void OperationQueue::finish(Work& work) {
    _mutex.lock();
    if (work.operation) {
        _running.erase(work.operation);
    }
    _mutex.unlock();
    work = {};  // ours may be the last reference: what it holds is gone before anyone goes on
    _mutex.lock();
    --_busyThreads;
    if (_busyThreads == 0 && _waiting.empty()) {
        _allDone.notify_all();
    }
}

void OperationQueue::waitUntilAllOperationsAreFinished() {
    MutexLock lock(_mutex);
    _allDone.wait(lock,
                  [this]() NEB_REQUIRES(_mutex) { return _busyThreads == 0 && _waiting.empty(); });
}

void OperationQueue::cancelAllOperations() {
    std::vector<std::shared_ptr<Operation>> operations;
    {
        const MutexLock lock(_mutex);
        operations.assign(_running.begin(), _running.end());
        for (const Work& work : _waiting) {
            if (work.operation) {
                operations.push_back(work.operation);
            }
        }
    }
    for (const std::shared_ptr<Operation>& operation : operations) {
        doWithoutExceptions([&operation] { operation->cancel(); });
    }
}

}  // namespace neb
