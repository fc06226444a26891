// nebsc as a program: help, versions, plug-ins, mistakes, and standard output that fails.

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <utility>

#include "CommandLine/CommandLine.h"
#include "CommandLine/GitNames.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlPlugIn.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/TestRepository.h"
#include "nebsc/CommandTest.h"
#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

TEST(Program, HelpShowsCommandsAndExamples) {
    const NebscOutcome alone = runNebsc({});
    for (const char* word : {"status", "request", "types", "--plugin", "--json", "--version",
                             "Examples:", "nebsc status --json", "Exit status"}) {
        EXPECT_THAT(alone.output, HasSubstr(word));
    }
    EXPECT_EQ(alone.errors, "");
    EXPECT_EQ(alone.exitStatus, 0);
    EXPECT_EQ(runNebsc({"--help"}).output, alone.output);
    EXPECT_EQ(runNebsc({"-h"}).output, alone.output);
}

TEST(Program, EachCommandIsListedAndHasHelpWithAnExample) {
    const std::string help = runNebsc({"--help"}).output;
    const auto commands = nebsc::allCommands();
    EXPECT_GE(commands.size(), 16U);
    for (const nebsc::Command* command : commands) {
        const std::string name(command->name);
        if (command->group.empty()) {  // only programs call it
            EXPECT_THAT(help, Not(HasSubstr("\n  " + name + " ")));
        } else {
            EXPECT_THAT(help, HasSubstr("\n  " + name + " "));
            EXPECT_THAT(help, HasSubstr(std::string(command->summary)));
        }
        const NebscOutcome outcome = runNebsc({name, "--help"});
        EXPECT_THAT(outcome.output,
                    testing::ContainsRegex("\nExamples?:\n(.*\n)* .*nebsc " + name));
        for (const nebsc::Parameter& parameter : command->parameters) {
            EXPECT_THAT(outcome.output, HasSubstr("\n  " + std::string(parameter.name))) << name;
        }
        EXPECT_EQ(outcome.errors, "");
        EXPECT_EQ(outcome.exitStatus, 0);
    }
}

/// The words of a call, as a shell would cut them; those behind "|", "#" or two blanks are none.
std::vector<std::string> wordsOfExample(const std::string& line) {
    std::vector<std::string> words;
    bool isQuoted = false;
    std::string word;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\'') {
            isQuoted = !isQuoted;
        } else if (line[i] == ' ' && !isQuoted) {
            words.push_back(std::exchange(word, ""));
            const std::string rest = line.substr(i);
            if (rest.starts_with("  ") || rest.starts_with(" | ")) {
                return words;
            }
        } else {
            word += line[i];
        }
    }
    words.push_back(word);
    return words;
}

void collectExamples(const nebsc::Command& command, const std::string& name) {
    std::istringstream lines{std::string(command.details)};
    int examples = 0;
    bool isExample = false;
    for (std::string line; std::getline(lines, line);) {
        isExample = isExample || line == "Example:" || line == "Examples:";
        const std::size_t start = line.find("nebsc ");
        if (!isExample || start == std::string::npos || !line.starts_with("  ")) {
            continue;
        }
        const std::vector<std::string> words = wordsOfExample(line.substr(start));
        std::vector<const char*> pointers;
        for (const std::string& word : words) {
            pointers.push_back(word.c_str());
        }
        auto read = nebsc::readCommandLine(static_cast<int>(pointers.size()), pointers.data());
        const bool isUnderstood = std::holds_alternative<nebsc::Call>(read) ||
                                  std::get<nebsc::CommandOutput>(read).exitStatus == 0;  // its help
        EXPECT_TRUE(isUnderstood) << line;
        if (const auto* call = std::get_if<nebsc::Call>(&read)) {
            const bool isAboutIt = call->command == &command ||
                                   std::find(command.commands.begin(), command.commands.end(),
                                             call->command) != command.commands.end();
            EXPECT_TRUE(isAboutIt) << line;
        }
        ++examples;
    }
    EXPECT_GT(examples, 0) << name;
    for (const nebsc::Command* inner : command.commands) {
        collectExamples(*inner, name + " " + std::string(inner->name));
    }
}

