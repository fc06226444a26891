#include "CommandLine/UsageError.h"

#include "CommandLine/ArgumentList.h"
#include "CommandLine/CommandLine.h"
#include "CommandLine/GitNames.h"
#include "CommandLine/SpellingSuggestions.h"
#include "Terminal/Presentation.h"

namespace neb::nebsc {

namespace {

std::vector<std::string> namesOf(std::span<const Command* const> commands) {
    std::vector<std::string> names;
    for (const Command* command : commands) {
        if (!command->group.empty()) {
            names.emplace_back(command->name);
        }
    }
    return names;
}

/// The long names of all options that may stand in a call of the command.
std::vector<std::string> optionsOf(const Command* command) {
    std::vector<std::string> options{"--help"};
    const auto add = [&options](std::span<const Parameter> parameters) {
        for (const Parameter& parameter : parameters) {
            if (parameter.isOption()) {
                options.push_back(longName(parameter));
            }
        }
    };
    add(commonParameters());
    if (command != nullptr) {
        add(command->parameters);
    }
    return options;
}

/// "nebsc branch list"
std::string nameOf(const std::string& commandName) {
    return "nebsc " + commandName.substr(0, commandName.size() - 1);
}

/// "nebsc cp FILE DEST", without the options.
std::string usageOf(const std::string& commandName, const Command& command) {
    std::string usage = nameOf(commandName);
    for (const Parameter& parameter : command.parameters) {
        if (!parameter.isOption()) {
            const std::string word =
                std::string(parameter.name) + (parameter.isRepeated() ? "…" : "");
            usage += parameter.isRequired() ? " " + word : " [" + word + "]";
        }
    }
    return usage;
}

}  // namespace

UsageError unknownOption(const std::string& option, const std::string& commandName,
                         const Command* command) {
    return {"There is no option " + inQuotes(option) +
                (command == nullptr ? "" : " of " + inQuotes(nameOf(commandName))),
            questionForSimilar(option, optionsOf(command))};
}

UsageError unknownCommand(const std::string& commandName, const std::string& name,
                          std::span<const Command* const> commands) {
    const std::string sentence = "There is no command " + inQuotes(commandName + name);
    const std::string_view own = nameOfGitCommand(commandName + name);
    return {sentence, own.empty()
                          ? questionForSimilar(name, namesOf(commands))
                          : " The command is " + inQuotes("nebsc " + std::string(own)) + "."};
}

UsageError unexpectedArgument(const std::string& argument, const std::string& commandName,
                              const Command& command) {
    return {"The word " + inQuotes(argument) +
            " is one too many: " + usageOf(commandName, command)};
}

UsageError missingParameter(const Parameter& parameter, const std::string& commandName,
                            const Command& command) {
    return {longName(parameter) + " is required" +
            (parameter.isOption() ? "" : ": " + usageOf(commandName, command))};
}

UsageError usageErrorInOption(const std::string& text) {
    const std::string word = text.substr(0, text.find_first_of(": "));
    const std::string name = inQuotes((word.starts_with('-') ? "" : "--") + word);
    if (text.find(" missing") != std::string::npos) {
        return {"The option " + name + " lacks its value"};
    }
    if (text.find("flag override") != std::string::npos) {
        return {"The option " + name + " takes no value"};
    }
    return {"The option " + name + " stands in the call more than once"};
}

CommandOutput refusedCall(const UsageError& mistake, const std::string& commandName) {
    std::string sentence =
        mistake.sentence +
        (mistake.question.empty() ? " (see nebsc " + commandName + "--help)." : ".") +
        mistake.question;
    return refusal(withoutShields(std::move(sentence)), exitNotUnderstood);
}

}  // namespace neb::nebsc
