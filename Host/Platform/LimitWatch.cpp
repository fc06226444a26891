#include "Platform/LimitWatch.h"

#include <algorithm>

namespace neb {

namespace {

/// Some 30 years. A sum with a longer time could overflow.
constexpr std::chrono::milliseconds longestTime{1'000'000'000'000};

}  // namespace

LimitWatch::LimitWatch(const ChildLimits& limits) : _limits(limits) {
    for (auto* time : {&_limits.silence, &_limits.total}) {
        if (*time) {
            **time = std::min(**time, longestTime);
        }
    }
}

void LimitWatch::addOutput(std::uint64_t count, Moment now) {
    if (count > 0) {
        _outputBytes += count;
        _lastOutput = now;
    }
}

void LimitWatch::addHeldBack(Moment begin, Moment end) {
    _start += end - begin;
    _lastOutput = end;
}

std::optional<LimitWatch::Moment> LimitWatch::deadline() const {
    std::optional<Moment> deadline;
    if (_limits.total) {
        deadline = _start + *_limits.total;
    }
    if (_limits.silence) {
        const Moment end = _lastOutput + *_limits.silence;
        deadline = deadline ? std::min(*deadline, end) : end;
    }
    return deadline;
}

std::optional<ChildLimit> LimitWatch::exceededLimit(Moment now) const {
    if (_limits.outputBytes && _outputBytes > *_limits.outputBytes) {
        return ChildLimit::outputBytes;
    }
    if (_limits.total && now >= _start + *_limits.total) {
        return ChildLimit::total;
    }
    if (_limits.silence && now >= _lastOutput + *_limits.silence) {
        return ChildLimit::silence;
    }
    return std::nullopt;
}

}  // namespace neb
