// CommandLineParser.h - a parser of the command line, driven by the table of commands.
//
//     nebsc [OPTION]... COMMAND [SUBCOMMAND] [OPTION | ARGUMENT]... [-- ARGUMENT...]
//
// An option is given as "--name", "--name VALUE", "--name=VALUE", "-n VALUE" or "-nVALUE"; flags of
// one letter can be combined. An option that takes a value takes the next argument, whatever it
// looks like. "-" is an argument. After "--", every argument is one, even if it starts with "-".
// "help" in the position of a command or subcommand is the same as "--help", but what follows must
// be valid.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "CommandLine/Command.h"
#include "CommandLine/UsageError.h"

namespace neb::nebsc {

struct ParsedCommandLine {
    /// The named commands, outermost first: "branch", "create". Empty without a command, which is
    /// valid with --help and --version only.
    std::vector<const Command*> commands{};
    /// The values of the command's parameters and of the common options.
    Arguments arguments{};

    /// Returns the innermost command; null without one.
    [[nodiscard]] const Command* command() const {
        return commands.empty() ? nullptr : commands.back();
    }
};

/// Parses one argument after the other. Not thread-safe.
class CommandLineParser {
public:
    /// The commands must outlive the parser.
    explicit CommandLineParser(std::span<const Command* const> commands)
        : _nextCommands(commands) {}

    /// Parses the next argument. Continues after an error; finish() returns the first.
    void parse(const std::string& argument);

    /// Checks that nothing is missing and returns the values or the first error. If help is
    /// requested, nothing is missing, and after "--help" no error but an unknown command counts.
    [[nodiscard]] std::variant<ParsedCommandLine, UsageError> finish() &&;

    // ---- the state after the arguments so far, for completion

    /// Returns the commands and options so far. Arguments are assigned by finish().
    [[nodiscard]] const ParsedCommandLine& parsed() const { return _parsed; }
    /// Returns the arguments so far that are neither commands nor options.
    [[nodiscard]] const std::vector<std::string>& operands() const { return _operands; }
    /// Returns the option that takes the next argument as its value, or null.
    [[nodiscard]] const Parameter* pendingOption() const { return _pendingOption; }
    [[nodiscard]] bool acceptsOptions() const;
    /// Returns the commands that may be named next; empty if none may.
    [[nodiscard]] std::span<const Command* const> nextCommands() const;
    /// Returns the parameter to which the next argument belongs; null if none is left.
    [[nodiscard]] const Parameter* nextOperand() const;

private:
    void parseLongOption(const std::string& argument);
    void parseShortOptions(const std::string& argument);
    void addOption(const Parameter& option);
    void addValue(const Parameter& parameter, const std::string& value);
    void parseOperand(const std::string& argument);
    void fail(UsageError::Kind kind, const std::string& argument,
              const Parameter* parameter = nullptr);
    void assignOperands();
    void checkRequired();
    [[nodiscard]] bool hasUnknownCommand() const {
        return _error && _error->kind == UsageError::Kind::unknownCommand;
    }

    ParsedCommandLine _parsed;
    std::vector<std::string> _operands;
    std::optional<UsageError> _error;
    std::span<const Command* const> _nextCommands;
    const Parameter* _pendingOption = nullptr;
    /// Whether help was requested by "help".
    bool _hasHelpCommand = false;
    /// How many operands follow "--"; absent before a "--".
    std::optional<std::size_t> _countAfterDashes;
};

/// Parses the arguments after "nebsc".
[[nodiscard]] std::variant<ParsedCommandLine, UsageError> parseCommandLine(
    std::span<const std::string> arguments, std::span<const Command* const> commands);

}  // namespace neb::nebsc