TEST(Program, EachExampleIsACallOfItsCommand) {
    for (const nebsc::Command* command : nebsc::allCommands()) {
        collectExamples(*command, std::string(command->name));
    }
}

TEST(Program, TheHelpIsGroupedInThisOrder) {
    const std::string help = runNebsc({"--help"}).output;
    std::size_t place = 0;
    for (const char* heading : {"Look:", "Change:", "Branches:", "Remotes and synchronising:",
                                "Subversion:", "Raw requests:", "Shells and manual:"}) {
        const std::size_t found = help.find(std::string("\n") + heading + "\n");
        ASSERT_NE(found, std::string::npos) << heading;
        EXPECT_GT(found, place) << heading;
        place = found;
    }
}

TEST(Program, HelpIsACommandToo) {
    EXPECT_EQ(runNebsc({"help"}).output, runNebsc({"--help"}).output);
    EXPECT_EQ(runNebsc({"help", "log"}).output, runNebsc({"log", "--help"}).output);
    EXPECT_EQ(runNebsc({"help", "branch", "track"}).output,
              runNebsc({"branch", "track", "--help"}).output);
    EXPECT_EQ(runNebsc({"--json", "help", "log"}).output, runNebsc({"log", "--help"}).output);
    EXPECT_EQ(runNebsc({"-C", "/", "help", "log"}).output, runNebsc({"log", "--help"}).output);
    expectFailed(runNebsc({"help", "sttus"}),
                 "nebsc: There is no command \"sttus\". Did you mean \"status\"?\n", 2);
    expectFailed(runNebsc({"sttus", "--help"}),
                 "nebsc: There is no command \"sttus\". Did you mean \"status\"?\n", 2);
}

TEST(Program, ACommandStandsInFrontOfTheDashes) {
    expectFailed(runNebsc({"--", "status"}),
                 "nebsc: A command was expected in front of \"--\", not \"status\" behind it (see "
                 "nebsc --help).\n",
                 2);
}

TEST(Program, AMistypedWordIsAskedBack) {
    struct Row {
        std::vector<std::string> words;
        const char* sentence;
    };
    for (const Row& row :
         {Row{{"stauts"}, "There is no command \"stauts\". Did you mean \"status\"?"},
          Row{{"stauts", "log"}, "There is no command \"stauts\". Did you mean \"status\"?"},
          Row{{"stauts", "--limt", "3"},
              "There is no command \"stauts\". Did you mean \"status\"?"},
          Row{{"--josn", "stauts"}, "There is no option \"--josn\". Did you mean \"--json\"?"},
          Row{{"status", "a", "status"},
              "The word \"status\" is one too many: nebsc status [PATH] (see nebsc status "
              "--help)."},
          Row{{"branch", "creat", "x"},
              "There is no command \"branch creat\". Did you mean \"create\"?"},
          Row{{"log", "--limt", "3"},
              "There is no option \"--limt\" of \"nebsc log\". Did you mean \"--limit\"?"},
          Row{{"status", "--josn"},
              "There is no option \"--josn\" of \"nebsc status\". Did you mean \"--json\"?"},
          Row{{"status", "--color=alwys"},
              "The option \"--color\" takes auto, always or never, and not \"alwys\". Did you mean "
              "\"always\"?"},
          Row{{"--color", "x", "status"},
              "The option \"--color\" takes auto, always or never, and not \"x\" (see nebsc status "
              "--help)."},
          Row{{"quite-other"}, "There is no command \"quite-other\" (see nebsc --help)."},
          Row{{"cp", "a"}, "DEST is required: nebsc cp FILE DEST (see nebsc cp --help)."},
          Row{{"status", "a", "b"},
              "The word \"b\" is one too many: nebsc status [PATH] (see nebsc status --help)."},
          Row{{"status", "--plugin"},
              "The option \"--plugin\" lacks its value (see nebsc status --help)."},
          Row{{"types", "--json=no"},
              "The option \"--json\" takes no value (see nebsc types --help)."},
          Row{{"log", "-n", "1", "-n", "2"},
              "The option \"--limit\" stands in the call more than once (see nebsc log "
              "--help)."}}) {
        const NebscOutcome outcome = runNebsc(row.words);
        EXPECT_EQ(outcome.errors, std::string("nebsc: ") + row.sentence + "\n");
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.exitStatus, 2);
    }
}

