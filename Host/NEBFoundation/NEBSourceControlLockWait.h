// NEBSourceControlLockWait.h - how a run of git waits for a lock file of another process.
//
// git waits by itself for locked references; NEBSourceControlChildEnvironment() sets how long. It
// does not wait for the index and the configuration. Of these,
// - a command that locks the file before it does anything else is started again,
// - a command that locks the index later is not started while the index is locked.
//
//     NEBSourceControlLockWait wait(launches, std::chrono::seconds(2));
//     auto outcomes = process.run(launches);
//     while (const auto pause = wait.pauseAfter(outcomes)) {
//         std::this_thread::sleep_for(*pause);
//         outcomes = process.run(launches);
//     }
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "Platform/ChildProcess.h"
#include "Platform/Export.h"

namespace neb {

/// The pauses of one run: 50, 100, 200 … ms. A pipeline does not wait. Throws only std::bad_alloc.
/// Not thread-safe.
class NEB_EXPORT NEBSourceControlLockWait {
public:
    /// `mostTime` is the longest time from the first pause on; with 0, nothing waits. Refers to the
    /// launches, which must outlive this object.
    NEBSourceControlLockWait(const std::vector<ChildLaunch>& launches,
                             std::chrono::milliseconds mostTime)
        : _launches(launches), _mostTime(mostTime) {}

    /// Returns how long to wait before asking again whether git can start; absent if it can, or if
    /// the time is over. Reads the file system.
    [[nodiscard]] std::optional<std::chrono::milliseconds> pauseBeforeStart();

    /// Returns how long to wait before starting git again; absent if it did not fail because of a
    /// lock, if it may have changed something or run a hook, or if the time is over.
    [[nodiscard]] std::optional<std::chrono::milliseconds> pauseAfter(
        const std::vector<ChildOutcome>& outcomes);

private:
    [[nodiscard]] std::optional<std::chrono::milliseconds> nextPause();
    /// Returns the pause that the clock leaves; absent if the time is over.
    [[nodiscard]] std::optional<std::chrono::milliseconds> remainingPause();

    const std::vector<ChildLaunch>& _launches;
    const std::chrono::milliseconds _mostTime;
    std::chrono::milliseconds _pause{50};
    std::optional<std::chrono::steady_clock::time_point> _end;  // from the first pause on
};

}  // namespace neb
