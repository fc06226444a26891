// Outcome.h - everything that one request produced: result, error, commands, reports.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "LOMFoundation/LOMAssertion.h"
#include "NEBFoundation/NEBSourceControlCommandLog.h"
#include "NEBFoundation/NEBSourceControlError.h"
#include "NEBFoundation/NEBSourceControlOperation.h"

namespace neb::nebsc {

/// The conflicts that a merge resolved by keeping one side.
struct SettledConflicts {
    /// The files, relative to the top of the working copy; absent if git failed to list them.
    std::optional<std::vector<std::string>> files;
    /// Why `files` is absent, as part of a sentence; empty if it is present.
    std::string failure;
};

/// The outcome of one request.
struct Outcome {
    /// Absent if no request was made.
    std::optional<std::int32_t> type;
    bool authenticationRequired = false;
    /// Whether the plug-in accepted the request. If not, there is no operation, and `error` is the
    /// reason.
    bool valid = false;
    /// The class name; absent if no operation was created, for the reason in `error`.
    std::optional<std::string> operation;
    /// The command that the operation runs; absent if it runs other operations instead.
    std::optional<NEBSourceControlCommand> command;
    /// The child processes that ran, in the order of their start.
    std::vector<NEBSourceControlCommandRun> commands;
    /// The failed assertions, in order.
    std::vector<LOMAssertionReport> reports;
    std::optional<NEBSourceControlResult> result;
    /// The number of records that were delivered while the operation ran; they are not part of
    /// `result`. Absent if none were to be delivered.
    std::optional<std::size_t> recordCount;
    /// The commits that are missing in the result; see NEBSourceControlOperation.
    std::vector<std::string> omittedRevisions;
    std::optional<NEBSourceControlError> error;
    /// Whether a lingering process still held the child's output open, so that output may be
    /// missing.
    bool outputWasHeldOpen = false;
    /// What the repository names and was switched off; see NEBSourceControlOperation. Absent if the
    /// repository is trusted.
    std::optional<std::vector<std::string>> switchedOff;
    /// Why a folder that was created for the operation remains after a failure, and what to do
    /// about it. Empty if no folder remains.
    std::string leftFolder;
    /// Absent unless the command is a merge that has merged or stopped before the commit.
    std::optional<SettledConflicts> settledConflicts;
};

}  // namespace neb::nebsc