TEST(Program, ACommandThatGitCallsDifferentlyIsNamed) {
    for (const auto& [words, name] : std::vector<std::pair<std::vector<std::string>, std::string>>{
             {{"pull"}, "update"},
             {{"pull", "--rebase", "origin"}, "update"},
             {{"help", "pull"}, "update"},
             {{"switch", "main"}, "checkout"},
             {{"restore", "a.c"}, "revert"},
             {{"annotate", "a.c"}, "blame"},
             {{"fsck"}, "doctor --full"},
             {{"ls-remote", "origin"}, "remote branches"},
             {{"remote", "remove", "origin"}, "remote rm"}}) {
        EXPECT_THAT(runNebsc(words).errors,
                    testing::EndsWith(". The command is \"nebsc " + name + "\".\n"));
        EXPECT_EQ(runNebsc(words).exitStatus, 2);
    }
    EXPECT_EQ(runNebsc({"pull"}).errors,
              "nebsc: There is no command \"pull\". The command is \"nebsc update\".\n");
    // What nebsc does not do has no hint.
    for (const char* name : {"stash", "reset", "rebase"}) {
        EXPECT_EQ(runNebsc({name}).errors,
                  std::string("nebsc: There is no command \"") + name + "\" (see nebsc --help).\n");
    }
}

TEST(Program, EachNameOfGitStandsForACommandThatThereIs) {
    for (const nebsc::GitName& row : nebsc::gitNames()) {
        std::vector<std::string> words{"nebsc"};
        std::istringstream name{std::string(row.name)};
        for (std::string word; name >> word;) {
            words.push_back(word);
        }
        words.emplace_back("--help");
        std::vector<const char*> pointers;
        for (const std::string& word : words) {
            pointers.push_back(word.c_str());
        }
        const auto read =
            nebsc::readCommandLine(static_cast<int>(pointers.size()), pointers.data());
        EXPECT_EQ(std::get<nebsc::CommandOutput>(read).exitStatus, 0) << row.name;
        const bool isCommand = std::any_of(
            nebsc::allCommands().begin(), nebsc::allCommands().end(),
            [&row](const nebsc::Command* command) { return command->name == row.nameInGit; });
        EXPECT_FALSE(isCommand) << row.nameInGit;
    }
}

TEST(Program, ColoursAreThereWhenTheyAreAskedFor) {
    const TestRepository repository;
    repository.write("a", "");
    const auto status =
        [&](const char* colours, NebscOutput output,
            std::vector<std::pair<std::string, std::optional<std::string>>> more = {}) {
            more.emplace_back("TERM", "xterm");
            return runNebsc({"status", std::string("--color=") + colours},
                            {.folder = repository.path(), .variables = more, .output = output})
                .output;
        };
    const std::string coloured = "\x1b[31muntracked\x1b[0m  a";
    EXPECT_EQ(status("always", NebscOutput::collected), coloured + "\n");
    EXPECT_EQ(status("always", NebscOutput::collected, {{"NO_COLOR", "1"}}), coloured + "\n");
    EXPECT_EQ(status("never", NebscOutput::terminal), "untracked  a\r\n");
    EXPECT_EQ(status("auto", NebscOutput::collected), "untracked  a\n");
    EXPECT_EQ(status("auto", NebscOutput::terminal, {{"NO_COLOR", std::nullopt}}),
              coloured + "\r\n");
    EXPECT_EQ(status("auto", NebscOutput::terminal, {{"NO_COLOR", "1"}}), "untracked  a\r\n");
    const NebscOutcome json =
        runNebsc({"--color=always", "status", "--json"}, {.folder = repository.path()});
    EXPECT_EQ(json.output.find('\x1b'), std::string::npos);
    EXPECT_EQ(json.json()["type"], NEBSourceControlRequestStatus);
}

