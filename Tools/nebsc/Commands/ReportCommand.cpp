#include <filesystem>
#include <map>

#include "CommandLine/CommandLineParser.h"
#include "CommandLine/CommonOptions.h"
#include "Commands/Commands.h"
#include "Commands/InspectingCommands.h"
#include "Commands/OwnOperations.h"
#include "Commands/RecordingCommands.h"
#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Platform/ChildProcess.h"
#include "Recording/LastFailure.h"
#include "Recording/RecordingFile.h"
#include "Recording/RecordingReader.h"
#include "Session/ProgramFile.h"
#include "Terminal/ErrorText.h"
#include "Terminal/PrintableText.h"
#include "Terminal/ShellText.h"

namespace neb::nebsc {

namespace {

std::string textOf(const LastFailure& failure) {
    std::string text = "nebsc";
    for (const std::string& argument : failure.arguments) {
        text += " " + shellQuoted(argument);
    }
    return text;
}

/// Whether the command may run again: it only reads, and is still valid.
bool mayRunAgain(const LastFailure& failure) {
    const auto parsed = parseCommandLine(failure.arguments, allCommands());
    const auto* commandLine = std::get_if<ParsedCommandLine>(&parsed);
    return !failure.hadSecret && commandLine != nullptr && readsOnly(commandLine->commands);
}

/// Runs the command with a recording.
ChildOutcome runAgain(const LastFailure& failure, const std::string& file, bool isAnonymous) {
    std::vector<std::string> arguments{"--record", file};
    if (isAnonymous) {
        arguments.emplace_back("--anonymous");
    }
    arguments.insert(arguments.end(), failure.arguments.begin(), failure.arguments.end());
    ChildProcess nebsc;
    return std::move(nebsc
                         .run({{.launchPath = programFile(),
                                .arguments = std::move(arguments),
                                .currentDirectoryPath = failure.folder,
                                .environment = NEBSourceControlInheritedEnvironment()}})
                         .front());
}

/// What a recording contains, in figures.
struct Contents {
    std::map<std::string, int> requests;
    std::size_t processes = 0, outputBytes = 0, answers = 0;
};

Contents contentsOf(const RecordingReading& recording) {
    Contents contents;
    contents.processes = recording.otherChildren;
    for (const RecordedRequest& request : recording.requests) {
        const auto name = NEBSourceControlRequestTypeName(request.request->type);
        ++contents.requests[request.outcome.is_null() ? "refused"
                                                      : std::string(name.value_or("unknown"))];
        contents.answers += request.answers.size();
        for (const NEBSourceControlRecordedRun& run : request.runs) {
            contents.processes += run.children.size();
            for (const NEBSourceControlRecordedChild& child : run.children) {
                contents.outputBytes += child.output.size() + child.errorOutput.size();
            }
        }
    }
    return contents;
}

constexpr const char* contentsOfAnonymous =
    "Names and texts are replaced. Terms of git, also where they are part of a name or text,\n"
    "numbers and object ids stay: read the file before you pass it on.\n";
constexpr const char* contentsWithNames =
    "Passwords and tokens are replaced. File names, names of people, texts of commits and\n"
    "contents that git printed are part of the file: read it before you pass it on.\n";

/// Describes the file; `origin` is the beginning, whole lines.
std::string summaryOf(const std::string& origin, const std::string& file,
                      const RecordingReading& recording, bool isAnonymous) {
    const Contents contents = contentsOf(recording);
    std::string names;
    for (const auto& [name, count] : contents.requests) {
        names += (names.empty() ? "" : ", ") + name +
                 (count > 1 ? " (" + std::to_string(count) + " times)" : "");
    }
    std::error_code ignored;
    return origin + "  requests:          " + (names.empty() ? "none" : names) + "\n" +
           "  processes of git:  " + std::to_string(contents.processes) + "\n" +
           "  output of git:     " + std::to_string(contents.outputBytes) + " bytes\n" +
           "  answers on files:  " + std::to_string(contents.answers) + "\n" +
           "  versions:          nebsc " + recording.header.nebsc + ", plug-in " +
           recording.header.plugIn + ", " + printable(recording.header.git) + "\n" +
           "  file:              " + printable(file) + ", " +
           std::to_string(std::filesystem::file_size(file, ignored)) + " bytes\n" + "\n" +
           (isAnonymous ? contentsOfAnonymous : contentsWithNames) + "Nothing was sent.\n";
}

/// Copies a recording, without secrets that an older version or another program left in it.
CommandOutput copyRecording(const CommandCall& call, const std::string& from,
                            const std::string& file) {
    std::vector<nlohmann::ordered_json> lines;
    const RecordingReading recording = readRecording(from, &lines);
    if (!recording.failure.empty()) {
        return refusal("recording " + inQuotes(from) + " " + recording.failure, exitUsageError);
    }
    useHomeOf(recording);
    const bool isAnonymous = call.arguments.has(anonymousOption);
    RecordingFile copy(file, anonymization(call.session, isAnonymous));
    if (const auto failure = copy.openCopy(std::move(lines))) {
        return refusal(withSingleQuotes(failure->description), exitUsageError);
    }
    if (const auto failure = copy.finish()) {
        return refusal(withSingleQuotes(failure->description), exitFailed);
    }
    return {.standardOutput = summaryOf("Copied: " + printable(from) + "\n", file,
                                        readRecording(file), isAnonymous),
            .standardError = {}};
}

/// Runs the command that failed last again, and records it.
CommandOutput recordLastFailure(const CommandCall& call, const std::string& file) {
    const auto failure = lastFailure();
    if (!failure) {
        return refusal("no failure is known", exitFailed);
    }
    if (!mayRunAgain(*failure)) {
        return refusalWithAdvice(
            "the last failure was of " + inQuotes(textOf(*failure)) +
                (failure->hadSecret ? ", which had a password" : ", which may change something"),
            "Run it with '--record FILE' to record it.", NEBSourceControlUnknownErrorClass.text());
    }
    const bool isAnonymous = call.arguments.has(anonymousOption);
    const ChildOutcome outcome = runAgain(*failure, file, isAnonymous);
    const TerminationStatus& status = outcome.status;
    const RecordingReading recording = readRecording(file);
    if (!recording.failure.empty() || status.exitStatus() == exitUsageError) {
        CommandOutput refused =
            refusal("the file " + inQuotes(file) + " was not recorded: nebsc ended with " +
                        status.description(),
                    exitFailed);
        refused.standardError.insert(0, std::string(outcome.errorOutput));
        return refused;
    }
    const std::string origin = "Recorded again: " + printable(textOf(*failure)) + "\n" +
                               "  result:            " + status.description() + "\n";
    return {.standardOutput = summaryOf(origin, file, recording, isAnonymous), .standardError = {}};
}

CommandOutput run(const CommandCall& call) {
    const std::string file = std::filesystem::absolute(call.arguments.value("FILE").value_or(""));
    const auto from = call.arguments.value("--from");
    return from ? copyRecording(call, *from, file) : recordLastFailure(call, file);
}

constexpr Parameter parameters[] = {
    {"FILE", "The new file for the recording", Takes::pathAsWritten, Occurs::once},
    {"--from", "Copy this recording instead of recording again", Takes::pathAsWritten,
     Occurs::optionally, "RECORDING"},
};

}  // namespace

constinit const Command reportCommand{
    .name = "report",
    .group = requestsGroup,
    .summary = "Record the command that failed last, for a bug report",
    .details =
        "Runs the last command of nebsc that failed again, with '--record FILE', if it\n"
        "only reads. With '--from', copies a recording, for example one that another\n"
        "program has written. Prints what the file contains; sends nothing.\n"
        "docs/recordings.md describes recordings.\n"
        "\n"
        "Example:\n"
        "  nebsc report failure.recording\n"
        "  nebsc report --anonymous failure.recording    without names and texts\n"
        "  nebsc report --anonymous --from log.recording copy.recording\n",
    .parameters = parameters,
    .run = run,
};

}  // namespace neb::nebsc
