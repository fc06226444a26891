// What the parser relies on in the table of commands.

#include <gmock/gmock.h>

#include "CommandLine/CommandLineParser.h"
#include "Commands/Commands.h"

namespace neb::nebsc {
namespace {

using testing::UnorderedElementsAre;
using Kind = UsageError::Kind;
using Strings = std::vector<std::string>;

/// Arguments are assigned in order, one each, and the last may be repeated.
void expectAssignable(const Command& command) {
    bool wasOptional = false;
    bool wasRepeated = false;
    for (const Parameter& parameter : command.parameters) {
        if (!parameter.isOption()) {
            EXPECT_FALSE(wasRepeated) << command.name << ' ' << parameter.name;
            EXPECT_FALSE(wasOptional && parameter.isRequired())
                << command.name << ' ' << parameter.name;
            wasOptional = !parameter.isRequired();
            wasRepeated = parameter.isRepeated();
            EXPECT_TRUE(command.commands.empty()) << command.name;
            EXPECT_NE(parameter.takes, Takes::nothing) << command.name << ' ' << parameter.name;
        } else {
            EXPECT_EQ(parameter.isFlag(), parameter.valueName.empty())
                << command.name << ' ' << parameter.name;
        }
    }
    for (const Command* subcommand : command.commands) {
        expectAssignable(*subcommand);
    }
}

/// Gives an empty value to this parameter and some value to those that are required before it.
Strings argumentsWithEmpty(const Strings& names, const Command& command, const Parameter& empty) {
    Strings arguments = names;
    for (const Parameter& parameter : command.parameters) {
        if (!parameter.isOption()) {
            arguments.emplace_back(&parameter == &empty ? "" : "x");
        }
        if (&parameter == &empty) {
            break;
        }
    }
    if (empty.isOption()) {
        arguments.push_back(longName(empty));
        arguments.emplace_back();
    }
    return arguments;
}

void expectEmptyValuesRefused(Strings names, const Command& command) {
    names.emplace_back(command.name);
    for (const Parameter& parameter : command.parameters) {
        if (parameter.isFlag() || parameter.mayBeEmpty) {
            continue;
        }
        const auto parsed =
            parseCommandLine(argumentsWithEmpty(names, command, parameter), allCommands());
        const auto* error = std::get_if<UsageError>(&parsed);
        ASSERT_NE(error, nullptr) << command.name << ' ' << parameter.name;
        EXPECT_EQ(error->kind, choicesOf(parameter).empty() ? Kind::emptyValue : Kind::invalidValue)
            << command.name << ' ' << parameter.name;
        EXPECT_EQ(error->parameter, &parameter) << command.name << ' ' << parameter.name;
    }
    for (const Command* subcommand : command.commands) {
        expectEmptyValuesRefused(names, *subcommand);
    }
}

/// Adds the parameters that accept an empty value: "commit --message".
void addThoseThatMayBeEmpty(const Command& command, Strings& names) {
    for (const Parameter& parameter : command.parameters) {
        if (parameter.mayBeEmpty) {
            names.push_back(std::string(command.name) + " " + longName(parameter));
        }
    }
    for (const Command* subcommand : command.commands) {
        addThoseThatMayBeEmpty(*subcommand, names);
    }
}

TEST(CommandTable, NamesAndPathsMustNotBeEmpty) {
    Strings names;
    for (const Command* command : allCommands()) {
        expectEmptyValuesRefused({}, *command);
        addThoseThatMayBeEmpty(*command, names);
    }
    EXPECT_THAT(names,
                UnorderedElementsAre("commit --message", "config VALUE", "complete ARGUMENT"));
}

TEST(CommandTable, ArgumentsCanBeAssignedInOrder) {
    for (const Command* command : allCommands()) {
        expectAssignable(*command);
    }
}

}  // namespace
}  // namespace neb::nebsc
