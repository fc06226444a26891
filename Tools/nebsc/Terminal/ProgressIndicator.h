// ProgressIndicator.h - shows a person at a terminal that long work goes on.
//
//     {
//         ProgressIndicator sign("Cloning", true);
//         const ProgressIndicator::Count count(sign, [&] { return log.receivedBytes(); });
//         operation.start();   // after a second, and every second: "Cloning … 3 s, 1.2 MB"
//     }                        // the line is as if nothing had been
//
// The sign goes to standard error, and only where that is a terminal; elsewhere nothing is written.
// While it lives, nothing else may be written there.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <thread>

#include "Platform/Mutex.h"

namespace neb::nebsc {

class ProgressIndicator {
public:
    /// `activity` is plain ASCII. The sign is written on a thread of its own; one that is not
    /// wanted, or for which the system has no thread, is never.
    ProgressIndicator(std::string_view activity, bool isWanted);
    ProgressIndicator(const ProgressIndicator&) = delete;
    ProgressIndicator& operator=(const ProgressIndicator&) = delete;
    /// Wipes the line.
    ~ProgressIndicator();

    /// Lets the sign tell how many bytes have come, for as long as the object lives. One at a time.
    class Count {
    public:
        /// `received` is called on the sign's thread and must not block; 0 is not shown.
        Count(ProgressIndicator& sign, std::function<std::uint64_t()> received);
        Count(const Count&) = delete;
        Count& operator=(const Count&) = delete;
        /// Afterwards `received` is not called any more.
        ~Count();

    private:
        ProgressIndicator& _sign;
    };

private:
    void show();
    [[nodiscard]] std::string text(int seconds) const NEB_REQUIRES(_mutex);

    std::string _activity;
    Mutex _mutex;
    Condition _end;
    bool _isEnded NEB_GUARDED_BY(_mutex) = false;
    std::function<std::uint64_t()> _received NEB_GUARDED_BY(_mutex);
    std::thread _thread;
};

/// "512 bytes", "1.2 kB", "3.4 MB", "5.6 GB".
[[nodiscard]] std::string textOfSize(std::uint64_t bytes);

}  // namespace neb::nebsc
