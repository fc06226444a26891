// The part of a task operation that keeps the programs of a repository from running.

#include <algorithm>

#include "LOMFoundation/LOMDeveloperPaths.h"
#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "NEBFoundation/NEBSourceControlInspection.h"
#include "NEBFoundation/NEBSourceControlTaskOperation.h"
#include "Platform/PathString.h"

namespace neb {

namespace {

/// git-config(1) starts no program, and would list the settings that switch programs off.
bool listsSettings(const std::vector<std::string>& arguments) {
    const auto name = std::ranges::find_if(
        arguments, [](const std::string& argument) { return !argument.starts_with('-'); });
    return name != arguments.end() && *name == "config";
}

}  // namespace

bool NEBSourceControlTaskOperation::switchOffPrograms(
    const std::vector<NEBSourceControlTaskOperation*>& stages) {
    const NEBSourceControlInspectedCommand command(
        launchPath(), arguments(), pathByExpandingTilde(currentDirectoryPath().value_or(".")));
    auto programs = inspection()->programsOf(command);
    if (!programs && inspectSettings(command)) {
        programs = inspection()->programsOf(command);
    }
    if (!programs) {
        return false;
    }
    if (command.contactsServer() && !programs->transport.empty()) {
        setError(NEBSourceControlNotTrustedError(
            "The server was not contacted because the repository \"%@\" is not trusted, and its "
            "setting \"%@\" decides how to contact servers.",
            {request()->sourceTreeName(), programs->transport.front()}));
        return false;
    }
    if (command.examinesSubmodules()) {
        inspection()->addSubmodules();
    }
    if (listsSettings(arguments())) {
        programs->pinned.clear();
    }
    setArguments(command.safeArguments());
    for (NEBSourceControlTaskOperation* stage : stages) {
        stage->_settings = programs->pinned;
        stage->_mayFetchObjects = command.contactsServer();
    }
    return true;
}

bool NEBSourceControlTaskOperation::inspectSettings(
    const NEBSourceControlInspectedCommand& command) {
    const ChildLaunch launch{
        .launchPath = LOMDeveloperPaths::defaultPaths()
                          .binSearchPathForPlatform(std::nullopt)
                          .pathOfProgram("git"),
        .arguments = command.settingsArguments(),
        .currentDirectoryPath = command.folder(),
        .environment = NEBSourceControlChildEnvironment(
            NEBSourceControlInheritedEnvironment(),
            {.isBackgroundWork = isBackgroundWork(), .mayFetchObjects = false}),
        .input = std::nullopt,
    };
    auto outcomes = runLaunches({launch}, [](const ArrivedOutput&) { return std::size_t{0}; });
    if (isCancelled()) {
        setError(NEBSourceControlCancelledError());
        return false;
    }
    if (setErrorOfUnfinished({this}, outcomes)) {
        return false;
    }
    if (!outcomes[0].status.isSuccess()) {
        finish(takeOutput(outcomes[0]));
        return false;
    }
    inspection()->addSettings(command, outcomes[0].output);
    return true;
}

}  // namespace neb
