// OperationRun.h - what every command that runs an operation does around it.
#pragma once

#include "Session/HostSession.h"
#include "Session/Interruption.h"
#include "Terminal/CommandOutput.h"
#include "Terminal/ProgressIndicator.h"

namespace neb::nebsc {

/// Cancels the operation, which then ends in its own time, whatever the plug-in throws meanwhile.
/// Thread-safe.
void cancelOperation(NEBSourceControlOperation& operation);

/// Runs an operation on the calling thread; a signal cancels it, and the sign that it is alive
/// tells how much has come. The interruption and the sign must outlive the runner.
[[nodiscard]] HostSession::Runner interruptibleRunner(Interruption& interruption,
                                                      ProgressIndicator& sign);

/// Tells of broken preconditions, when there were any.
void noteReports(CommandOutput& output, const Outcome& outcome);

/// Names the commits that the result leaves out, when there are any.
void noteOmittedRevisions(CommandOutput& output, const Outcome& outcome);

/// Tells of a folder that is left after a failure, when there is one.
void noteLeftFolder(CommandOutput& output, const Outcome& outcome);

/// Says that output may be missing, when it may.
void noteHeldOutput(CommandOutput& output, const Outcome& outcome);

/// When a signal came, it alone is what standard error and the exit status tell.
void noteInterruption(CommandOutput& output, std::optional<int> signalNumber);

}  // namespace neb::nebsc
