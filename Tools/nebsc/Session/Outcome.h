// Outcome.h - all that came of one request.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "LOMFoundation/LOMAssertion.h"
#include "NEBFoundation/NEBSourceControlCommandLog.h"
#include "NEBFoundation/NEBSourceControlError.h"
#include "NEBFoundation/NEBSourceControlOperation.h"

namespace neb::nebsc {

/// The conflicts of a merge that it settled by keeping one side.
struct SettledConflicts {
    /// The files, from the top; absent where they could not be found out.
    std::optional<std::vector<std::string>> files;
    /// The reason if they could not, as part of a sentence; else empty.
    std::string failure;
};

struct Outcome {
    /// Absent where no request was made.
    std::optional<std::int32_t> type;
    bool authenticationRequired = false;
    /// What the plug-in's validation said. When it refused, there is no operation, and the reason
    /// is the error.
    bool valid = false;
    /// The class's name; absent when no operation was made; the error then says why.
    std::optional<std::string> operation;
    /// What the operation was built to run; absent for one that runs other operations.
    std::optional<NEBSourceControlCommand> command;
    /// The children that ran, in the order in which they were started.
    std::vector<NEBSourceControlCommandRun> commands;
    /// The failed assertions, in order.
    std::vector<LOMAssertionReport> reports;
    std::optional<NEBSourceControlResult> result;
    /// The commits that the result leaves out; see NEBSourceControlOperation.
    std::vector<std::string> omittedRevisions;
    std::optional<NEBSourceControlError> error;
    /// Whether a left-over process still held the child's output open, so that more may have been
    /// written than was read.
    bool outputWasHeldOpen = false;
    /// Why a folder that had been made for the operation is still there after its failure, and what
    /// to do about it. Empty as a rule.
    std::string leftFolder;
    /// Absent unless the command merges, and has, or has stopped before the commit.
    std::optional<SettledConflicts> settledConflicts;
};

}  // namespace neb::nebsc
