// The grammar of the command line.

#include "CommandLine/CommandLineParser.h"

#include <gmock/gmock.h>

#include "CommandLine/CommonOptions.h"

namespace neb::nebsc {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Kind = UsageError::Kind;
using Strings = std::vector<std::string>;

constexpr Parameter innerParameters[] = {{"--force", "Do it"}};
constexpr Command inner{
    .name = "inner", .group = "g", .summary = "s", .details = "", .parameters = innerParameters};
constexpr const Command* innerCommands[] = {&inner};
constexpr Command outer{
    .name = "outer", .group = "g", .summary = "s", .details = "", .commands = innerCommands};

constexpr Parameter copyParameters[] = {
    {"SOURCE", "A path", Takes::path, Occurs::once},
    {"TARGET", "A path", Takes::path},
    {"-a,--all", "A flag"},
    {"-b,--both", "Another"},
    {"-n,--count", "Once", Takes::text, Occurs::optionally, "N"},
    {"-m,--message", "Repeated", Takes::text, Occurs::anyNumber, "TEXT", true},
    {"--when", "A choice", Takes::text, Occurs::optionally, "now|later"},
};
constexpr Command copy{
    .name = "copy", .group = "g", .summary = "s", .details = "", .parameters = copyParameters};

constexpr Parameter addParameters[] = {
    {"FIRST", "A path", Takes::path},
    {"REST", "More", Takes::path, Occurs::anyNumber},
    {"--note", "Required", Takes::text, Occurs::once, "TEXT"},
};
constexpr Command add{
    .name = "add", .group = "g", .summary = "s", .details = "", .parameters = addParameters};

constexpr const Command* commands[] = {&outer, &copy, &add};

ParsedCommandLine valuesOf(const Strings& arguments) {
    auto parsed = parseCommandLine(arguments, commands);
    const bool isValid = std::holds_alternative<ParsedCommandLine>(parsed);
    EXPECT_TRUE(isValid) << testing::PrintToString(arguments);
    return isValid ? std::get<ParsedCommandLine>(std::move(parsed)) : ParsedCommandLine();
}

/// The kind of the error and the argument it names.
void expectError(const Strings& arguments, Kind kind, const std::string& argument,
                 const Command* command = nullptr) {
    auto parsed = parseCommandLine(arguments, commands);
    const auto* error = std::get_if<UsageError>(&parsed);
    ASSERT_NE(error, nullptr) << testing::PrintToString(arguments);
    EXPECT_EQ(error->kind, kind) << testing::PrintToString(arguments);
    EXPECT_EQ(error->argument, argument) << testing::PrintToString(arguments);
    EXPECT_EQ(error->commands.empty() ? nullptr : error->commands.back(), command)
        << testing::PrintToString(arguments);
}

// ---- commands -----------------------------------------------------------------------------------

TEST(CommandLineParser, ACommandMayHaveSubcommands) {
    EXPECT_THAT(valuesOf({"outer"}).commands, ElementsAre(&outer));
    EXPECT_THAT(valuesOf({"outer", "inner"}).commands, ElementsAre(&outer, &inner));
    EXPECT_THAT(valuesOf({"--json", "outer", "--trace", "inner", "--force"}).commands,
                ElementsAre(&outer, &inner));
    expectError({"outer", "x"}, Kind::unknownCommand, "x", &outer);
    expectError({"outer", "x", "inner"}, Kind::unknownCommand, "x", &outer);
    expectError({"outer", "inner", "x"}, Kind::unexpectedArgument, "x", &inner);
    expectError({"outer", "--force", "inner"}, Kind::unknownOption, "--force", &outer);
}

TEST(CommandLineParser, ACommandIsRequired) {
    expectError({}, Kind::missingCommand, "");
    expectError({"--json"}, Kind::missingCommand, "");
    expectError({"--"}, Kind::missingCommand, "");
    expectError({"--", "copy"}, Kind::missingCommand, "copy");
    expectError({"x"}, Kind::unknownCommand, "x");
    expectError({"-"}, Kind::unknownCommand, "-");
    expectError({""}, Kind::unknownCommand, "");
    EXPECT_THAT(valuesOf({"--version"}).commands, IsEmpty());
}

TEST(CommandLineParser, ANameOfACommandIsAnArgumentAfterTheCommand) {
    EXPECT_THAT(valuesOf({"copy", "copy", "add"}).arguments.all("TARGET"), ElementsAre("add"));
    EXPECT_THAT(valuesOf({"copy", "help"}).arguments.all("SOURCE"), ElementsAre("help"));
}

// ---- options ------------------------------------------------------------------------------------

TEST(CommandLineParser, AnOptionHasItsValueInTheSameOrTheNextArgument) {
    for (const Strings& option :
         {Strings{"--count", "5"}, {"--count=5"}, {"-n", "5"}, {"-n5"}, {"-an5"}, {"-an", "5"}}) {
        Strings arguments{"copy", "x"};
        arguments.insert(arguments.end(), option.begin(), option.end());
        EXPECT_THAT(valuesOf(arguments).arguments.all("--count"), ElementsAre("5"));
        arguments = {"copy"};
        arguments.insert(arguments.end(), option.begin(), option.end());
        arguments.emplace_back("x");
        EXPECT_THAT(valuesOf(arguments).arguments.all("--count"), ElementsAre("5"));
    }
    EXPECT_THAT(valuesOf({"copy", "x", "-n=5"}).arguments.all("--count"), ElementsAre("=5"));
    EXPECT_THAT(valuesOf({"copy", "x", "--count=a=b"}).arguments.all("--count"),
                ElementsAre("a=b"));
}

TEST(CommandLineParser, AValueMayLookLikeAnythingElse) {
    for (const char* value : {"--all", "-a", "-", "--", "--help", "-C", "copy"}) {
        const Arguments arguments =
            valuesOf({"copy", "x", "-m", value, "--count", value}).arguments;
        EXPECT_THAT(arguments.all("--message"), ElementsAre(value));
        EXPECT_THAT(arguments.all("--count"), ElementsAre(value));
        EXPECT_FALSE(arguments.has("--all"));
        EXPECT_FALSE(arguments.countAfterDashes());
    }
    EXPECT_THAT(valuesOf({"copy", "x", "--count=1", "y"}).arguments.all("TARGET"),
                ElementsAre("y"));
}

TEST(CommandLineParser, AValueIsEmptyOnlyIfItsRowSaysSo) {
    for (const Strings& message : {Strings{"-m", ""}, {"--message", ""}, {"--message="}}) {
        Strings arguments{"copy", "x"};
        arguments.insert(arguments.end(), message.begin(), message.end());
        EXPECT_THAT(valuesOf(arguments).arguments.all("--message"), ElementsAre(""));
    }
    EXPECT_THAT(valuesOf({"copy", "x", "--message=", "y"}).arguments.all("TARGET"),
                ElementsAre("y"));
    EXPECT_THAT(valuesOf({"-C", "", "copy", "x"}).arguments.all(folderOption), ElementsAre(""));
    for (const Strings& count : {Strings{"-n", ""}, {"--count", ""}, {"--count="}}) {
        Strings arguments{"copy", "x"};
        arguments.insert(arguments.end(), count.begin(), count.end());
        expectError(arguments, Kind::emptyValue, "--count", &copy);
    }
    expectError({"copy", ""}, Kind::emptyValue, "SOURCE", &copy);
    expectError({"copy", "x", "--", ""}, Kind::emptyValue, "TARGET", &copy);
    expectError({"add", "--note=n", "a", "b", ""}, Kind::emptyValue, "REST", &add);
    expectError({"--plugin=", "copy", "x"}, Kind::emptyValue, "--plugin");
}

TEST(CommandLineParser, FlagsOfOneLetterCombine) {
    const Arguments both = valuesOf({"copy", "x", "-ab"}).arguments;
    EXPECT_TRUE(both.has("--all"));
    EXPECT_TRUE(both.has("--both"));
    EXPECT_TRUE(valuesOf({"copy", "x", "-aa", "--all"}).arguments.has("--all"));
    expectError({"copy", "x", "-az"}, Kind::unknownOption, "-az", &copy);
}

TEST(CommandLineParser, AnOptionIsRepeatedOnlyIfItsRowSaysSo) {
    EXPECT_THAT(valuesOf({"copy", "x", "-m", "1", "--message=2", "-m3"}).arguments.all("--message"),
                ElementsAre("1", "2", "3"));
    expectError({"copy", "x", "-n1", "--count", "2"}, Kind::repeatedOption, "--count", &copy);
    expectError({"--plugin=a", "copy", "x", "--plugin=b"}, Kind::repeatedOption, "--plugin", &copy);
}

TEST(CommandLineParser, AnUnknownOptionIsNamedWithoutItsValue) {
    expectError({"copy", "--bad=1"}, Kind::unknownOption, "--bad", &copy);
    expectError({"--bad", "copy"}, Kind::unknownOption, "--bad");
    expectError({"copy", "-z5"}, Kind::unknownOption, "-z5", &copy);
    expectError({"copy", "-5"}, Kind::unknownOption, "-5", &copy);
    expectError({"copy", "---all"}, Kind::unknownOption, "---all", &copy);
    expectError({"copy", "--=x"}, Kind::unknownOption, "--", &copy);
    expectError({"copy", "-\xc3\xa9"}, Kind::unknownOption, "-\xc3\xa9", &copy);
    expectError({"--all", "copy"}, Kind::unknownOption, "--all");
}

TEST(CommandLineParser, AFlagTakesNoValueAndOtherOptionsRequireOne) {
    expectError({"copy", "x", "--all=yes"}, Kind::unexpectedValue, "--all", &copy);
    expectError({"copy", "x", "--all="}, Kind::unexpectedValue, "--all", &copy);
    expectError({"copy", "x", "--count"}, Kind::missingValue, "--count", &copy);
    expectError({"copy", "x", "-an"}, Kind::missingValue, "--count", &copy);
    expectError({"-C"}, Kind::missingValue, "-C");
}

TEST(CommandLineParser, AValueIsOneOfTheChoices) {
    EXPECT_EQ(valuesOf({"copy", "x", "--when=now"}).arguments.value("--when"), "now");
    expectError({"copy", "x", "--when=soon"}, Kind::invalidValue, "soon", &copy);
    expectError({"copy", "x", "--when="}, Kind::invalidValue, "", &copy);
    expectError({"--color", "copy", "x"}, Kind::invalidValue, "copy");
}

TEST(CommandLineParser, CommonOptionsStandBeforeAndAfterTheCommand) {
    for (const Strings& arguments : {Strings{"--json", "--plugin", "p", "copy", "x"},
                                     {"copy", "--json", "x", "--plugin=p"},
                                     {"--plugin=p", "copy", "x", "--json"}}) {
        const ParsedCommandLine parsed = valuesOf(arguments);
        EXPECT_TRUE(parsed.arguments.has(jsonOption));
        EXPECT_EQ(parsed.arguments.value(plugInOption), "p");
        EXPECT_EQ(parsed.arguments.value("SOURCE"), "x");
        EXPECT_EQ(parsed.command(), &copy);
    }
}

TEST(CommandLineParser, TheFolderStandsBeforeTheCommandOnly) {
    EXPECT_THAT(valuesOf({"-Ca", "--json", "-C", "b", "copy", "x"}).arguments.all(folderOption),
                ElementsAre("a", "b"));
    expectError({"copy", "-C", "a", "x"}, Kind::misplacedOption, "-C", &copy);
    expectError({"copy", "-Ca", "x"}, Kind::misplacedOption, "-C", &copy);
}

// ---- arguments ----------------------------------------------------------------------------------

TEST(CommandLineParser, ArgumentsAreAssignedInOrder) {
    const Arguments two = valuesOf({"copy", "x", "-a", "y"}).arguments;
    EXPECT_EQ(two.value("SOURCE"), "x");
    EXPECT_EQ(two.value("TARGET"), "y");
    const Arguments many = valuesOf({"add", "1", "2", "--note", "n", "3"}).arguments;
    EXPECT_EQ(many.value("FIRST"), "1");
    EXPECT_THAT(many.all("REST"), ElementsAre("2", "3"));
    EXPECT_FALSE(valuesOf({"copy", "x"}).arguments.has("TARGET"));
    expectError({"copy", "x", "y", "z", "w"}, Kind::unexpectedArgument, "z", &copy);
}

TEST(CommandLineParser, AnArgumentMayLookLikeAList) {
    EXPECT_THAT(valuesOf({"add", "--note=n", "[a]", "[b,c]", "%%", "\x1f"}).arguments.all("REST"),
                ElementsAre("[b,c]", "%%", "\x1f"));
}

TEST(CommandLineParser, RequiredParametersAreNamedInOrder) {
    const auto missing = [](const Strings& arguments) {
        auto parsed = parseCommandLine(arguments, commands);
        const auto* error = std::get_if<UsageError>(&parsed);
        return error != nullptr && error->kind == Kind::missingArgument ? error->parameter->name
                                                                        : std::string_view();
    };
    EXPECT_EQ(missing({"copy"}), "SOURCE");
    EXPECT_EQ(missing({"copy", "-a", "--"}), "SOURCE");
    EXPECT_EQ(missing({"add", "x"}), "--note");
    EXPECT_EQ(missing({"copy", ""}), "");
    expectError({"copy", "--bad"}, Kind::unknownOption, "--bad", &copy);
}

TEST(CommandLineParser, EverythingAfterTwoDashesIsAnArgument) {
    const Arguments arguments = valuesOf({"add", "--note=n", "a", "--", "-a", "--", "-"}).arguments;
    EXPECT_EQ(arguments.value("FIRST"), "a");
    EXPECT_THAT(arguments.all("REST"), ElementsAre("-a", "--", "-"));
    EXPECT_EQ(arguments.countAfterDashes(), 3U);
    EXPECT_EQ(valuesOf({"copy", "x", "--"}).arguments.countAfterDashes(), 0U);
    EXPECT_EQ(valuesOf({"copy", "x"}).arguments.countAfterDashes(), std::nullopt);
    EXPECT_EQ(valuesOf({"copy", "--", "--help"}).arguments.value("SOURCE"), "--help");
    EXPECT_EQ(valuesOf({"copy", "-"}).arguments.value("SOURCE"), "-");
    expectError({"outer", "--", "inner"}, Kind::unexpectedArgument, "inner", &outer);
}

// ---- help and versions --------------------------------------------------------------------------

TEST(CommandLineParser, HelpIsAnOptionAndACommand) {
    for (const Strings& arguments : {Strings{"copy", "--help"},
                                     {"copy", "-h"},
                                     {"--help", "copy"},
                                     {"help", "copy"},
                                     {"--json", "help", "copy"},
                                     {"-C", "x", "help", "copy"},
                                     {"copy", "-ah"},
                                     {"copy", "--bad", "x", "y", "z", "--help"},
                                     {"help", "copy", "--count"}}) {
        const ParsedCommandLine parsed = valuesOf(arguments);
        EXPECT_TRUE(parsed.arguments.has(helpOption)) << testing::PrintToString(arguments);
        EXPECT_THAT(parsed.commands, ElementsAre(&copy)) << testing::PrintToString(arguments);
    }
    EXPECT_THAT(valuesOf({"help", "outer", "inner"}).commands, ElementsAre(&outer, &inner));
    EXPECT_TRUE(valuesOf({"help"}).arguments.has(helpOption));
    expectError({"help", "x"}, Kind::unknownCommand, "x");
    expectError({"x", "--help"}, Kind::unknownCommand, "x");
    expectError({"help", "outer", "x"}, Kind::unknownCommand, "x", &outer);
    expectError({"help", "copy", "--bad"}, Kind::unknownOption, "--bad", &copy);
    for (const Strings& arguments : {Strings{"help", "help"}, Strings{"--help", "help"}}) {
        EXPECT_TRUE(valuesOf(arguments).arguments.has(helpOption));
        EXPECT_TRUE(valuesOf(arguments).commands.empty());
    }
    EXPECT_TRUE(valuesOf({"outer", "help"}).arguments.has(helpOption));
    EXPECT_THAT(valuesOf({"outer", "help", "inner"}).commands, ElementsAre(&outer, &inner));
}

TEST(CommandLineParser, VersionsNeedNothingElse) {
    EXPECT_TRUE(valuesOf({"copy", "--version"}).arguments.has(versionOption));
    EXPECT_TRUE(valuesOf({"--version", "--json"}).arguments.has(jsonOption));
    expectError({"--version", "--bad"}, Kind::unknownOption, "--bad");
    expectError({"x", "--version"}, Kind::unknownCommand, "x");
}

// ---- completion ---------------------------------------------------------------------------------

CommandLineParser parserAfter(const Strings& arguments) {
    CommandLineParser parser(commands);
    for (const std::string& argument : arguments) {
        parser.parse(argument);
    }
    return parser;
}

TEST(CommandLineParser, KnowsWhatMayFollow) {
    EXPECT_EQ(parserAfter({}).nextCommands().size(), 3U);
    EXPECT_EQ(parserAfter({"--json"}).nextCommands().size(), 3U);
    EXPECT_EQ(parserAfter({"outer"}).nextCommands().size(), 1U);
    EXPECT_TRUE(parserAfter({"copy"}).nextCommands().empty());
    EXPECT_TRUE(parserAfter({"--"}).nextCommands().empty());
    EXPECT_EQ(parserAfter({"copy", "-m"}).pendingOption(), &copyParameters[5]);
    EXPECT_EQ(parserAfter({"copy", "-mx"}).pendingOption(), nullptr);
    EXPECT_EQ(parserAfter({"copy"}).nextOperand(), &copyParameters[0]);
    EXPECT_EQ(parserAfter({"copy", "-m", "x", "y"}).nextOperand(), &copyParameters[1]);
    EXPECT_EQ(parserAfter({"copy", "x", "y"}).nextOperand(), nullptr);
    EXPECT_EQ(parserAfter({"add", "1", "2", "3"}).nextOperand(), &addParameters[1]);
    EXPECT_TRUE(parserAfter({"copy", "--bad"}).acceptsOptions());
    EXPECT_FALSE(parserAfter({"copy", "--"}).acceptsOptions());
    EXPECT_FALSE(parserAfter({"x"}).acceptsOptions());
}

}  // namespace
}  // namespace neb::nebsc
