// Deadline.h - a time limit for running work.
//
//     const Deadline deadline(end, [&process] { process.cancel(); });
//     process.run(…);
#pragma once

#include <chrono>
#include <functional>
#include <thread>

#include "Platform/Mutex.h"

namespace neb::nebsc {

/// Calls a function if it still exists at a given time.
class Deadline {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// Calls `cancel` once, on a separate thread, if the object still exists at `end`; immediately
    /// if `end` has passed. `cancel` must not block. It is never called if no thread can be
    /// started.
    Deadline(Time end, std::function<void()> cancel);
    Deadline(const Deadline&) = delete;
    Deadline& operator=(const Deadline&) = delete;
    /// Waits for a running `cancel`; it is not called afterwards.
    ~Deadline();

private:
    Mutex _mutex;
    Condition _done;
    bool _isDone NEB_GUARDED_BY(_mutex) = false;
    std::thread _thread;
};

}  // namespace neb::nebsc
