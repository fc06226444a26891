// LimitWatch.h - finds out when a run exceeds its limits. Inside the host library only.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "Platform/ChildLimits.h"
#include "Platform/Export.h"

namespace neb {

/// Knows how long a run has taken and how much it has written. Not thread-safe.
class NEB_EXPORT LimitWatch {
public:
    using Clock = std::chrono::steady_clock;
    using Moment = Clock::time_point;

    explicit LimitWatch(const ChildLimits& limits);

    /// Notes that the children wrote `count` more bytes.
    void addOutput(std::uint64_t count, Moment now);
    /// Notes that the children were held back from `begin` to `end`.
    void addHeldBack(Moment begin, Moment end);

    /// Returns the time at which a limit will be exceeded if nothing is written until then. Absent
    /// without a limit of time.
    [[nodiscard]] std::optional<Moment> deadline() const;
    /// Returns the limit that is exceeded; absent if none is.
    [[nodiscard]] std::optional<ChildLimit> exceededLimit(Moment now) const;

private:
    ChildLimits _limits;
    Moment _start = Clock::now();  // later by the time for which the children were held back
    Moment _lastOutput = _start;
    std::uint64_t _outputBytes = 0;
};

}  // namespace neb
