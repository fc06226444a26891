// Command.h - the description of a command: its name, its parameters and the function that runs it.
//
// A command is a constant in a source file of its family. The table of all commands
// (Commands/Commands.h) drives parsing, help, manual page and completion.
//
//     namespace {
//     constexpr Parameter parameters[] = {{"FILE", "The files", Takes::path, Occurs::oneOrMore}};
//     CommandOutput run(const CommandCall& call) { … }
//     }  // namespace
//     constinit const Command addCommand{.name = "add", …, .parameters = parameters, .run = run};
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "CommandLine/Arguments.h"
#include "CommandLine/Parameter.h"
#include "Session/HostSession.h"
#include "Session/PlugInFile.h"
#include "Terminal/Colour.h"
#include "Terminal/CommandOutput.h"

namespace neb::nebsc {

class BrowseGateway;
struct Command;

/// One invocation of a command. Everything it refers to outlives the run.
struct CommandCall {
    const PlugInFile& plugIn;
    /// Can perform requests only if the command needs the plug-in.
    const HostSession& session;
    const Command& command;
    const Arguments& arguments;
    /// Whether to print JSON instead of text.
    bool isJSON = false;
    Colours colours = Colours::automatic;
    /// For the whole command, without its start; absent: none.
    std::optional<std::chrono::milliseconds> timeLimit = std::nullopt;
    /// Only in the program nebsc-browse; null elsewhere.
    const BrowseGateway* gateway = nullptr;
};

struct Command {
    std::string_view name;
    /// The heading of the command in the help. The help omits a command whose group is empty.
    std::string_view group;
    /// The line in the help, in the imperative, without a full stop.
    std::string_view summary;
    /// The text of the command's own help after the parameters, with at least one example. Ends
    /// with a newline.
    std::string_view details;
    std::span<const Parameter> parameters = {};
    /// The label of the progress indicator: "Cloning".
    std::string_view activity = {};
    /// The subcommands. Without one, the command itself runs.
    std::span<const Command* const> commands = {};
    /// Whether text goes through a pager on a terminal.
    bool isPaged = false;
    /// Whether the command is refused if the plug-in cannot be loaded.
    bool needsPlugIn = true;
    /// Returns everything that the command prints, except records that it prints while git runs. If
    /// a signal ends the work, the exit status is that of the signal. Runs on the main thread, one
    /// at a time.
    CommandOutput (*run)(const CommandCall& call) = nullptr;
};

}  // namespace neb::nebsc
