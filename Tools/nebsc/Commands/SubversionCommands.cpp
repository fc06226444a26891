// The commands about the Subversion repository behind this one, under a name of their own: those of
// any remote, told that it is this one which is meant.

#include "CommandFrame/CommandTask.h"
#include "Commands/Commands.h"
#include "LOMFoundation/LOMPasswordRedaction.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/Presentation.h"

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

// ---- the exchange -----------------------------------------------------------------------------

/// Lets another command do the work, as if "--svn" stood in its call.
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
    .group = innerGroup,
    .summary = "Bring what is new there here, and leave the working copy alone",
    .details =
        "The same as \"nebsc fetch --svn\".\n\n"
        "Example:\n"
        "  nebsc svn fetch\n",
    .activity = "Fetching",
    .run = [](const CommandCall& call) { return runForSubversion(fetchCommand, call); },
};

constexpr Parameter updateParameters[] = {
    {"REF", "The reference of what was fetched, unless it is the configured one", Takes::revision},
};

constinit const Command updateFromSubversion{
    .name = "update",
    .group = innerGroup,
    .summary = "Put the commits here on top of what is new there",
    .details =
        "The same as \"nebsc update --svn\": where both sides have changed the same lines, those\n"
        "of Subversion are kept, and a commit of which nothing is left then is left out. The\n"
        "files are named on standard error.\n\n"
        "Example:\n"
        "  nebsc svn update\n",
    .parameters = updateParameters,
    .activity = "Updating",
    .run = [](const CommandCall& call) { return runForSubversion(updateCommand, call); },
};

constinit const Command pushToSubversion{
    .name = "push",
    .group = innerGroup,
    .summary = "Commit there what it does not have",
    .details =
        "The same as \"nebsc push --svn\".\n\n"
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
    .summary = "Work with the Subversion repository behind this one",
    .details =
        "\"git svn clone URL\" makes a repository that has one behind it.\n\n"
        "Examples:\n"
        "  nebsc svn           where it is\n"
        "  nebsc svn fetch     bring what is new there here\n"
        "  nebsc svn update    the same, and put the commits here on top of it\n"
        "  nebsc svn push      commit there what it does not have\n",
    .activity = "Looking",
    .commands = subversionCommands,
    .run = runTask<ShowTask>,
};

}  // namespace neb::nebsc
