// Deadline.h - ends work that takes too long.
//
//     const Deadline deadline(end, [&process] { process.cancel(); });
//     process.run(…);
#pragma once

#include <chrono>
#include <functional>
#include <thread>

#include "Platform/Mutex.h"

namespace neb::nebsc {

class Deadline {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// `cancel` is called once, on a thread of its own, when the object still lives at `end`: at
    /// once where that is past. It must not block. Never called when the system has no thread.
    Deadline(Time end, std::function<void()> cancel);
    Deadline(const Deadline&) = delete;
    Deadline& operator=(const Deadline&) = delete;
    /// Afterwards `cancel` is not called any more.
    ~Deadline();

private:
    Mutex _mutex;
    Condition _done;
    bool _isDone NEB_GUARDED_BY(_mutex) = false;
    std::thread _thread;
};

}  // namespace neb::nebsc
