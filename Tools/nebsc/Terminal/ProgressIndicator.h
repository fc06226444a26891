// ProgressIndicator.h - a line on the terminal that shows the progress of long work.
//
//     {
//         ProgressIndicator indicator("Cloning", true);
//         const ProgressIndicator::Count count(indicator, [&] { return log.receivedBytes(); });
//         operation.start();   // after one second, then every second: "Cloning … 3 s, 1.2 MB"
//     }                        // the line is erased
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <thread>

#include "Platform/Mutex.h"

namespace neb::nebsc {

/// Writes the progress of work to standard error, if that is a terminal; otherwise writes nothing.
/// Nothing else may write to standard error while the object exists.
class ProgressIndicator {
public:
    /// `activity` must be ASCII. A separate thread writes the line. Nothing is written if
    /// `isWanted` is false or if the thread cannot be started.
    ProgressIndicator(std::string_view activity, bool isWanted);
    ProgressIndicator(const ProgressIndicator&) = delete;
    ProgressIndicator& operator=(const ProgressIndicator&) = delete;
    /// Calls end().
    ~ProgressIndicator();

    /// Erases the line, and writes no other. Can be called repeatedly.
    void end();

    /// Erases the line while the object exists. Several may exist at a time.
    class Pause {
    public:
        explicit Pause(ProgressIndicator& indicator);
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;
        ~Pause();

    private:
        ProgressIndicator& _indicator;
    };

    /// Adds the number of received bytes to the line while the object exists. Only one object may
    /// exist at a time.
    class Count {
    public:
        /// `received` returns the number of bytes; 0 is not shown. It is called on the thread of
        /// the indicator and must not block.
        Count(ProgressIndicator& indicator, std::function<std::uint64_t()> received);
        Count(const Count&) = delete;
        Count& operator=(const Count&) = delete;
        /// Waits for a running `received`; it is not called afterwards.
        ~Count();

    private:
        ProgressIndicator& _indicator;
    };

private:
    void show();
    void erase() NEB_REQUIRES(_mutex);
    [[nodiscard]] std::string text(int seconds) const NEB_REQUIRES(_mutex);

    std::string _activity;
    Mutex _mutex;
    Condition _end;
    bool _isEnded NEB_GUARDED_BY(_mutex) = false;
    int _pauses NEB_GUARDED_BY(_mutex) = 0;
    std::size_t _width NEB_GUARDED_BY(_mutex) = 0;  // of the line on the terminal
    std::function<std::uint64_t()> _received NEB_GUARDED_BY(_mutex);
    std::thread _thread;
};

/// Returns a size as text: "512 bytes", "1.2 kB", "3.4 MB", "5.6 GB". Thread-safe.
[[nodiscard]] std::string textOfSize(std::uint64_t bytes);

}  // namespace neb::nebsc
