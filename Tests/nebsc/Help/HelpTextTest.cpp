// The help of nebsc and of its commands.

#include "Help/HelpText.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "CommandLine/CommandLineParser.h"
#include "CommandLine/CommonOptions.h"
#include "Commands/Commands.h"
#include "Help/Usage.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using testing::Not;

/// The text with each run of blanks and newlines replaced by one blank, as the help wraps lines.
std::string unwrapped(const std::string& text) {
    std::istringstream stream(text);
    std::string result;
    for (std::string word; stream >> word;) {
        result.append(result.empty() ? "" : " ").append(word);
    }
    return result;
}

TEST(HelpText, IsShownInEveryWay) {
    const NebscOutcome alone = runNebsc({});
    expectDone(alone, nebsc::helpText({}));
    for (const char* text :
         {"Usage: nebsc [OPTIONS] COMMAND [ARGUMENTS]\n", "\nOptions:\n", "\n  -h, --help  ",
          "\nExamples:\n", "nebsc status --json", "Exit status: 0 "}) {
        EXPECT_THAT(alone.output, HasSubstr(text));
    }
    expectDone(runNebsc({"help", "help"}), nebsc::helpText({}));
    expectDone(runNebsc({"branch", "help"}), nebsc::helpText(std::vector{&nebsc::branchCommand}));
    for (const char* argument : {"--help", "-h", "help"}) {
        expectDone(runNebsc({argument}), alone.output);
    }
    const std::string log = runNebsc({"log", "--help"}).output;
    expectDone(runNebsc({"help", "log"}), log);
    expectDone(runNebsc({"--json", "help", "log"}), log);
    expectDone(runNebsc({"-C", "/", "help", "log"}), log);
    expectDone(runNebsc({"help", "branch", "track"}),
               runNebsc({"branch", "track", "--help"}).output);
}

TEST(HelpText, FollowsTheHabitsOfGit) {
    const std::string log = nebsc::helpText(std::vector{&nebsc::logCommand});
    EXPECT_THAT(log, testing::StartsWith("Usage: nebsc log [OPTIONS] [REVISION] [[--] FILE]\n\n"));
    EXPECT_THAT(log, HasSubstr("\nArguments:\n  REVISION  "));
    EXPECT_THAT(log, HasSubstr("\nOptions:\n  -n, --limit N  "));
    EXPECT_THAT(log, HasSubstr("\n  --color auto|always|never  "));
    EXPECT_THAT(log, Not(HasSubstr("-C DIR")));
    EXPECT_THAT(nebsc::helpText({}), HasSubstr("\n  -C DIR  "));
    EXPECT_EQ(nebsc::usageOf(std::vector{&nebsc::exportCommand}),
              "nebsc export [OPTIONS] REVISION FILE [DEST]");
    EXPECT_EQ(nebsc::usageOf(std::vector{&nebsc::addCommand}), "nebsc add [OPTIONS] [FILE...]");
    EXPECT_EQ(nebsc::usageOf(std::vector{&nebsc::branchCommand}),
              "nebsc branch [OPTIONS] [COMMAND]");
}

TEST(HelpText, NamesTheGroupsInThisOrder) {
    const std::string help = nebsc::helpText({});
    std::size_t position = 0;
    for (const std::string_view heading :
         {nebsc::inspectGroup, nebsc::changeGroup, nebsc::branchesGroup, nebsc::remotesGroup,
          nebsc::subversionGroup, nebsc::requestsGroup, nebsc::shellGroup}) {
        const std::size_t found = help.find("\n" + std::string(heading) + ":\n");
        ASSERT_NE(found, std::string::npos) << heading;
        EXPECT_GT(found, position) << heading;
        EXPECT_EQ(help.find("\n" + std::string(heading) + ":\n", found + 1), std::string::npos);
        position = found;
    }
}

void expectHelp(const std::vector<const nebsc::Command*>& commands) {
    const nebsc::Command& command = *commands.back();
    const std::string help = nebsc::helpText(commands);
    EXPECT_THAT(help, testing::ContainsRegex("\nExamples?:\n(.*\n)* .*" + nebsc::nameOf(commands)));
    for (const nebsc::Parameter& parameter : command.parameters) {
        EXPECT_THAT(help, HasSubstr("\n  " + nebsc::headingOf(parameter)));
        EXPECT_THAT(unwrapped(help), HasSubstr(unwrapped(std::string(parameter.help))));
    }
    std::istringstream lines(help);
    for (std::string line; std::getline(lines, line);) {
        EXPECT_TRUE(line.size() <= 80 || line.starts_with("Usage: ")) << line;
        EXPECT_FALSE(line.ends_with(' ')) << line;
    }
    for (const nebsc::Command* subcommand : command.commands) {
        auto path = commands;
        path.push_back(subcommand);
        expectHelp(path);
    }
}

TEST(HelpText, OfEachCommandHasItsParametersAndAnExample) {
    const std::string general = nebsc::helpText({});
    for (const nebsc::Command* command : nebsc::allCommands()) {
        const std::string entry = "\n  " + std::string(command->name) + " ";
        if (command->group == nebsc::hiddenGroup) {
            EXPECT_THAT(general, Not(HasSubstr(entry)));
        } else {
            EXPECT_THAT(general, HasSubstr(entry));
            EXPECT_THAT(unwrapped(general), HasSubstr(std::string(command->summary)));
        }
        expectHelp({command});
    }
}

// ---- examples -----------------------------------------------------------------------------------

/// The arguments of an example, split as a shell does. The command line ends at ")", at " | " and
/// at two blanks, which precede the explanation.
std::vector<std::string> argumentsOfExample(const std::string& line) {
    std::vector<std::string> arguments;
    bool isQuoted = false;
    std::string argument;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\'') {
            isQuoted = !isQuoted;
        } else if (line[i] == ')' && !isQuoted) {
            break;
        } else if (line[i] == ' ' && !isQuoted) {
            arguments.push_back(std::exchange(argument, ""));
            const std::string rest = line.substr(i);
            if (rest.starts_with("  ") || rest.starts_with(" | ")) {
                return arguments;
            }
        } else {
            argument += line[i];
        }
    }
    arguments.push_back(argument);
    return arguments;
}

/// Whether the example is a valid command line of the command or of one of its subcommands.
bool isExampleOf(const nebsc::Command& command, const std::vector<std::string>& arguments) {
    const auto parsed = nebsc::parseCommandLine(arguments, nebsc::allCommands());
    const auto* values = std::get_if<nebsc::ParsedCommandLine>(&parsed);
    if (values == nullptr) {
        return false;
    }
    const auto& path = values->commands;
    return std::find(path.begin(), path.end(), &command) != path.end();
}

void expectExamples(const nebsc::Command& command) {
    constexpr std::string_view program = "nebsc ";
    std::istringstream lines{std::string(command.details)};
    int examples = 0;
    bool areExamples = false;
    for (std::string line; std::getline(lines, line);) {
        areExamples = areExamples || line == "Example:" || line == "Examples:";
        const std::size_t start = line.find(program);
        if (areExamples && start != std::string::npos && line.starts_with("  ")) {
            EXPECT_TRUE(
                isExampleOf(command, argumentsOfExample(line.substr(start + program.size()))))
                << line;
            ++examples;
        }
    }
    EXPECT_GT(examples, 0) << command.name;
    for (const nebsc::Command* subcommand : command.commands) {
        expectExamples(*subcommand);
    }
}

TEST(HelpText, HasValidExamples) {
    for (const nebsc::Command* command : nebsc::allCommands()) {
        expectExamples(*command);
    }
}

}  // namespace
}  // namespace neb::test
