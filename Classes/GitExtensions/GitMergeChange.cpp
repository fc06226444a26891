#include "GitExtensions/GitMergeChange.h"

#include <algorithm>

namespace neb {

namespace {

constexpr std::string_view strategySetting = "pull.twohead";

/// Whether a strategy stops at conflicts. git before 2.33 knows only "recursive".
bool takesNoSide(std::string_view strategy) {
    return strategy == "ort" || strategy == "recursive";
}

/// A variable of the environment with an empty value.
constexpr std::string_view emptyVariable = "NEB_NO_MERGE_OPTIONS";

}  // namespace

/// An option of the command overrides the strategy, as some commands take the first value of the
/// setting, some the last. "recursive" is one that all versions of git know. No option clears the
/// options of a branch; --config-env, unlike -c, accepts a "=" in its name.
std::optional<GitMergeComposite::MergeCommand> GitMergeComposite::withoutSides(
    MergeCommand command) {
    // "." would not match a byte that is not UTF-8.
    const auto settings = runQuery(
        request(), {"config", "--null", "--get-regexp", "(^pull\\.twohead|\\.mergeoptions)$"});
    if (!goesOnAfter(*settings)) {
        return std::nullopt;
    }
    bool hasStrategy = false;
    for (const std::string& setting : gitNULSeparatedPieces(settings->output())) {
        const std::size_t end = std::min(setting.find('\n'), setting.size());
        const std::string name = setting.substr(0, end);
        if (name == strategySetting) {
            hasStrategy =
                hasStrategy ||
                !takesNoSide(std::string_view(setting).substr(std::min(end + 1, setting.size())));
        } else if (command.name == "merge" && name.starts_with("branch.")) {
            command.settings.push_back("--config-env=" + name + "=" + std::string(emptyVariable));
        }
    }
    if (hasStrategy) {
        command.arguments.insert(command.arguments.begin(), "--strategy=recursive");
    }
    return command;
}

void GitMergeComposite::runMerge(const MergeCommand& command) {
    const auto own = withoutSides(command);
    if (!own) {
        return;
    }
    std::vector<std::string> variables = childVariables();
    variables.push_back(std::string(emptyVariable) + "=");
    setChildVariables(std::move(variables));
    std::vector<std::string> arguments = own->settings;
    arguments.push_back(own->name);
    arguments.insert(arguments.end(), own->arguments.begin(), own->arguments.end());
    runStoppable(arguments);
}

}  // namespace neb
