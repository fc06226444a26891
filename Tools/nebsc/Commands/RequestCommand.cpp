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
    // Created only now, so that a signal ends nebsc at once while it reads.
    Interruption interruption;
    std::optional<ProgressIndicator> progress(std::in_place, call.command.activity,
                                              !call.session.trace().isOn());
    const auto runner = call.arguments.has("--dry-run")
                            ? HostSession::Runner()
                            : interruptibleRunner(interruption, *progress);
    RequestResult requestResult = call.session.perform(reading.request, runner);
    progress.reset();
    // No child runs any more: from here on a signal may end nebsc at once.
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
    {"FILE", "The file with the request; default, and for -: standard input", Takes::pathAsWritten},
    {"--dry-run", "Create the operation, but do not run it"},
};

}  // namespace

constinit const Command requestCommand{
    .name = "request",
    .group = requestsGroup,
    .summary = "Run a request in JSON and print its outcome",
    .details =
        "Examples:\n"
        "  echo '{\"type\": 15, \"sourceTree\": {\"location\": \"/path\"}}' | nebsc request\n"
        "  nebsc request --dry-run log.json    show what it would run\n",
    .parameters = parameters,
    .activity = "Running",
    .run = run,
};

}  // namespace neb::nebsc
