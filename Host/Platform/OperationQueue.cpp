#include "Platform/OperationQueue.h"

#include <algorithm>
#include <new>
#include <utility>

#include "Platform/Interceptor.h"
#include "Platform/SignalFreeThread.h"
#include "Platform/ThreadEnd.h"

namespace neb {

OperationQueue::OperationQueue() : OperationQueue(std::thread::hardware_concurrency()) {}

OperationQueue::OperationQueue(std::size_t width) : _width(std::max<std::size_t>(width, 1)) {}

/// Work may add work. When none is left, no other thread accesses the queue.
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
        add({.operation = std::move(operation),
             .block = {},
             .interceptor = Interceptor::ofThread()});
    }
}

void OperationQueue::addBlock(std::function<void()> block) {
    if (block) {
        add({.operation = {}, .block = std::move(block), .interceptor = Interceptor::ofThread()});
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

/// Starts another thread. If that fails, the existing threads do the work; without any, the caller
/// does it.
void OperationQueue::addThread() {
    try {
        _threads.reserve(_threads.size() + 1);  // so that push_back cannot throw
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

/// Drops exceptions, except the end of the thread.
template <typename Work>
void doWithoutExceptions(const Work& work) {
    try {
        work();
    } catch (const ThreadEnd&) {
        throw;
    } catch (...) {
        return;
    }
}

}  // namespace

/// Does the oldest work. The mutex is unlocked meanwhile.
void OperationQueue::runOne() {
    Work work = std::move(_waiting.front());
    _waiting.pop_front();
    ++_busyThreads;
    try {
        if (work.operation) {
            _running.insert(work.operation);
        }
    } catch (const std::bad_alloc&) {
        // The operation runs, but cancelAllOperations() does not find it.
    }
    _mutex.unlock();

    try {
        const Interceptor::Scope scope(work.interceptor);
        doWithoutExceptions([&work] { work.operation ? work.operation->start() : work.block(); });
    } catch (...) {  // the thread ends: replace it
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
    work = {};  // destroys the operation before a waiting thread continues
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
