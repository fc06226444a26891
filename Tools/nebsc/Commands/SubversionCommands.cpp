// The command "svn" and its subcommands, which run "fetch", "update" and "push" with --svn.

#include "CommandFrame/CommandTask.h"
#include "Commands/Commands.h"
#include "LOMFoundation/LOMPasswordRedaction.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

// ---- show -------------------------------------------------------------------------------------

class ShowTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override { return refusalWithoutSubversion(git()); }
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return newRequest(NEBSourceControlRequestListRemotes);
    }
    std::string textOfResult(const NEBSourceControlResult& records) override;
};

std::string ShowTask::textOfResult(const NEBSourceControlResult& records) {
    std::string lines;
    for (const NEBDictionary& record : records) {
        if (record.value(NEBSourceControlOperationUsesGitSVNKey).boolValue()) {
            lines += printable(textWithoutPasswords(
                         record.value(NEBSourceControlOperationRemoteOriginKey).description())) +
                     "\n";
        }
    }
    return lines;
}

// ---- fetch, update, push ----------------------------------------------------------------------

/// Runs another command as if --svn were given.
CommandOutput runForSubversion(const Command& command, const CommandCall& call) {
    Arguments arguments = call.arguments;
    arguments.set("--svn", {""});
    if (const auto reference = arguments.value("REF")) {
        arguments.set("REMOTE", {*reference});
    }
    return command.run({.plugIn = call.plugIn,
                        .session = call.session,
                        .command = call.command,
                        .arguments = arguments,
                        .isJSON = call.isJSON,
                        .colours = call.colours});
}

constinit const Command fetchFromSubversion{
    .name = "fetch",
    .group = subcommandGroup,
    .summary = "Fetch from Subversion without changing the working copy",
    .details =
        "The same as 'nebsc fetch --svn'.\n\n"
        "Example:\n"
        "  nebsc svn fetch\n",
    .activity = "Fetching",
    .run = [](const CommandCall& call) { return runForSubversion(fetchCommand, call); },
};

constexpr Parameter updateParameters[] = {
    {"REF", "The reference that was fetched; default: the configured one", Takes::revision},
};

constinit const Command updateFromSubversion{
    .name = "update",
    .group = subcommandGroup,
    .summary = "Fetch from Subversion and rebase the current branch",
    .details =
        "The same as 'nebsc update --svn'. Where both sides changed the same lines, keeps\n"
        "those of Subversion and lists the files on standard error. A commit that becomes\n"
        "empty is dropped.\n"
        "\n"
        "Example:\n"
        "  nebsc svn update\n",
    .parameters = updateParameters,
    .activity = "Updating",
    .run = [](const CommandCall& call) { return runForSubversion(updateCommand, call); },
};

constinit const Command pushToSubversion{
    .name = "push",
    .group = subcommandGroup,
    .summary = "Commit to Subversion",
    .details =
        "The same as 'nebsc push --svn'.\n\n"
        "Example:\n"
        "  nebsc svn push\n",
    .activity = "Pushing",
    .run = [](const CommandCall& call) { return runForSubversion(pushCommand, call); },
};

constexpr const Command* subversionCommands[] = {
    &fetchFromSubversion,
    &updateFromSubversion,
    &pushToSubversion,
};

}  // namespace

constinit const Command subversionCommand{
    .name = "svn",
    .group = subversionGroup,
    .summary = "Work with the connected Subversion repository",
    .details =
        "'git svn clone URL' creates a repository that is connected to a Subversion\n"
        "repository.\n"
        "\n"
        "Examples:\n"
        "  nebsc svn           show its URL\n"
        "  nebsc svn fetch     fetch from it\n"
        "  nebsc svn update    fetch, and rebase the current branch\n"
        "  nebsc svn push      commit to it\n",
    .activity = "Reading",
    .commands = subversionCommands,
    .run = runTask<ShowTask>,
};

}  // namespace neb::nebsc
