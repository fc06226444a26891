// OperationRun.h - what every command that runs an operation does around it.
#pragma once

#include <string_view>

#include "HostSession.h"
#include "Interruption.h"
#include "Reply.h"

namespace neb::nebsc {

/// Runs an operation on the calling thread; a signal cancels it, and a terminal shows that it is
/// alive, by what it does ("Cloning"). The interruption and the text must outlive the runner.
[[nodiscard]] HostSession::Runner interruptibleRunner(Interruption& interruption,
                                                      std::string_view activity);

/// Tells of broken preconditions, when there were any.
void noteReports(Reply& reply, const Outcome& outcome);

/// Tells of a folder that is left after a failure, when there is one.
void noteLeftFolder(Reply& reply, const Outcome& outcome);

/// Says that output may be missing, when it may.
void noteHeldOutput(Reply& reply, const Outcome& outcome);

/// When a signal came, it alone is what standard error and the exit status tell.
void noteInterruption(Reply& reply, std::optional<int> signalNumber);

}  // namespace neb::nebsc
