#include "CommandLine/CommandLineParser.h"

#include <algorithm>
#include <utility>

#include "CommandLine/CommonOptions.h"

namespace neb::nebsc {

namespace {

using Kind = UsageError::Kind;

constexpr std::string_view helpCommand = "help";

}  // namespace

// ---- arguments ----------------------------------------------------------------------------------

void CommandLineParser::parse(const std::string& argument) {
    if (_pendingOption != nullptr) {
        addValue(*std::exchange(_pendingOption, nullptr), argument);
    } else if (_countAfterDashes) {
        ++*_countAfterDashes;
        parseOperand(argument);
    } else if (argument == "--") {
        _countAfterDashes = 0;
    } else if (argument.starts_with("--")) {
        parseLongOption(argument);
    } else if (argument.size() > 1 && argument.starts_with('-')) {
        parseShortOptions(argument);
    } else {
        parseOperand(argument);
    }
}

void CommandLineParser::parseLongOption(const std::string& argument) {
    const std::size_t equals = argument.find('=');
    const std::string name = argument.substr(0, equals);
    const Parameter* option = optionNamed(name, _parsed.command());
    if (option == nullptr) {
        fail(Kind::unknownOption, name);
    } else if (equals == std::string::npos) {
        addOption(*option);
    } else if (option->isFlag()) {
        fail(Kind::unexpectedValue, name, option);
    } else {
        addValue(*option, argument.substr(equals + 1));
    }
}

void CommandLineParser::parseShortOptions(const std::string& argument) {
    for (std::size_t i = 1; i < argument.size(); ++i) {
        const std::string name{'-', argument[i]};
        const Parameter* option = optionNamed(name, _parsed.command());
        if (option == nullptr) {
            return name == folderOption ? fail(Kind::misplacedOption, name)
                                        : fail(Kind::unknownOption, argument);
        }
        if (!option->isFlag() && i + 1 < argument.size()) {
            return addValue(*option, argument.substr(i + 1));
        }
        addOption(*option);
    }
}

void CommandLineParser::addOption(const Parameter& option) {
    if (option.isFlag()) {
        _parsed.arguments.set(longName(option), {""});
    } else {
        _pendingOption = &option;
    }
}

void CommandLineParser::addValue(const Parameter& parameter, const std::string& value) {
    const std::string name = longName(parameter);
    const std::vector<std::string> choices = choicesOf(parameter);
    if (_parsed.arguments.has(name) && !parameter.isRepeated()) {
        fail(Kind::repeatedOption, name, &parameter);
    } else if (!choices.empty() &&
               std::find(choices.begin(), choices.end(), value) == choices.end()) {
        fail(Kind::invalidValue, value, &parameter);
    } else if (value.empty() && !parameter.mayBeEmpty) {
        fail(Kind::emptyValue, name, &parameter);
    } else {
        _parsed.arguments.add(name, value);
    }
}

/// Parses an argument that is no option: a command, or a value that assignOperands() assigns.
void CommandLineParser::parseOperand(const std::string& argument) {
    const auto commands = nextCommands();
    const auto command = std::find_if(commands.begin(), commands.end(),
                                      [&](const Command* row) { return row->name == argument; });
    if (command != commands.end()) {
        _parsed.commands.push_back(*command);
        _nextCommands = (*command)->commands;
    } else if (argument == helpCommand && !commands.empty()) {
        _parsed.arguments.set(helpOption, {""});
        _hasHelpCommand = true;
    } else if (nextOperand() != nullptr) {
        _operands.push_back(argument);
        _nextCommands = {};
    } else {
        fail(!commands.empty()          ? Kind::unknownCommand
             : _parsed.commands.empty() ? Kind::missingCommand
                                        : Kind::unexpectedArgument,
             argument);
        _nextCommands = {};
    }
}

void CommandLineParser::fail(Kind kind, const std::string& argument, const Parameter* parameter) {
    if (!_error) {
        _error = {.kind = kind,
                  .argument = argument,
                  .parameter = parameter,
                  .commands = _parsed.commands};
    }
}

// ---- the end ------------------------------------------------------------------------------------

std::variant<ParsedCommandLine, UsageError> CommandLineParser::finish() && {
    if (_parsed.arguments.has(helpOption) && !hasUnknownCommand() && !(_hasHelpCommand && _error)) {
        return std::move(_parsed);
    }
    if (_pendingOption != nullptr) {
        fail(Kind::missingValue, longName(*_pendingOption), _pendingOption);
    }
    assignOperands();
    if (!_parsed.arguments.has(versionOption)) {
        checkRequired();
    }
    if (_error) {
        return *std::move(_error);
    }
    return std::move(_parsed);
}

/// Gives each parameter one value, a repeated one all that are left.
void CommandLineParser::assignOperands() {
    _parsed.arguments.setCountAfterDashes(_countAfterDashes);
    const std::vector<std::string> operands = std::exchange(_operands, {});
    for (const std::string& operand : operands) {
        addValue(*nextOperand(), operand);
        _operands.push_back(operand);
    }
}

void CommandLineParser::checkRequired() {
    if (_parsed.commands.empty()) {
        return fail(Kind::missingCommand, "");
    }
    for (const Parameter& parameter : _parsed.command()->parameters) {
        if (parameter.isRequired() && !_parsed.arguments.has(longName(parameter))) {
            fail(Kind::missingArgument, "", &parameter);
        }
    }
}

// ---- what may follow ----------------------------------------------------------------------------

bool CommandLineParser::acceptsOptions() const {
    return !_countAfterDashes && !hasUnknownCommand();
}

std::span<const Command* const> CommandLineParser::nextCommands() const {
    return _countAfterDashes ? std::span<const Command* const>() : _nextCommands;
}

const Parameter* CommandLineParser::nextOperand() const {
    std::size_t left = _operands.size();
    if (_parsed.command() != nullptr) {
        for (const Parameter& parameter : _parsed.command()->parameters) {
            if (!parameter.isOption() && (left-- == 0 || parameter.isRepeated())) {
                return &parameter;
            }
        }
    }
    return nullptr;
}

std::variant<ParsedCommandLine, UsageError> parseCommandLine(
    std::span<const std::string> arguments, std::span<const Command* const> commands) {
    CommandLineParser parser(commands);
    for (const std::string& argument : arguments) {
        parser.parse(argument);
    }
    return std::move(parser).finish();
}

}  // namespace neb::nebsc
