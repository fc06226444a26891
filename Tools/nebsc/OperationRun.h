// OperationRun.h - what every command that runs an operation does around it.
#pragma once

#include "HostSession.h"
#include "Interruption.h"
#include "Reply.h"

namespace neb::nebsc {

/// Runs an operation on the calling thread; a signal cancels it. The interruption must outlive the
/// runner.
[[nodiscard]] HostSession::Runner interruptibleRunner(Interruption& interruption);

/// Says that output may be missing, when it may.
void noteHeldOutput(Reply& reply, const Outcome& outcome);

/// When a signal came, it alone is what standard error and the exit status tell.
void noteInterruption(Reply& reply, std::optional<int> signalNumber);

}  // namespace neb::nebsc
