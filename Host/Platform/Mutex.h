// Mutex.h - the standard library's mutex, lock and condition, with what clang needs to check that a
// member is touched only under its mutex (-Wthread-safety). Other compilers see nothing of that.
//
//     mutable Mutex _mutex;
//     Condition _changed;
//     int _count NEB_GUARDED_BY(_mutex) = 0;
//
//     const MutexLock lock(_mutex);
//     ++_count;
//
//     MutexLock lock(_mutex);
//     _changed.wait(lock, [this]() NEB_REQUIRES(_mutex) { return _count > 0; });
//
// https://clang.llvm.org/docs/ThreadSafetyAnalysis.html
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#if defined(__clang__)
#define NEB_THREAD_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define NEB_THREAD_ATTRIBUTE(attribute)
#endif

/// Of a member: touched only while the mutex is locked.
#define NEB_GUARDED_BY(mutex) NEB_THREAD_ATTRIBUTE(guarded_by(mutex))
/// Of a function: called only while the mutex is locked.
#define NEB_REQUIRES(mutex) NEB_THREAD_ATTRIBUTE(requires_capability(mutex))
// Of the classes below alone.
#define NEB_CAPABILITY(name) NEB_THREAD_ATTRIBUTE(capability(name))
#define NEB_SCOPED_CAPABILITY NEB_THREAD_ATTRIBUTE(scoped_lockable)
#define NEB_ACQUIRE(...) NEB_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define NEB_RELEASE(...) NEB_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))

namespace neb {

class NEB_CAPABILITY("mutex") Mutex {
public:
    void lock() NEB_ACQUIRE() { _mutex.lock(); }
    void unlock() NEB_RELEASE() { _mutex.unlock(); }

private:
    friend class MutexLock;
    std::mutex _mutex;
};

/// Holds the mutex as long as it lives, but where it is unlocked in between.
class NEB_SCOPED_CAPABILITY MutexLock {
public:
    explicit MutexLock(Mutex& mutex) NEB_ACQUIRE(mutex) : _lock(mutex._mutex) {}
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;
    ~MutexLock() NEB_RELEASE() {}  // NOLINT(modernize-use-equals-default): for the attribute
    void lock() NEB_ACQUIRE() { _lock.lock(); }
    void unlock() NEB_RELEASE() { _lock.unlock(); }

private:
    friend class Condition;
    std::unique_lock<std::mutex> _lock;
};

/// The lock is held when a wait begins and when it has ended, and not meanwhile.
class Condition {
public:
    void notify_one() { _condition.notify_one(); }
    void notify_all() { _condition.notify_all(); }
    void wait(MutexLock& lock) { _condition.wait(lock._lock); }
    template <typename Predicate>
    void wait(MutexLock& lock, Predicate isDone) {
        _condition.wait(lock._lock, isDone);
    }
    /// False when the time ran out before the predicate held, as is the other's answer.
    template <typename Duration, typename Predicate>
    bool wait_for(MutexLock& lock, const Duration& duration, Predicate isDone) {
        return _condition.wait_for(lock._lock, duration, isDone);
    }
    void wait_until(MutexLock& lock, std::chrono::steady_clock::time_point moment) {
        _condition.wait_until(lock._lock, moment);
    }
    template <typename Predicate>
    bool wait_until(MutexLock& lock, std::chrono::steady_clock::time_point moment,
                    Predicate isDone) {
        return _condition.wait_until(lock._lock, moment, isDone);
    }

private:
    std::condition_variable _condition;
};

}  // namespace neb