TEST(Program, AMistakeIsNamedInOneLine) {
    struct Row {
        std::vector<std::string> words;
        const char* named;
    };
    for (const Row& row : {Row{{"statsu"}, "statsu"}, Row{{"--jsno", "status"}, "--jsno"},
                           Row{{"status", "--jsno"}, "--jsno"}, Row{{"status", "a", "b"}, "b"},
                           Row{{"status", "types", "request"}, "request"},
                           Row{{"status", "--dry-run"}, "--dry-run"}, Row{{"types", "x"}, "x"},
                           Row{{"--plugin"}, "--plugin"}, Row{{"--json"}, "A command is missing"},
                           Row{{"a\nb"}, "a\\nb"}, Row{{"--json=false", "types"}, "json"}}) {
        const NebscOutcome outcome = runNebsc(row.words);
        EXPECT_EQ(outcome.output, "") << row.named;
        EXPECT_THAT(outcome.errors, testing::StartsWith("nebsc: "));
        EXPECT_THAT(outcome.errors, HasSubstr(row.named));
        EXPECT_EQ(outcome.errors.find('\n'), outcome.errors.size() - 1) << row.named;
        EXPECT_EQ(outcome.exitStatus, 2) << row.named;
    }
}

TEST(Program, VersionsAreOneALine) {
    const TestRepository repository;
    const NebscOutcome outcome = runNebsc({"--version"});
    EXPECT_EQ(outcome.output, "nebsc " NEB_PROJECT_VERSION "\nNEBGit " NEB_PROJECT_VERSION "\n" +
                                  repository.git({"--version"}));
    EXPECT_EQ(outcome.exitStatus, 0);
    const auto json = runNebsc({"--version", "--json"}).json();
    EXPECT_EQ(json["nebsc"], NEB_PROJECT_VERSION);
    EXPECT_EQ(json["plugIn"]["name"], "NEBGit");
    EXPECT_EQ(json["git"].get<std::string>() + "\n", repository.git({"--version"}));
}

TEST(Program, AGitThatCannotTellItsVersionIsToldSo) {
    const StandInGit failing("", "exit 3");
    EXPECT_THAT(runNebsc({"--version"}, {.variables = {failing.path()}}).output,
                testing::EndsWith("\ngit told no version: exit status 3\n"));
    const StandInGit complaining("/x", "echo 'fatal: bad config' >&2; exit 128");
    EXPECT_THAT(runNebsc({"--version"}, {.variables = {complaining.path()}}).output,
                testing::EndsWith("\ngit told no version: fatal: bad config\n"));
    const TemporaryFolder broken;
    broken.writeProgram("git", "#!/no/such/interpreter\n");
    const NebscOutcome outcome = runNebsc({"--version"}, {.variables = {{"PATH", broken.path()}}});
    EXPECT_THAT(outcome.output, testing::EndsWith("\ngit was not found\n"));
    EXPECT_EQ(outcome.exitStatus, 0);
}

// ---- plug-ins ---------------------------------------------------------------------------------

struct PlugInRow {
    std::string file;
    std::string reason;
};

