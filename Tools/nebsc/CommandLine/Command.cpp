#include "CommandLine/Command.h"

#include <array>

#include "Commands/Commands.h"

namespace neb::nebsc {

std::string longName(const Parameter& parameter) {
    const std::size_t comma = parameter.name.find(',');
    return std::string(comma == std::string_view::npos ? parameter.name
                                                       : parameter.name.substr(comma + 1));
}

std::optional<std::string> Arguments::value(std::string_view name) const {
    const std::vector<std::string>& values = all(name);
    return values.empty() ? std::nullopt : std::optional(values.front());
}

const std::vector<std::string>& Arguments::all(std::string_view name) const {
    static const std::vector<std::string> none;
    const auto entry = _values.find(name);
    return entry == _values.end() ? none : entry->second;
}

std::span<const Command* const> allCommands() {
    static constexpr std::array commands{
        &statusCommand,
        &logCommand,
        &blameCommand,
        &diffCommand,
        &listCommand,
        &exportCommand,
        &exportTreeCommand,
        &infoCommand,
        &doctorCommand,
        //
        &initCommand,
        &addCommand,
        &removeCommand,
        &moveCommand,
        &copyCommand,
        &makeDirectoryCommand,
        &ignoreCommand,
        &revertCommand,
        &commitCommand,
        //
        &branchCommand,
        &checkoutCommand,
        &mergeCommand,
        &mergeBaseCommand,
        //
        &cloneCommand,
        &remoteCommand,
        &fetchCommand,
        &pushCommand,
        &updateCommand,
        //
        &subversionCommand,
        //
        &requestCommand,
        &serveCommand,
        &typesCommand,
        //
        &completionCommand,
        &completeCommand,
        &manualCommand,
    };
    return commands;
}

}  // namespace neb::nebsc
