#include "CommandLine/UsageError.h"

#include "CommandLine/CommandSynonyms.h"
#include "CommandLine/CommonOptions.h"
#include "CommandLine/SpellingSuggestions.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

using Kind = UsageError::Kind;

std::vector<std::string> namesOf(std::span<const Command* const> commands) {
    std::vector<std::string> names;
    for (const Command* command : commands) {
        if (!command->group.empty()) {
            names.emplace_back(command->name);
        }
    }
    return names;
}

std::vector<std::string> longOptionsOf(const Command* command) {
    std::vector<std::string> names;
    for (const Parameter* option : optionsOf(command)) {
        if (std::string name = longName(*option); name.starts_with("--")) {
            names.push_back(std::move(name));
        }
    }
    return names;
}

std::string unknownCommand(const UsageError& error, std::span<const Command* const> allCommands) {
    const bool isInner = !error.commands.empty();
    const std::string message = inQuotes(error.argument) + " is not a command" +
                                (isInner ? " of " + inQuotes(nameOf(error.commands)) : "");
    const std::string synonym =
        (isInner ? std::string(error.commands.back()->name) + " " : "") + error.argument;
    if (const std::string_view name = commandForSynonym(synonym); !name.empty()) {
        return message + "; use " + inQuotes("nebsc " + std::string(name));
    }
    return message + suggestionFor(error.argument, namesOf(isInner ? error.commands.back()->commands
                                                                   : allCommands));
}

/// Returns "auto, always or never".
std::string listOf(const std::vector<std::string>& choices) {
    std::string list;
    for (std::size_t i = 0; i < choices.size(); ++i) {
        list += (i == 0 ? "" : i + 1 == choices.size() ? " or " : ", ") + choices[i];
    }
    return list;
}

/// Returns "option '--color'" or "argument 'SHELL'".
std::string quoted(const Parameter& parameter) {
    return (parameter.isOption() ? "option " : "argument ") + inQuotes(longName(parameter));
}

std::string messageFor(const UsageError& error, std::span<const Command* const> allCommands) {
    switch (error.kind) {
        case Kind::missingCommand:
            return "missing command" + std::string(error.argument.empty() ? "" : " before '--'");
        case Kind::unknownCommand:
            return unknownCommand(error, allCommands);
        case Kind::unknownOption:
            return "unknown option " + inQuotes(error.argument) +
                   suggestionFor(
                       error.argument,
                       longOptionsOf(error.commands.empty() ? nullptr : error.commands.back()));
        case Kind::misplacedOption:
            return "option " + inQuotes(error.argument) + " must precede the command";
        case Kind::missingValue:
            return quoted(*error.parameter) + " requires a value";
        case Kind::unexpectedValue:
            return quoted(*error.parameter) + " takes no value";
        case Kind::repeatedOption:
            return quoted(*error.parameter) + " can be given only once";
        case Kind::invalidValue:
            return "invalid value " + inQuotes(error.argument) + " for " +
                   quoted(*error.parameter) + "; expected " +
                   (error.detail.empty() ? listOf(choicesOf(*error.parameter)) : error.detail);
        case Kind::emptyValue:
            return quoted(*error.parameter) + " must not be empty";
        case Kind::unexpectedArgument:
            return "unexpected argument " + inQuotes(error.argument);
        case Kind::missingArgument:
            return error.parameter->isOption() ? quoted(*error.parameter) + " is required"
                                               : "missing " + quoted(*error.parameter);
        case Kind::invalidArguments:
            return error.detail;
    }
    return {};
}

std::string adviceFor(const UsageError& error) {
    if (error.kind == Kind::misplacedOption) {
        const std::string commands = nameOf(error.commands).substr(nameOf({}).size());
        return "Use " + inQuotes("nebsc " + error.argument + " DIR" + commands) + ".";
    }
    return "Try " + inQuotes(nameOf(error.commands) + " --help") + " for more information.";
}

}  // namespace

std::string nameOf(std::span<const Command* const> commands) {
    std::string name = "nebsc";
    for (const Command* command : commands) {
        name.append(" ").append(command->name);
    }
    return name;
}

UsageError invalidArguments(std::string message) {
    return {.kind = Kind::invalidArguments, .detail = std::move(message)};
}

CommandOutput outputOf(const UsageError& error, std::span<const Command* const> allCommands) {
    CommandOutput output = refusal(messageFor(error, allCommands), exitUsageError);
    output.standardError += adviceFor(error) + "\n";
    return output;
}

}  // namespace neb::nebsc
