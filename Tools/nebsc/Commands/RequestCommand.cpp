#include <utility>

#include "Commands/Commands.h"
#include "JSON/InputFile.h"
#include "JSON/JSONText.h"
#include "JSON/OutcomeJSON.h"
#include "JSON/RequestJSON.h"
#include "Session/OperationRun.h"

namespace neb::nebsc {

namespace {

std::string linesOfRecords(const NEBSourceControlResult& records) {
    std::string lines;
    for (const NEBDictionary& record : records) {
        lines.append(R"({"record":)").append(textOfRecord(record)).append("}\n");
    }
    return lines;
}

CommandOutput outputFor(const CommandCall& call, Outcome& outcome) {
    CommandOutput output;
    const bool isStreamed = call.arguments.has(streamOption);
    output.standardOutput = writtenOutcome(outcome, [isStreamed](const Outcome& written) {
        return isStreamed ? lineOfStreamedOutcome(written) : textOfOutcome(written) + "\n";
    });
    output.exitStatus = outcome.error ? exitFailed : exitDone;
    noteOmittedRevisions(output, outcome);
    noteLeftFolder(output, outcome);
    noteHeldOutput(output, outcome);
    return output;
}

/// Returns what is to be printed behind the records of a stream.
CommandOutput restOfOutput(const CommandCall& call, const Interruption& interruption,
                           const StreamedOutput& streamedOutput, Outcome& outcome) {
    CommandOutput output;
    if (streamedOutput.hasDiscardedText()) {
        noteEndOfTime(output, interruption);  // an outcome would follow half a line
    } else if (!takeEndOfOutput(streamedOutput, outcome)) {
        output = outputFor(call, outcome);
    }
    return output;
}

HostSession::Runner runnerWithSettings(HostSession::Runner run, const RunSettings& settings) {
    return [run = std::move(run), settings](NEBSourceControlOperation& operation) {
        settings.applyTo(operation);
        run(operation);
    };
}

CommandOutput run(const CommandCall& call) {
    const InputReading input =
        readInput(call.arguments.value("FILE").value_or("-"), longestJSONText);
    if (!input.bytes) {
        return refusal(input.failure, exitUsageError);
    }
    const RequestReading reading = requestFromJSON(*input.bytes);
    if (!reading.request) {
        return refusal(reading.refusal, exitUsageError);
    }
    // Created only now, so that a signal ends nebsc at once while it reads.
    Interruption interruption(call.timeLimit);
    std::optional<ProgressIndicator> progress(std::in_place, call.command.activity,
                                              !call.session.trace().isOn());
    StreamedOutput streamedOutput;
    HostSession::Runner runner =
        runnerWithSettings(interruptibleRunner(interruption, *progress), reading.settings);
    if (call.arguments.has(streamOption)) {
        runner = streamingRunner(std::move(runner), interruption, streamedOutput,
                                 [&progress](const NEBSourceControlResult& records) {
                                     progress->end();
                                     return linesOfRecords(records);
                                 });
    }
    RequestResult requestResult = call.session.perform(
        reading.request, call.arguments.has("--dry-run") ? HostSession::Runner() : runner);
    progress.reset();
    // No child runs any more: from here on a signal may end nebsc at once.
    const std::optional<int> signalNumber = interruption.end();
    if (const auto& value = requestResult.refusedValue) {
        return refusal(sentenceOfRefusedValue(*value), exitUsageError);
    }
    CommandOutput output = restOfOutput(call, interruption, streamedOutput, *requestResult.outcome);
    noteInterruption(output, signalNumber);
    streamedOutput.finish(output);
    return output;
}

constexpr Parameter parameters[] = {
    {"FILE", "The file with the request; default, and for -: standard input", Takes::pathAsWritten},
    {streamOption, "Print each record on a line of its own as it arrives, then the outcome"},
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
        "  nebsc request --stream log.json     one commit per line, while git runs\n"
        "  nebsc request --dry-run log.json    show what it would run\n",
    .parameters = parameters,
    .activity = "Running",
    .run = run,
};

}  // namespace neb::nebsc