void expectRefusedPlugIn(const PlugInRow& row) {
    for (const char* command : {"status", "types", "--version"}) {
        const NebscOutcome outcome = runNebsc({command, "--plugin", row.file});
        EXPECT_EQ(outcome.output, "");
        EXPECT_THAT(outcome.errors, HasSubstr("\"" + row.file + "\""));
        EXPECT_THAT(outcome.errors, HasSubstr(row.reason));
        EXPECT_EQ(outcome.errors.find('\n'), outcome.errors.size() - 1);
        EXPECT_EQ(outcome.exitStatus, 2);
    }
}

TEST(ProgramPlugIn, AMissingFileIsRefused) {
    const TemporaryFolder folder;
    expectRefusedPlugIn({folder.path("none.so"), "No such file or directory"});
}

TEST(ProgramPlugIn, ATextFileIsRefused) {
    const TemporaryFolder folder;
    expectRefusedPlugIn({folder.write("text.so", "I am no library.\n"), "is no plug-in"});
}

TEST(ProgramPlugIn, AFolderIsRefused) {
    const TemporaryFolder folder;
    expectRefusedPlugIn({folder.path(), "is no file"});
}

TEST(ProgramPlugIn, ALibraryThatIsNoPlugInIsRefused) {
    expectRefusedPlugIn({NEB_BUILD_FOLDER "/lib/libNEBFoundation.so",
                         "does not export NEBSourceControlDescribePlugIn"});
}

TEST(ProgramPlugIn, OneOfAnotherContractIsRefused) {
    expectRefusedPlugIn(
        {NEB_TEST_MODULES "/OtherContract.so", "was built for version 7 of the host contract"});
}

TEST(ProgramPlugIn, OneWithoutAPrincipalClassIsRefused) {
    expectRefusedPlugIn(
        {NEB_TEST_MODULES "/NoPrincipalClass.so", "has no principal class to give"});
}

NebscOutcome runThrowing(const char* entryPoint) {
    return runNebsc({"--plugin", NEB_TEST_MODULES "/Throwing.so", "request"},
                    {.input = R"({"type": 4})", .variables = {{"THROWS_FROM", entryPoint}}});
}

TEST(ProgramPlugIn, WhatOneThrowsIsTheErrorOfTheRequest) {
    for (const char* entryPoint : {"makePrincipalClass", "validateRequest", "operationForRequest",
                                   "className", "command", "start", "main"}) {
        const NebscOutcome outcome = runThrowing(entryPoint);
        EXPECT_EQ(outcome.exitStatus, 1) << entryPoint;
        const auto error = outcome.json()["error"];
        ASSERT_TRUE(error.is_object()) << entryPoint;
        EXPECT_EQ(error["class"], "unknown") << entryPoint;
        EXPECT_EQ(error["userInfo"]["NEBLocalizedDescriptionKey"],
                  "The plug-in failed unexpectedly: it threw an exception of the type \"int\".")
            << entryPoint;
        EXPECT_EQ(outcome.json()["result"], nullptr) << entryPoint;
    }
    EXPECT_EQ(runThrowing("authenticationRequiredForRequest").json()["authenticationRequired"],
              true);
    EXPECT_EQ(runThrowing("nothing").exitStatus, 0);
}

TEST(ProgramPlugIn, OneThatThrowsWhenItIsCancelledIsEndedAllTheSame) {
    EXPECT_EQ(runThrowing("cancel by a signal").exitStatus, 128 + SIGTERM);
}

TEST(ProgramPlugIn, AGivenFileIsTakenBeforeAndAfterTheCommand) {
    const TemporaryFolder folder;
    const std::string plugIn = folder.path("other.so");
    fs::create_symlink(NEB_BUILD_FOLDER "/lib/NEBGit.so", plugIn);
    EXPECT_EQ(runNebsc({"--plugin", plugIn, "types"}).exitStatus, 0);
    EXPECT_EQ(runNebsc({"types", "--plugin=" + plugIn}).exitStatus, 0);
    EXPECT_EQ(runNebsc({"types", "--plugin", "other.so"}, {.folder = folder.path()}).exitStatus, 0);
}

