#include "Doctor/SpeedExamination.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <utility>

#include "Platform/PathString.h"
#include "Platform/Text.h"

namespace neb::nebsc {

namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;

/// Returns the number in the line of git count-objects(1) that begins with the name.
long countIn(std::string_view output, std::string_view name) {
    long count = 0;
    forEachLine(output, [&](std::string_view line) {
        if (line.starts_with(name)) {
            line.remove_prefix(name.size());
            std::from_chars(line.data(), line.data() + line.size(), count);
        }
    });
    return count;
}

UserSettings settingsFor(Examination& examination, std::chrono::milliseconds limit) {
    if (examination.settings) {
        return *examination.settings;
    }
    return UserSettings(
        examination.queryWithin(limit, {"config", "--list", "--show-scope", "-z"}).output);
}

bool isWorthwhile(const std::vector<Measurement>& measurements, Milliseconds leastGain) {
    return std::any_of(measurements.begin(), measurements.end(), [&](const Measurement& one) {
        return one.now.time - one.without >= leastGain;
    });
}

}  // namespace

SpeedExamination::SpeedExamination(Examination& examination, const SpeedLimits& limits)
    : _examination(examination),
      _limits(limits),
      _end(std::chrono::steady_clock::now() + limits.whole),
      _settings(settingsFor(examination, limits.whole)),
      _maintenance(_settings, *examination.repository) {}

// ---- time -------------------------------------------------------------------------------------

std::chrono::milliseconds SpeedExamination::timeLeft() const {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        _end - std::chrono::steady_clock::now());
    return std::max(left, std::chrono::milliseconds(0));
}

bool SpeedExamination::hasTimeLeft() const {
    return timeLeft().count() > 0 && !_examination.shouldStop();
}

ChildOutcome SpeedExamination::query(std::vector<std::string> arguments) {
    ChildOutcome outcome = _examination.queryWithin(timeLeft(), std::move(arguments));
    _wasCut = _wasCut || hasTimedOut(outcome);
    return outcome;
}

std::optional<Timing> SpeedExamination::timeOf(const std::vector<std::string>& arguments) {
    constexpr int mostRuns = 5;
    std::optional<Timing> shortest;
    Milliseconds spent{0};
    for (int run = 0; run < mostRuns && spent < _limits.repetition && hasTimeLeft(); ++run) {
        const std::chrono::milliseconds limit = std::min(timeLeft(), _limits.probe);
        const ChildOutcome outcome = _examination.queryWithin(limit, arguments);
        const bool isCut = hasTimedOut(outcome);
        const Timing timing{.time = isCut ? Milliseconds(limit) : outcome.duration, .isCut = isCut};
        // A run that is cut after a complete one says nothing new.
        if (!outcome.status.isSuccess() && (!timing.isCut || shortest)) {
            break;
        }
        if (!shortest || timing.time < shortest->time) {
            shortest = timing;
        }
        spent += timing.time;
    }
    return shortest;
}

// ---- causes -----------------------------------------------------------------------------------

const ObjectCounts& SpeedExamination::objects() {
    if (!_objects) {
        const std::string output(query({"count-objects", "-v"}).output);
        _objects = {.loose = countIn(output, "count: "), .packs = countIn(output, "packs: ")};
    }
    return *_objects;
}

const std::optional<IndexFile>& SpeedExamination::index() {
    if (!_hasReadIndex) {
        const bool isSHA256 =
            trimmedOutputOf(query({"rev-parse", "--show-object-format"})) == "sha256";
        _index = indexFileAt(pathByAppendingComponent(repository().gitFolder, "index"),
                             isSHA256 ? 32 : 20);
        _hasReadIndex = true;
    }
    return _index;
}

std::vector<Measurement> SpeedExamination::measure(const Slowness& slowness) {
    const auto known = [this](const std::vector<std::string>& arguments) {
        const auto [entry, isNew] = _timings.try_emplace(arguments);
        if (isNew) {
            entry->second = timeOf(arguments);
        }
        return entry->second;
    };
    std::vector<Measurement> measurements;
    for (const Probe& probe : slowness.probes) {
        const std::optional<Timing> now = known(probe.command.arguments);
        const std::optional<Timing> floor = known(probe.floor);
        if (now && floor) {
            const Milliseconds rest = std::min(floor->time, now->time);
            measurements.push_back({.command = probe.command,
                                    .now = *now,
                                    .without = rest + probe.remainingPart * (now->time - rest)});
        }
    }
    return measurements;
}

SpeedReport SpeedExamination::report(std::chrono::milliseconds leastGain) {
    SpeedReport report;
    for (const SlowCause& cause : slowCauses()) {
        if (cause.isInWorkingCopy && repository().workingCopy.empty()) {
            continue;
        }
        _wasCut = !hasTimeLeft();
        std::optional<Slowness> slowness = _wasCut ? std::nullopt : cause.detect(*this);
        if (slowness) {
            std::vector<Measurement> measurements = measure(*slowness);
            _wasCut = measurements.empty() && !hasTimeLeft();
            if (isWorthwhile(measurements, leastGain)) {
                report.findings.push_back({.cause = &cause,
                                           .slowness = std::move(*slowness),
                                           .measurements = std::move(measurements)});
            }
        }
        if (_wasCut) {
            report.unchecked.push_back(cause.name);
        }
    }
    return report;
}

// ---- text -------------------------------------------------------------------------------------

std::string textOf(const Timing& timing) {
    const double milliseconds = timing.time.count();
    const bool isLong = milliseconds >= 999.5;
    const double value = isLong ? milliseconds / 1000 : milliseconds;
    char number[32];
    static_cast<void>(
        std::snprintf(number, sizeof number, "%.*f", isLong || value < 9.95 ? 1 : 0, value));
    return (timing.isCut ? "more than " : "") + std::string(number) + (isLong ? " s" : " ms");
}

std::string textOf(const std::vector<Measurement>& measurements) {
    std::string text;
    for (const Measurement& measurement : measurements) {
        text.append(text.empty() ? "" : "; ")
            .append(measurement.command.label + " takes " + textOf(measurement.now));
        if (measurement.now.isCut) {
            const double part = measurement.without / measurement.now.time;
            text += ", about " + std::to_string(std::lround(part * 100)) +
                    " % of that without this (estimated)";
        } else {
            text += ", about " + textOf(Timing{.time = measurement.without}) +
                    " without this (estimated)";
        }
    }
    return text;
}

}  // namespace neb::nebsc
