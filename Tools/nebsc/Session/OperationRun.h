// OperationRun.h - the steps that surround every run of an operation: cancellation, progress,
// warnings.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "Session/HostSession.h"
#include "Session/Interruption.h"
#include "Terminal/CommandOutput.h"
#include "Terminal/ProgressIndicator.h"
#include "Terminal/StreamedOutput.h"

namespace neb::nebsc {

/// Cancels the operation and returns without waiting for its end. Ignores exceptions of the
/// plug-in. Thread-safe.
void cancelOperation(NEBSourceControlOperation& operation);

/// Returns a function that runs an operation on the calling thread. A signal cancels the operation,
/// the end of the time makes it fail with an error of the class "timed-out", and the progress
/// indicator shows how many bytes git has received. `interruption` and `indicator` must outlive the
/// function.
[[nodiscard]] HostSession::Runner interruptibleRunner(Interruption& interruption,
                                                      ProgressIndicator& indicator);

/// Returns the text of records, lines with their ends; absent to cancel the operation.
using RecordText = std::function<std::optional<std::string>(const NEBSourceControlResult&)>;

/// Returns a function that runs an operation with `run`, and writes the text of its records as they
/// arrive. Cancels the operation when no more text is wanted. All references must outlive the
/// function.
[[nodiscard]] HostSession::Runner streamingRunner(HostSession::Runner run,
                                                  Interruption& interruption,
                                                  StreamedOutput& output, RecordText textOf);

/// Returns whether the output has no reader any more or could not be written, and the operation has
/// no error but that of its cancellation. Removes that error from the outcome.
[[nodiscard]] bool takeEndOfOutput(const StreamedOutput& output, Outcome& outcome);

/// Adds a warning for each failed assertion.
void noteReports(CommandOutput& output, const Outcome& outcome);

/// Adds a warning that lists the commits missing in the result, if any.
void noteOmittedRevisions(CommandOutput& output, const Outcome& outcome);

/// Adds a warning if a folder remains after a failure.
void noteLeftFolder(CommandOutput& output, const Outcome& outcome);

/// Adds a note that lists what was switched off because the repository is only inspected.
/// Submodules alone are not worth a note.
void noteSwitchedOff(CommandOutput& output, const Outcome& outcome);

/// Adds a warning if output of git may be missing.
void noteHeldOutput(CommandOutput& output, const Outcome& outcome);

/// If the time limit has passed, makes that the error on standard error, with the exit status
/// exitFailed.
void noteEndOfTime(CommandOutput& output, const Interruption& interruption);

/// If a signal arrived, makes it the only message on standard error and sets the exit status.
void noteInterruption(CommandOutput& output, std::optional<int> signalNumber);

}  // namespace neb::nebsc
