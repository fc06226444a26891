#include "Command.h"

#include <array>

#include "Commands.h"

namespace neb::nebsc {

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
        &addCommand,
        &removeCommand,
        &moveCommand,
        &copyCommand,
        &makeDirectoryCommand,
        &revertCommand,
        &commitCommand,
        //
        &checkoutCommand,
        &mergeCommand,
        &mergeBaseCommand,
        &branchCommand,
        //
        &logCommand,
        &blameCommand,
        &diffCommand,
        &listCommand,
        &exportCommand,
        &exportTreeCommand,
        //
        &initCommand,
        &cloneCommand,
        &infoCommand,
        //
        &remoteCommand,
        &fetchCommand,
        &pushCommand,
        &updateCommand,
        //
        &requestCommand,
        &serveCommand,
        &typesCommand,
    };
    return commands;
}

}  // namespace neb::nebsc
