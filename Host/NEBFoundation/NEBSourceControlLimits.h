// NEBSourceControlLimits.h - how long an operation may take, and how much git may write.
//
//     operation->setLimits({.silence = std::chrono::seconds(30)});
#pragma once

#include <chrono>
#include <string>

#include "NEBFoundation/NEBSourceControlError.h"
#include "Platform/ChildLimits.h"
#include "Platform/Export.h"

namespace neb {

/// The limits of an operation. `silence` and `outputBytes` are for each child process, `total` is
/// for all children of the operation together.
using NEBSourceControlLimits = ChildLimits;

/// Returns the error of an operation that took longer than `total`, of the class "timed-out".
/// Thread-safe.
[[nodiscard]] NEB_EXPORT NEBSourceControlError
NEBSourceControlTimedOutError(std::chrono::milliseconds total);

/// Returns the error of an operation whose child, the program at `launchPath`, exceeded one of
/// `limits`, of the class "timed-out" or "output-too-large". Thread-safe.
[[nodiscard]] NEB_EXPORT NEBSourceControlError NEBSourceControlExceededLimitError(
    ChildLimit limit, const NEBSourceControlLimits& limits, const std::string& launchPath);

}  // namespace neb
