#include "Commands/InspectingCommands.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Terminal/ErrorText.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

/// A command that is not listed is refused. The requests of "config", "request" and "serve" are
/// refused one by one if they change the repository.
constexpr std::string_view readingCommands[] = {
    "status",
    "log",
    "show",
    "blame",
    "diff",
    "ls",
    "cat",
    "export",
    "export-tree",
    "info",
    "browse",
    "config",
    "branch",
    "branch list",
    "branch current",
    "branch tracking",
    "merge-base",
    "tag",
    "tag list",
    "stash",
    "stash list",
    "stash show",
    "worktree",
    "worktree list",
    "submodule",
    "submodule list",
    "remote",
    "remote list",
    "remote branches",
    "request",
    "serve",
    "types",
    "completion",
    "complete",
    "manual",
};

}  // namespace

std::string nameOfCommand(const std::vector<const Command*>& commands) {
    std::string name;
    for (const Command* command : commands) {
        name.append(name.empty() ? "" : " ").append(command->name);
    }
    return name;
}

bool readsOnly(const std::vector<const Command*>& commands) {
    return std::ranges::find(readingCommands, nameOfCommand(commands)) != std::end(readingCommands);
}

CommandOutput notTrusted(const std::vector<const Command*>& commands) {
    return refusal(inQuotes(nameOfCommand(commands)) +
                       " may change the repository or run its programs; it does not work with "
                       "'--inspect'",
                   exitFailed, NEBSourceControlNotTrustedErrorClass);
}

}  // namespace neb::nebsc
