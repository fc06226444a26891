// Trace.h - the output of --trace: a line on standard error when a child process starts and one
// when it ends.
//
//     trace 3: cd '/home/me/my project' && /usr/bin/git status --porcelain
//     trace 3: exit status 0, 2.6 ms
//
// The text after "trace 3: " of a start line can be pasted into a shell. Passwords in URLs are
// replaced.
#pragma once

#include <chrono>
#include <cstddef>

#include "NEBFoundation/NEBSourceControlCommandLog.h"
#include "Platform/Mutex.h"
#include "Platform/TerminationStatus.h"

namespace neb::nebsc {

/// Writes the trace. Thread-safe; lines of different threads do not mix.
class Trace {
public:
    /// Writes nothing if `isOn` is false.
    explicit Trace(bool isOn) : _isOn(isOn) {}
    Trace(const Trace&) = delete;
    Trace& operator=(const Trace&) = delete;

    [[nodiscard]] bool isOn() const { return _isOn; }

    /// Reports a start. Returns the number of the child process, for ended().
    std::size_t started(const NEBSourceControlCommand& command) const;
    /// Reports the end of the child process with this number.
    void ended(std::size_t number, const TerminationStatus& status,
               std::chrono::nanoseconds duration) const;

    /// Returns observers for the command log of one operation. The trace must outlive the log.
    [[nodiscard]] NEBSourceControlCommandLog::Observers observers() const;

private:
    bool _isOn;
    /// Also held while a line is written.
    mutable Mutex _mutex;
    mutable std::size_t _count NEB_GUARDED_BY(_mutex) = 0;
};

}  // namespace neb::nebsc