/// A copy of the program with the host library beside it, and the plug-in in none, one or more of
/// the places where it is looked for.
class MovedProgram : public testing::Test {
protected:
    void SetUp() override {
        fs::create_directories(folder.path("bin"));
        fs::create_directories(folder.path("lib/nebgit"));
        fs::copy(NEB_BUILD_FOLDER "/bin/nebsc", folder.path("bin/nebsc"));
        const std::string library =
            "lib/libNEBFoundation.so." + std::to_string(NEBSourceControlContractVersion);
        fs::copy(NEB_BUILD_FOLDER "/" + library, folder.path(library));
    }
    [[nodiscard]] NebscOutcome types() const {
        return runProgram(folder.path("bin/nebsc"), {"types"}, {});
    }

    TemporaryFolder folder;
};

TEST_F(MovedProgram, LooksForThePlugInWhereItIsInstalled) {
    fs::copy(NEB_BUILD_FOLDER "/lib/NEBGit.so", folder.path("lib/nebgit/NEBGit.so"));
    folder.write("lib/NEBGit.so", "not this one");
    const NebscOutcome outcome =
        runProgram(folder.path("bin/nebsc"), {"types"},
                   {.variables = {{"LD_LIBRARY_PATH", folder.path("lib")}}});
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.errors;
}

TEST_F(MovedProgram, LooksForThePlugInWhereItIsBuiltThen) {
    fs::copy(NEB_BUILD_FOLDER "/lib/NEBGit.so", folder.path("lib/NEBGit.so"));
    EXPECT_EQ(types().exitStatus, 0);
    folder.write("bin/NEBGit.so", "not this one");
    EXPECT_EQ(types().exitStatus, 0);
}

TEST_F(MovedProgram, LooksForThePlugInInItsOwnFolderLast) {
    fs::copy(NEB_BUILD_FOLDER "/lib/NEBGit.so", folder.path("bin/NEBGit.so"));
    const NebscOutcome outcome =
        runProgram(folder.path("bin/nebsc"), {"types"},
                   {.variables = {{"LD_LIBRARY_PATH", folder.path("lib")}}});
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.errors;
}

TEST_F(MovedProgram, SaysWhereItExpectedThePlugIn) {
    const NebscOutcome outcome = types();
    EXPECT_EQ(outcome.errors, "nebsc: The plug-in \"" + folder.path("lib/nebgit/NEBGit.so") +
                                  "\" could not be read: No such file or directory.\n");
    EXPECT_EQ(outcome.exitStatus, 2);
}

// ---- standard output --------------------------------------------------------------------------

TEST(Program, AFullStandardOutputIsAFailure) {
    const TestRepository repository;
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"types"}, {"--help"}, {"--version"}, {"status"}}) {
        const NebscOutcome outcome =
            runNebsc(words, {.folder = repository.path(), .output = NebscOutput::full});
        EXPECT_EQ(outcome.errors,
                  "nebsc: Standard output could not be written: No space left on device.\n");
        EXPECT_EQ(outcome.exitStatus, 1);
    }
}

TEST(Program, AClosedStandardOutputIsAFailure) {
    const TestRepository repository;
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"types"}, {"request"}, {"status"}}) {
        const NebscOutcome outcome =
            runNebsc(words, {.folder = repository.path(),
                             .input = R"({"type": 15, "sourceTree": {"location": "/"}})",
                             .output = NebscOutput::closed});
        EXPECT_EQ(outcome.errors,
                  "nebsc: Standard output could not be written: Bad file descriptor.\n");
        EXPECT_EQ(outcome.exitStatus, 1);
    }
}

TEST(Program, ACallThatIsNotUnderstoodStaysOneWithAFullStandardOutput) {
    EXPECT_EQ(runNebsc({"statsu"}, {.output = NebscOutput::full}).exitStatus, 2);
}

}  // namespace
}  // namespace neb::test
