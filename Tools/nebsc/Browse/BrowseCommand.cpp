#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "Browse/BrowseGateway.h"
#include "CommandFrame/CommandTask.h"
#include "CommandLine/CommonOptions.h"
#include "Commands/Commands.h"
#include "Platform/ErrnoText.h"
#include "Session/Paths.h"
#include "Session/ProgramFile.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view gatewayName = "nebsc-browse";

/// Checks that there is a repository that git can read, and serves it.
class BrowseTask : public CommandTask {
public:
    BrowseTask(const CommandCall& call, const BrowseGateway& gateway)
        : CommandTask(call), _session(call.session), _gateway(gateway) {}

protected:
    WorkingCopyLocation locate() override {
        const std::string folder = paths("PATH").empty() ? currentFolder() : paths("PATH").front();
        return findWorkingCopy(git().interruption(), git().trace(), currentFolder(), folder, {},
                               git().trust());
    }
    std::optional<CommandOutput> validate() override { return refusalOutsideRepository(git()); }
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return newRequest(NEBSourceControlRequestUnfinishedOperation);
    }
    void report(const Outcome& /*outcome*/, CommandOutput& output) override {
        endProgress();
        output = _gateway.serve({.session = _session,
                                 .interruption = git().interruption(),
                                 .location = workingCopy().location,
                                 .isBare = !workingCopy().isWorkingCopy,
                                 .stays = arguments().has("--stay"),
                                 .opensBrowser = !arguments().has("--no-open")});
    }

private:
    const HostSession& _session;
    const BrowseGateway& _gateway;
};

/// Returns the command line of nebsc-browse for the same invocation. Without '--trust', a page only
/// inspects the repository.
std::vector<std::string> gatewayArguments(const CommandCall& call) {
    std::vector<std::string> arguments{std::string(gatewayName), std::string(plugInOption),
                                       call.plugIn.path};
    if (call.arguments.has(traceOption)) {
        arguments.emplace_back(traceOption);
    }
    if (!call.arguments.has("--trust")) {
        arguments.emplace_back(inspectOption);
    }
    if (const auto seconds = call.arguments.value(timeoutOption)) {
        arguments.insert(arguments.end(), {std::string(timeoutOption), *seconds});
    }
    arguments.emplace_back("browse");
    for (const char* flag : {"--stay", "--no-open", "--trust"}) {
        if (call.arguments.has(flag)) {
            arguments.emplace_back(flag);
        }
    }
    if (const auto path = call.arguments.value("PATH")) {
        arguments.insert(arguments.end(), {"--", *path});
    }
    return arguments;
}

/// Returns the path of nebsc-browse: in an installation beside the plug-in, in a build folder
/// beside nebsc.
std::string gatewayPath() {
    const std::filesystem::path folder = std::filesystem::path(programFile()).parent_path();
    const std::string installed = (folder / NEBSC_INSTALLED_GATEWAY).lexically_normal().string();
    const std::string built = (folder / gatewayName).string();
    return !isAnythingAt(installed) && isAnythingAt(built) ? built : installed;
}

/// Replaces this program with nebsc-browse. Returns only if that fails.
CommandOutput executeGateway(const CommandCall& call) {
    const std::string program = gatewayPath();
    std::vector<std::string> arguments = gatewayArguments(call);
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    ::execv(program.c_str(), pointers.data());
    const int failure = errno;
    CommandOutput output = refusal(
        "cannot start " + inQuotes(printable(program)) + ": " + textOfErrno(failure), exitFailed);
    if (failure == ENOENT) {
        output.standardError +=
            "On Debian, install the package nebgit-browse. Builds with another version of "
            "cpp-httplib than 0.11 or 0.18, or with libc++, leave it out.\n";
    }
    return output;
}

/// Throws a UsageError for options that would have no effect.
void checkOptions(const CommandCall& call) {
    for (const std::string_view option : {jsonOption, recordOption}) {
        if (call.arguments.has(option)) {
            throw invalidArguments("option " + inQuotes(option) +
                                   " cannot be combined with 'browse'");
        }
    }
    if (call.arguments.has("--trust") && call.session.isInspecting()) {
        throw invalidArguments("option '--trust' cannot be combined with '--inspect'");
    }
}

CommandOutput run(const CommandCall& call) {
    checkOptions(call);
    return call.gateway == nullptr ? executeGateway(call) : BrowseTask(call, *call.gateway).run();
}

constexpr Parameter parameters[] = {
    {"PATH", "A folder of the repository; default: the current folder", Takes::folder},
    {"--stay", "Go on when the last page has been closed"},
    {"--no-open", "Only print the URL"},
    {"--trust", "Let git run programs that the repository names, such as filters"},
};

}  // namespace

constinit const Command browseCommand{
    .name = "browse",
    .group = inspectGroup,
    .summary = "Show the repository in the browser",
    .details =
        "Opens a page with the history, commits, files with blame, and the state of the\n"
        "working copy, and prints its URL. The page only reads. Its server listens on\n"
        "127.0.0.1, for whoever has the URL. It ends with Ctrl-C, or when the last page\n"
        "has been closed for a minute. Unless '--trust' is given, it runs no program that\n"
        "the repository names, as with '--inspect'.\n"
        "\n"
        "Examples:\n"
        "  nebsc browse                      the repository of the current folder\n"
        "  nebsc browse --stay --no-open     serve until Ctrl-C, open nothing\n",
    .parameters = parameters,
    .activity = "Reading",
    .run = run,
};

}  // namespace neb::nebsc
