#include "Program.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <map>

#include "CommandLine/CommandLineParser.h"
#include "CommandLine/CommonOptions.h"
#include "Commands/Commands.h"
#include "Commands/InspectingCommands.h"
#include "Commands/OwnOperations.h"
#include "Commands/PlugInCommands.h"
#include "Commands/RecordingCommands.h"
#include "Help/HelpText.h"
#include "JSON/OutcomeJSON.h"
#include "NEBFoundation/NEBSourceControlUnexpectedError.h"
#include "Recording/LastFailure.h"
#include "Recording/RecordingFile.h"
#include "Session/PlugInLocation.h"
#include "Session/StartFolder.h"
#include "Terminal/Colour.h"
#include "Terminal/ErrorText.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

/// Opens /dev/null for each standard stream that is closed, so that no other file gets its number.
/// Reads and writes still fail with EBADF, because the file is opened for the other direction.
void occupyStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) < 0) {
            // Returns the lowest free number, which is that of the stream. Stays open.
            static_cast<void>(::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY));
        }
    }
}

Colours coloursOf(const Arguments& arguments) {
    static const std::map<std::string, Colours> choices{
        {"auto", Colours::automatic}, {"always", Colours::always}, {"never", Colours::never}};
    return choices.at(arguments.value(colourOption).value_or("auto"));
}

HostSession makeSession(const PlugInFile& plugIn,
                        std::unique_ptr<const NEBSourceControlProtocol> controller,
                        const Arguments& arguments) {
    const auto& loaded = plugIn.load.plugIn;
    return HostSession(std::move(controller), arguments.has(traceOption),
                       arguments.has(inspectOption) ? NEBSourceControlTrust::inspect
                                                    : NEBSourceControlTrust::trusted,
                       loaded ? loaded->program() : std::string(gitProgramName));
}

/// Returns why the command cannot take "--anonymous"; empty if it can, or does not have it.
std::string refusalOfAnonymous(const Command& command, const Arguments& arguments) {
    if (!arguments.has(anonymousOption) || &command == &reportCommand) {
        return {};
    }
    if (!arguments.has(recordOption)) {
        return "option '--anonymous' requires '--record FILE'";
    }
    // Until all is recorded, nothing could be written.
    return &command == &serveCommand ? "option '--anonymous' cannot be used with 'serve'; use the "
                                       "member 'record' of a request"
                                     : "";
}

/// Whether the command makes no request that could be recorded.
bool hasNoRecording(const Command& command) {
    return &command == &replayCommand || &command == &reportCommand;
}

/// Runs the command, and records it with "--record".
CommandOutput runIn(const HostSession& session, const PlugInFile& plugIn,
                    const ParsedCommandLine& commandLine, const BrowseGateway* gateway) {
    const Arguments& arguments = commandLine.arguments;
    const Command& command = *commandLine.command();
    const CommandCall call{.plugIn = plugIn,
                           .session = session,
                           .command = command,
                           .arguments = arguments,
                           .isJSON = arguments.has(jsonOption),
                           .colours = coloursOf(arguments),
                           .timeLimit = timeLimitIn(arguments),
                           .gateway = gateway};
    const auto file = arguments.value(recordOption);
    if (const std::string refused = refusalOfAnonymous(command, arguments); !refused.empty()) {
        return refusal(refused, exitUsageError);
    }
    if (!file) {
        return command.run(call);
    }
    if (hasNoRecording(command)) {
        return refusal("option '--record' cannot be used with '" + std::string(command.name) + "'",
                       exitUsageError);
    }
    RecordingFile recording(std::filesystem::absolute(*file),
                            anonymization(session, arguments.has(anonymousOption)));
    const auto& loaded = plugIn.load.plugIn;
    if (const auto failure = recording.open(loaded ? loaded->version() : "")) {
        return refusal(withSingleQuotes(failure->description), exitUsageError);
    }
    CommandOutput output = [&] {
        const Interceptor::Scope scope(recording.interceptor());
        return command.run(call);
    }();
    if (const auto failure = recording.finish()) {
        output.standardError += diagnostic(withSingleQuotes(failure->description));
        output.exitStatus = output.exitStatus == exitDone ? exitFailed : output.exitStatus;
    }
    return output;
}

