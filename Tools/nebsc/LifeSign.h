// LifeSign.h - shows a person at a terminal that long work goes on.
//
//     {
//         const LifeSign sign("Cloning");
//         operation.start();   // after a second, and every second: "Cloning … 3 s"
//     }                        // the line is as if nothing had been
//
// The sign goes to standard error, and only where that is a terminal; elsewhere nothing is written.
// While it lives, nothing else may be written there.
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace neb::nebsc {

class LifeSign {
public:
    /// `activity` is plain ASCII. The sign is written on a thread of its own.
    explicit LifeSign(std::string_view activity);
    LifeSign(const LifeSign&) = delete;
    LifeSign& operator=(const LifeSign&) = delete;
    /// Wipes the line.
    ~LifeSign();

private:
    void show();

    std::string _activity;
    std::mutex _mutex;
    std::condition_variable _end;
    bool _isEnded = false;  // guarded by _mutex
    std::thread _thread;
};

}  // namespace neb::nebsc
