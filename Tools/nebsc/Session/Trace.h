// Trace.h - tells on standard error which children run, a line as each starts and one as it ends.
//
//     trace 3: cd '/home/me/my project' && /usr/bin/git status --porcelain
//     trace 3: exit status 0, 2.6 ms
//
// What stands behind the number and the colon of a start can be pasted into a shell. Passwords in
// URLs are left out.
#pragma once

#include <chrono>
#include <cstddef>

#include "NEBFoundation/NEBSourceControlCommandLog.h"
#include "Platform/Mutex.h"
#include "Platform/TerminationStatus.h"

namespace neb::nebsc {

/// Every member may be called from any thread; each line is written whole.
class Trace {
public:
    /// One that is off writes nothing.
    explicit Trace(bool isOn) : _isOn(isOn) {}
    Trace(const Trace&) = delete;
    Trace& operator=(const Trace&) = delete;

    [[nodiscard]] bool isOn() const { return _isOn; }

    /// Answers the child's number, for ended().
    std::size_t started(const NEBSourceControlCommand& command) const;
    void ended(std::size_t number, const TerminationStatus& status,
               std::chrono::nanoseconds duration) const;

    /// Those of the log of one operation. The trace must outlive the log.
    [[nodiscard]] NEBSourceControlCommandLog::Observers observers() const;

private:
    bool _isOn;
    /// The lines are under it, too.
    mutable Mutex _mutex;
    mutable std::size_t _count NEB_GUARDED_BY(_mutex) = 0;
};

}  // namespace neb::nebsc
