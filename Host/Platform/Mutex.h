// Mutex.h - the mutex, lock and condition variable of the standard library with the annotations for
// the thread safety analysis of clang.
//
// With clang and -Wthread-safety, the compiler reports an access to a member without its mutex.
// Other compilers ignore the annotations. The classes behave like those of the standard library.
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

/// Annotates a member that may be accessed only while the mutex is locked.
#define NEB_GUARDED_BY(mutex) NEB_THREAD_ATTRIBUTE(guarded_by(mutex))
/// Annotates a function that may be called only while the mutex is locked.
#define NEB_REQUIRES(mutex) NEB_THREAD_ATTRIBUTE(requires_capability(mutex))
/// Annotates a function that locks the mutex and returns with it locked.
#define NEB_ACQUIRE(...) NEB_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
/// Annotates a function that unlocks the mutex.
#define NEB_RELEASE(...) NEB_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
// Used only by the classes below.
#define NEB_CAPABILITY(name) NEB_THREAD_ATTRIBUTE(capability(name))
#define NEB_SCOPED_CAPABILITY NEB_THREAD_ATTRIBUTE(scoped_lockable)

namespace neb {

/// A std::mutex. Not recursive. Prefer MutexLock to lock() and unlock().
class NEB_CAPABILITY("mutex") Mutex {
public:
    /// Blocks until the mutex is locked by the calling thread.
    void lock() NEB_ACQUIRE() { _mutex.lock(); }
    /// Unlocks the mutex, which the calling thread must have locked.
    void unlock() NEB_RELEASE() { _mutex.unlock(); }

private:
    friend class MutexLock;
    std::mutex _mutex;
};

/// Locks a mutex in the constructor and unlocks it in the destructor. It may be unlocked and locked
/// again in between. Used by one thread.
class NEB_SCOPED_CAPABILITY MutexLock {
public:
    /// Blocks until the mutex is locked. The mutex must outlive this object.
    explicit MutexLock(Mutex& mutex) NEB_ACQUIRE(mutex) : _lock(mutex._mutex) {}
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;
    /// Unlocks the mutex if it is locked.
    ~MutexLock() NEB_RELEASE() {}  // NOLINT(modernize-use-equals-default): for the attribute
    /// Blocks until the mutex is locked again. Only after unlock().
    void lock() NEB_ACQUIRE() { _lock.lock(); }
    /// Unlocks the mutex before the end of the scope.
    void unlock() NEB_RELEASE() { _lock.unlock(); }

private:
    friend class Condition;
    std::unique_lock<std::mutex> _lock;
};

/// A std::condition_variable. Thread-safe. Each wait needs a locked MutexLock, unlocks it while it
/// waits, and returns with it locked.
class Condition {
public:
    /// Wakes one waiting thread.
    void notify_one() { _condition.notify_one(); }
    /// Wakes all waiting threads.
    void notify_all() { _condition.notify_all(); }
    /// Waits for a notification. May also return without one.
    void wait(MutexLock& lock) { _condition.wait(lock._lock); }
    /// Waits until the predicate is true.
    template <typename Predicate>
    void wait(MutexLock& lock, Predicate isDone) {
        _condition.wait(lock._lock, isDone);
    }
    /// Waits until the predicate is true or the time is over. Returns the value of the predicate.
    template <typename Duration, typename Predicate>
    bool wait_for(MutexLock& lock, const Duration& duration, Predicate isDone) {
        return _condition.wait_for(lock._lock, duration, isDone);
    }
    /// Waits for a notification until the given moment. May also return earlier without one.
    void wait_until(MutexLock& lock, std::chrono::steady_clock::time_point moment) {
        _condition.wait_until(lock._lock, moment);
    }
    /// Waits until the predicate is true or the moment is reached. Returns the value of the
    /// predicate.
    template <typename Predicate>
    bool wait_until(MutexLock& lock, std::chrono::steady_clock::time_point moment,
                    Predicate isDone) {
        return _condition.wait_until(lock._lock, moment, isDone);
    }

private:
    std::condition_variable _condition;
};

}  // namespace neb
