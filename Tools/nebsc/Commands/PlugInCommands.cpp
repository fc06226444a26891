#include "Commands/PlugInCommands.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <string>
#include <string_view>

#include "Commands/InspectingCommands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view statusParameters[] = {"PATH", "--short", "--all"};
constexpr std::string_view logParameters[] = {"REVISION", "FILE",    "--limit",
                                              "--branch", "--files", "--full"};
constexpr std::string_view blameParameters[] = {"REVISION", "FILE"};
constexpr std::string_view diffParameters[] = {"REVISION", "FILE", "--name-status",
                                               "--common-ancestor"};
constexpr std::string_view catParameters[] = {"OBJECT"};
constexpr std::string_view addParameters[] = {"FILE", "--all"};
constexpr std::string_view removeParameters[] = {"FILE", "--force"};
constexpr std::string_view commitParameters[] = {"--message", "--allow-empty", "FILE"};

/// A command that asks the plug-in alone, if it has no other parameters than these.
struct Row {
    std::string_view command;
    std::span<const std::string_view> parameters = {};
    bool hasAllParameters = false;
};

/// A command that is not listed is refused.
constexpr Row rows[] = {
    {"status", statusParameters},
    {"log", logParameters},
    {"blame", blameParameters},
    {"diff", diffParameters},
    {"cat", catParameters},
    {"add", addParameters},
    {"rm", removeParameters},
    {"commit", commitParameters},
    {"branch"},
    {"branch list"},
    {"branch current"},
    {.command = "request", .hasAllParameters = true},
    {.command = "serve", .hasAllParameters = true},
    {.command = "types", .hasAllParameters = true},
    {.command = "completion", .hasAllParameters = true},
    {.command = "manual", .hasAllParameters = true},
};

}  // namespace

std::optional<CommandOutput> refusalOfPlugIn(const NEBSourceControlPlugIn& plugIn,
                                             const ParsedCommandLine& commandLine) {
    const std::string name = nameOfCommand(commandLine.commands);
    const std::string beginning = "The plug-in " + inQuotes(plugIn.name()) + " does not support ";
    const auto refused = [&](const std::string& what) {
        return refusalWithAdvice(
            beginning + what + ".",
            "'nebsc request' carries out the requests that the plug-in offers.",
            NEBSourceControlRequestInvalidErrorClass);
    };
    const auto* row = std::ranges::find(rows, name, &Row::command);
    if (row == std::end(rows)) {
        return refused("'nebsc " + name + "'");
    }
    for (const Parameter& parameter : commandLine.command()->parameters) {
        const std::string option = longName(parameter);
        if (!row->hasAllParameters && commandLine.arguments.has(option) &&
            std::ranges::find(row->parameters, option) == row->parameters.end()) {
            return refused(inQuotes(option) + " of 'nebsc " + name + "'");
        }
    }
    return std::nullopt;
}

}  // namespace neb::nebsc