/// Loads the plug-in and runs the command, or prints the versions.
CommandOutput runCommand(const ParsedCommandLine& commandLine, const BrowseGateway* gateway) {
    const Arguments& arguments = commandLine.arguments;
    const bool isJSON = arguments.has(jsonOption);
    const bool isForVersions = arguments.has(versionOption);
    if (const auto refused = enterFolders(arguments.all(folderOption))) {
        return *refused;
    }
    const std::string path = arguments.value(plugInOption).value_or(defaultPlugInPath());
    const PlugInFile plugIn{.path = path, .load = NEBSourceControlPlugIn::load(path)};
    std::unique_ptr<const NEBSourceControlProtocol> controller;
    if (isForVersions || commandLine.command()->needsPlugIn) {
        if (!plugIn.load.plugIn) {
            return refusal(withSingleQuotes(plugIn.load.failure), exitUsageError);
        }
        controller = plugIn.load.plugIn->makePrincipalClass();
        if (!controller) {
            return refusal("plug-in " + inQuotes(path) + " has no principal class", exitUsageError);
        }
    }
    if (arguments.has(inspectOption) && !isForVersions && !readsOnly(commandLine.commands)) {
        return notTrusted(commandLine.commands);
    }
    const HostSession session = makeSession(plugIn, std::move(controller), arguments);
    if (isForVersions) {
        return outputWithVersions(*plugIn.load.plugIn, session.trace(), isJSON,
                                  timeLimitIn(arguments));
    }
    if (const auto refused = session.mayRunGit()
                                 ? std::nullopt
                                 : refusalOfPlugIn(*plugIn.load.plugIn, commandLine)) {
        return *refused;
    }
    return runIn(session, plugIn, commandLine, gateway);
}

CommandOutput run(const ParsedCommandLine& commandLine, const BrowseGateway* gateway) {
    if (commandLine.arguments.has(helpOption)) {
        return {.standardOutput = helpText(commandLine.commands),
                .standardError = {},
                .exitStatus = exitDone};
    }
    return runCommand(commandLine, gateway);
}

/// Runs the command. Reports a mistake that it finds in its arguments like one of the parser.
CommandOutput runOrReportUsage(const ParsedCommandLine& commandLine, const BrowseGateway* gateway) {
    try {
        return run(commandLine, gateway);
    } catch (UsageError& error) {
        error.commands = commandLine.commands;
        return outputOf(error, allCommands());
    }
}

/// Whether a failure of the command is remembered for `nebsc report`. Those for programs depend on
/// their input, or record it themselves; a page cannot be recorded.
bool isReported(const ParsedCommandLine& commandLine) {
    return !commandLine.commands.empty() && commandLine.commands.front()->group != requestsGroup &&
           commandLine.commands.front()->group != shellGroup &&
           commandLine.commands.front()->group != hiddenGroup &&
           commandLine.commands.front() != &browseCommand &&
           !commandLine.arguments.has(recordOption);
}

/// Returns the output for the current exception: an error message, or an outcome if the command
/// prints JSON.
CommandOutput outputOfCurrentException(const ParsedCommandLine& commandLine) {
    CommandOutput output = failureWith(NEBSourceControlErrorOfCurrentException());
    if (commandLine.arguments.has(jsonOption) || commandLine.command() == &requestCommand) {
        Outcome outcome;
        outcome.error = output.error;
        output.standardOutput = commandLine.arguments.has(streamOption)
                                    ? lineOfStreamedOutcome(outcome)
                                    : textOfOutcome(outcome) + "\n";
        output.standardError.clear();
    }
    return output;
}

}  // namespace

int runProgram(int argc, const char* const* argv, const BrowseGateway* gateway) noexcept {
    occupyStandardStreams();
    ParsedCommandLine commandLine;
    try {
        std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
        if (arguments.empty()) {
            arguments.emplace_back(helpOption);
        }
        auto parsed = parseCommandLine(arguments, allCommands());
        if (const auto* error = std::get_if<UsageError>(&parsed)) {
            return deliver(outputOf(*error, allCommands()));
        }
        commandLine = std::get<ParsedCommandLine>(std::move(parsed));
        std::error_code ignored;
        const std::string folder = std::filesystem::current_path(ignored).string();
        const CommandOutput output = runOrReportUsage(commandLine, gateway);
        if (output.exitStatus == exitFailed && isReported(commandLine)) {
            rememberFailure(arguments, folder);
        }
        return deliver(output);
    } catch (const std::exception&) {
        return deliver(outputOfCurrentException(commandLine));
    }
}

}  // namespace neb::nebsc
