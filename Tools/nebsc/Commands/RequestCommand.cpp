#include "Commands/Commands.h"
#include "JSON/InputFile.h"
#include "JSON/JSONText.h"
#include "JSON/OutcomeJSON.h"
#include "JSON/RequestJSON.h"
#include "Session/OperationRun.h"

namespace neb::nebsc {

namespace {

CommandOutput run(const CommandCall& call) {
    const InputReading input =
        readInput(call.arguments.value("FILE").value_or("-"), longestJSONText);
    if (!input.bytes) {
        return refusal(input.failure, exitNotUnderstood);
    }
    const RequestReading reading = requestFromJSON(*input.bytes);
    if (!reading.request) {
        return refusal(reading.refusal, exitNotUnderstood);
    }
    // Not before: until there is a request, a signal may end the reading at once.
    Interruption interruption;
    std::optional<ProgressIndicator> sign(std::in_place, call.command.activity,
                                          !call.session.trace().isOn());
    const auto runner = call.arguments.has("--dry-run") ? HostSession::Runner()
                                                        : interruptibleRunner(interruption, *sign);
    RequestResult requestResult = call.session.perform(reading.request, runner);
    sign.reset();
    // No child is left by now: from here on a signal may end nebsc at once.
    const std::optional<int> signalNumber = interruption.end();
    if (const auto& value = requestResult.refusedValue) {
        return refusal(sentenceOfRefusedValue(*value), exitNotUnderstood);
    }
    Outcome& outcome = *requestResult.outcome;
    CommandOutput output;
    output.standardOutput = writtenOutcome(
        outcome, [](const Outcome& written) { return textOfOutcome(written) + "\n"; });
    output.exitStatus = outcome.error ? exitFailed : exitDone;
    noteOmittedRevisions(output, outcome);
    noteLeftFolder(output, outcome);
    noteHeldOutput(output, outcome);
    noteInterruption(output, signalNumber);
    return output;
}

constexpr Parameter parameters[] = {
    {"FILE", "The request; unless given, or for -, standard input is read", Takes::pathAsWritten},
    {"--dry-run", "Make the operation, do not run it"},
};

}  // namespace

constinit const Command requestCommand{
    .name = "request",
    .group = requestsGroup,
    .summary = "Carry out a request in JSON and print its outcome",
    .details =
        "Examples:\n"
        "  echo '{\"type\": 15, \"sourceTree\": {\"location\": \"/path\"}}' | nebsc request\n"
        "  nebsc request --dry-run log.json    what it would run, without running it\n",
    .parameters = parameters,
    .activity = "Working",
    .run = run,
};

}  // namespace neb::nebsc
