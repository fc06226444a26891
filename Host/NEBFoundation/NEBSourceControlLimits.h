// NEBSourceControlLimits.h - how long an operation may take and wait, and how much git may write.
//
//     operation->setLimits({.silence = std::chrono::seconds(30)});
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "NEBFoundation/NEBSourceControlError.h"
#include "Platform/ChildLimits.h"
#include "Platform/Export.h"

namespace neb {

/// The limits of an operation. An absent member is no limit.
struct NEBSourceControlLimits {
    /// The longest time during which a child process may write nothing.
    std::optional<std::chrono::milliseconds> silence = std::nullopt;
    /// The longest time of all children of the operation together.
    std::optional<std::chrono::milliseconds> total = std::nullopt;
    /// The most bytes that each child may write to standard error and to standard output.
    std::optional<std::uint64_t> outputBytes = std::nullopt;
    /// How long each git process waits for a lock file of another process before it fails with an
    /// error of the class "index-locked" or "ref-locked". The time counts towards `total`. 0: git
    /// fails at once, or waits as its settings say.
    std::chrono::milliseconds lockWait = std::chrono::seconds(2);

    /// Returns the limits for the run of one child.
    [[nodiscard]] ChildLimits ofChild() const {
        return {.silence = silence, .total = total, .outputBytes = outputBytes};
    }
};

/// Returns the error of an operation that took longer than `total`, of the class "timed-out".
/// Thread-safe.
[[nodiscard]] NEB_EXPORT NEBSourceControlError
NEBSourceControlTimedOutError(std::chrono::milliseconds total);

/// Returns the error of an operation whose child, the program at `launchPath`, exceeded one of
/// `limits`, of the class "timed-out" or "output-too-large". Thread-safe.
[[nodiscard]] NEB_EXPORT NEBSourceControlError NEBSourceControlExceededLimitError(
    ChildLimit limit, const NEBSourceControlLimits& limits, const std::string& launchPath);

}  // namespace neb
