#include "Commands.h"
#include "InputFile.h"
#include "JSONText.h"
#include "OperationRun.h"
#include "OutcomeJSON.h"
#include "RequestJSON.h"

namespace neb::nebsc {

Reply requestCommand(const HostSession& session, const RequestCall& call) {
    const InputReading input = readInput(call.file);
    if (!input.bytes) {
        return refusal(input.failure, exitNotUnderstood);
    }
    const RequestReading reading = requestFromJSON(*input.bytes);
    if (!reading.request) {
        return refusal(reading.refusal, exitNotUnderstood);
    }
    // Not before: until there is a request, a signal may end the reading at once.
    Interruption interruption;
    const auto run = call.isDryRun ? HostSession::Runner() : interruptibleRunner(interruption);
    const Performance performance = session.perform(reading.request, run);
    // No child is left by now: from here on a signal may end nebsc at once.
    const std::optional<int> signalNumber = interruption.end();
    if (const auto& value = performance.refusedValue) {
        return refusal(subjectAt(value->field) + " is \"" + shortened(value->value) +
                           "\"; it is refused here, as git would take it for an option.",
                       exitNotUnderstood);
    }
    Reply reply{.standardOutput = lineOfJSON(jsonOfOutcome(*performance.outcome)),
                .standardError = {},
                .exitStatus = performance.outcome->error ? exitFailed : exitDone};
    noteHeldOutput(reply, *performance.outcome);
    noteInterruption(reply, signalNumber);
    return reply;
}

}  // namespace neb::nebsc
