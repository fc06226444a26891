// SpeedExamination.h - what makes a repository slow, and by how much, found within a time limit.
#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Doctor/Examination.h"
#include "Doctor/GitMaintenance.h"
#include "Doctor/IndexFile.h"
#include "Doctor/SlowCause.h"

namespace neb::nebsc {

/// The duration of a git command.
struct Timing {
    std::chrono::duration<double, std::milli> time{0};
    /// Whether the command was ended at this time, so that it takes longer.
    bool isCut = false;
};

/// The effect of a cause on one command.
struct Measurement {
    TimedCommand command;
    Timing now;
    /// The estimated duration without the cause.
    std::chrono::duration<double, std::milli> without{0};
};

/// A cause that applies, with its effect.
struct SlowFinding {
    const SlowCause* cause;
    Slowness slowness;
    /// Empty if nothing could be measured.
    std::vector<Measurement> measurements;
};

struct SpeedReport {
    std::vector<SlowFinding> findings;
    /// The names of the causes for which no time was left.
    std::vector<std::string_view> unchecked;
};

struct SpeedLimits {
    /// For the whole examination.
    std::chrono::milliseconds whole;
    /// For one run of a probe.
    std::chrono::milliseconds probe;
    /// A probe is repeated, at most four times, until its runs have taken this long; the shortest
    /// counts.
    std::chrono::milliseconds repetition;
};

/// A cause that costs less is not worth a change.
inline constexpr std::chrono::milliseconds leastGainOfTuning{20};

/// The number of objects, from git count-objects(1).
struct ObjectCounts {
    long loose = 0;
    long packs = 0;
};

/// One examination of a repository. Changes nothing. Not thread-safe.
class SpeedExamination {
public:
    /// Requires `examination.repository`. `examination` must outlive the object.
    SpeedExamination(Examination& examination, const SpeedLimits& limits);

    /// Examines all causes. Omits those that cost each command less than `leastGain`.
    [[nodiscard]] SpeedReport report(std::chrono::milliseconds leastGain);
    /// Returns the duration of a git command; absent if git fails or if no time is left.
    [[nodiscard]] std::optional<Timing> timeOf(const std::vector<std::string>& arguments);
    [[nodiscard]] bool hasTimeLeft() const;

    // ---- for the rows of the table

    /// Runs git within the time limit.
    [[nodiscard]] ChildOutcome query(std::vector<std::string> arguments);
    [[nodiscard]] const UserSettings& settings() const { return _settings; }
    [[nodiscard]] const RepositoryLayout& repository() const { return *_examination.repository; }
    [[nodiscard]] const GitMaintenance& maintenance() const { return _maintenance; }
    /// Runs git at the first call only.
    [[nodiscard]] const ObjectCounts& objects();
    /// Returns the index of the working copy; absent without one. Reads it at the first call only.
    [[nodiscard]] const std::optional<IndexFile>& index();

private:
    [[nodiscard]] std::chrono::milliseconds timeLeft() const;
    [[nodiscard]] std::vector<Measurement> measure(const Slowness& slowness);

    Examination& _examination;
    const SpeedLimits _limits;
    const std::chrono::steady_clock::time_point _end;
    bool _wasCut = false;
    const UserSettings _settings;
    const GitMaintenance _maintenance;
    std::optional<ObjectCounts> _objects;
    bool _hasReadIndex = false;
    std::optional<IndexFile> _index;
    std::map<std::vector<std::string>, std::optional<Timing>> _timings;
};

/// Returns a duration as text: "3.2 ms", "345 ms", "3.5 s".
[[nodiscard]] std::string textOf(const Timing& timing);
/// Returns the effect of a cause as text: "git status takes 525 ms, about 361 ms without this".
[[nodiscard]] std::string textOf(const std::vector<Measurement>& measurements);

}  // namespace neb::nebsc
