#include "NEBFoundation/NEBSourceControlInspection.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "LOMFoundation/LOMFormat.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Platform/Interceptor.h"
#include "Platform/PathString.h"

namespace neb {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view ignoreSubmodules = "--ignore-submodules=dirty";
constexpr std::string_view ignoreTextconv = "--no-textconv";
constexpr std::string_view ignoreExternalDiff = "--no-ext-diff";

struct SafeArgument {
    std::string_view command, argument;
};

/// What no setting switches off. git fails if diff.<driver>.textconv is empty.
constexpr SafeArgument safeArgumentRows[] = {
    {"blame", ignoreTextconv},         {"diff", ignoreTextconv},      {"diff", ignoreExternalDiff},
    {"diff", ignoreSubmodules},        {"diff-tree", ignoreTextconv}, {"log", ignoreTextconv},
    {"diff-tree", ignoreExternalDiff}, {"log", ignoreExternalDiff},   {"status", ignoreSubmodules},
};

constexpr std::string_view commandsWithServer[] = {
    "clone", "fetch",     "fetch-pack", "ls-remote", "pull",
    "push",  "send-pack", "svn",        "submodule", "remote-https"};

/// Returns the folder of a file whose path git printed relative to the folder in which it ran, or
/// to a folder above. Empty if there is no such file.
fs::path folderOfFile(const std::string& file, const fs::path& start) {
    std::error_code failure;
    fs::path folder = fs::absolute(start, failure);
    while (!file.empty()) {
        if (fs::exists(folder / file, failure)) {
            return (folder / file).parent_path();
        }
        if (folder == folder.parent_path()) {
            break;
        }
        folder = folder.parent_path();
    }
    return {};
}

/// Returns the names of the hooks of a repository in alphabetical order, a NUL between them. The
/// repository may be empty.
std::string hooksOf(const fs::path& repository) {
    const fs::path folder = repository.empty() ? fs::path() : repository / "hooks";
    std::vector<std::string> hooks;
    std::error_code failure;
    for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
        const std::string name = entry->path().filename();
        if (!name.ends_with(".sample") && ::access(entry->path().c_str(), X_OK) == 0) {
            hooks.push_back("hooks/" + name);
        }
    }
    std::ranges::sort(hooks);
    std::string names;
    for (const std::string& hook : hooks) {
        names.append(names.empty() ? 0 : 1, '\0').append(hook);
    }
    return names;
}

}  // namespace

// ---- a command --------------------------------------------------------------------------------

/// git has two global options whose value is another argument.
NEBSourceControlInspectedCommand::NEBSourceControlInspectedCommand(
    std::string_view launchPath, const std::vector<std::string>& arguments, std::string folder)
    : _folder(std::move(folder)) {
    auto argument = arguments.begin();
    if (lastPathComponent(launchPath) == "git") {
        while (argument != arguments.end() && argument->starts_with('-')) {
            const bool hasValue = *argument == "-c" || *argument == "-C";
            _globalArguments.push_back(*argument++);
            if (hasValue && argument != arguments.end()) {
                _globalArguments.push_back(*argument++);
            }
        }
        if (argument != arguments.end()) {
            _name = *argument++;
        }
    }
    _otherArguments.assign(argument, arguments.end());
}

std::vector<std::string> NEBSourceControlInspectedCommand::settingsArguments() const {
    std::vector<std::string> arguments = _globalArguments;
    arguments.insert(arguments.end(),
                     {"config", "--null", "--show-scope", "--show-origin", "--list"});
    return arguments;
}

std::vector<std::string> NEBSourceControlInspectedCommand::safeArguments() const {
    std::vector<std::string> arguments = _globalArguments;
    if (!_name.empty()) {
        arguments.push_back(_name);
    }
    for (const SafeArgument& row : safeArgumentRows) {
        if (row.command == _name) {
            arguments.emplace_back(row.argument);
        }
    }
    arguments.insert(arguments.end(), _otherArguments.begin(), _otherArguments.end());
    return arguments;
}

bool NEBSourceControlInspectedCommand::examinesSubmodules() const {
    return std::ranges::any_of(safeArgumentRows, [this](const SafeArgument& row) {
        return row.command == _name && row.argument == ignoreSubmodules;
    });
}

bool NEBSourceControlInspectedCommand::contactsServer() const {
    return std::ranges::find(commandsWithServer, _name) != std::end(commandsWithServer);
}

// ---- the repositories of a request ------------------------------------------------------------

std::optional<NEBSourceControlRepositoryPrograms> NEBSourceControlInspection::programsOf(
    const NEBSourceControlInspectedCommand& command) const {
    const MutexLock lock(_mutex);
    const auto found = _programs.find({command.folder(), command.settingsArguments()});
    return found == _programs.end() ? std::nullopt : std::optional(found->second);
}

void NEBSourceControlInspection::addSettings(const NEBSourceControlInspectedCommand& command,
                                             std::string_view listing) {
    NEBSourceControlRepositoryPrograms programs = NEBSourceControlProgramsInSettings(listing);
    const std::string hooks = interceptedText("hooks", command.folder(), [&] {
        return hooksOf(folderOfFile(programs.file, command.folder()));
    });
    const MutexLock lock(_mutex);
    for (const std::string& name : programs.switchedOff) {
        addName(name);
    }
    for (std::string_view rest = hooks; !rest.empty();) {
        const std::size_t end = std::min(rest.find('\0'), rest.size());
        addName(std::string(rest.substr(0, end)));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    _programs[{command.folder(), command.settingsArguments()}] = std::move(programs);
}

void NEBSourceControlInspection::addSubmodules() {
    const MutexLock lock(_mutex);
    addName("submodules");
}

std::vector<std::string> NEBSourceControlInspection::switchedOff() const {
    const MutexLock lock(_mutex);
    return _switchedOff;
}

void NEBSourceControlInspection::addName(const std::string& name) {
    if (std::ranges::find(_switchedOff, name) == _switchedOff.end()) {
        _switchedOff.push_back(name);
    }
}

NEBSourceControlError NEBSourceControlNotTrustedError(std::string_view format,
                                                      const std::vector<std::string>& values) {
    auto error = NEBSourceControlError::withDescription(NEBSourceControlGenericError,
                                                        formattedText(format, values));
    error.errorClass = NEBSourceControlNotTrustedErrorClass;
    return error;
}

}  // namespace neb
