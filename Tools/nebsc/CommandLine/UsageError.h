// UsageError.h - an invalid command line.
//
// The parser returns it. A command that finds such a mistake later, before it changes anything,
// throws it without `commands`; the program adds them. Both are reported the same way.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "CommandLine/Command.h"
#include "Terminal/CommandOutput.h"

namespace neb::nebsc {

struct UsageError {
    enum class Kind {
        /// There is no command, or `argument` follows a "--" without a command before it.
        missingCommand,
        /// `argument` is in the position of a command.
        unknownCommand,
        unknownOption,
        /// The option is accepted only before the command.
        misplacedOption,
        /// The option is the last argument and requires a value.
        missingValue,
        /// The option is a flag and was given a value.
        unexpectedValue,
        repeatedOption,
        /// `argument` is not a valid value of `parameter`. `detail` is what is valid; empty if
        /// `parameter` lists the choices.
        invalidValue,
        /// `parameter` was given an empty value.
        emptyValue,
        unexpectedArgument,
        /// `parameter` is required.
        missingArgument,
        /// The arguments are invalid for the reason in `detail`, which is the whole message.
        invalidArguments,
    };

    Kind kind;
    /// The argument in error as given, an option without its value. Empty if something is missing.
    std::string argument = {};
    /// The option or argument in error. Null if the command line names none that exists.
    const Parameter* parameter = nullptr;
    /// The commands named so far, outermost first.
    std::vector<const Command*> commands = {};
    std::string detail = {};
};

/// Returns an error with this message, which begins in lower case and has no full stop.
[[nodiscard]] UsageError invalidArguments(std::string message);

/// Returns "nebsc branch create" for the two commands, "nebsc" for none.
[[nodiscard]] std::string nameOf(std::span<const Command* const> commands);

/// Returns the message on standard error, with a suggestion for a misspelt name from `allCommands`,
/// and a second line on what to do. The exit status is 2.
[[nodiscard]] CommandOutput outputOf(const UsageError& error,
                                     std::span<const Command* const> allCommands);

}  // namespace neb::nebsc
