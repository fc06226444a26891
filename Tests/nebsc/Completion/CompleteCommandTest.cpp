// `nebsc complete`, which the shells ask what the word that is being typed can become.

#include <chrono>
#include <sstream>

#include "Commands/Commands.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

/// The first line, and the words of the others without their descriptions.
struct Answer {
    std::string paths;
    std::vector<std::string> words;
    std::string text;
};

Answer answerOf(const NebscOutcome& outcome) {
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
    Answer answer{.paths = {}, .words = {}, .text = outcome.output};
    std::istringstream stream(outcome.output);
    std::getline(stream, answer.paths);
    for (std::string line; std::getline(stream, line);) {
        answer.words.push_back(line.substr(0, line.find('\t')));
    }
    return answer;
}

std::vector<std::string> callOf(std::vector<std::string> words) {
    words.insert(words.begin(), {"complete", "--"});
    return words;
}

class CompleteCommand : public CommandTest {
protected:
    CompleteCommand() {
        repository.commitFile("a.c", "a\n");
        repository.git({"branch", "fix"});
        repository.git({"branch", "feature/$x;(y)"});
        repository.git({"tag", "v1.0"});
        repository.git({"remote", "add", "origin", "https://example.org/some where.git"});
        repository.git({"remote", "add", "other", "https://example.org/other.git"});
        for (const char* branch : {"origin/main", "origin/fast", "other/far"}) {
            repository.git({"update-ref", std::string("refs/remotes/") + branch, "HEAD"});
        }
        repository.git({"symbolic-ref", "refs/remotes/origin/HEAD", "refs/remotes/origin/main"});
    }
    [[nodiscard]] Answer complete(std::vector<std::string> words) const {
        return answerOf(nebsc(callOf(std::move(words))));
    }
};

// ---- commands ---------------------------------------------------------------------------------

TEST_F(CompleteCommand, NamesEveryCommandOfTheHelpAndNoOther) {
    std::vector<std::string> names;
    for (const nebsc::Command* command : nebsc::allCommands()) {
        if (!command->group.empty()) {
            names.emplace_back(command->name);
        }
    }
    names.emplace_back("help");
    const Answer answer = complete({""});
    EXPECT_EQ(answer.words, names);
    EXPECT_EQ(answer.paths, "none");
    EXPECT_THAT(answer.words, Not(Contains("complete")));
    EXPECT_EQ(complete({}).words, names);
}

TEST_F(CompleteCommand, NamesTheCommandsThatBeginSo) {
    const Answer answer = complete({"mer"});
    EXPECT_THAT(answer.words, ElementsAre("merge", "merge-base"));
    EXPECT_THAT(answer.text, testing::HasSubstr("\nmerge\tMerge "));
}

TEST_F(CompleteCommand, NamesInnerCommands) {
    EXPECT_THAT(complete({"remote", ""}).words, ElementsAre("list", "add", "rm", "branches"));
    EXPECT_THAT(complete({"branch", "tr"}).words, ElementsAre("track", "tracking"));
    EXPECT_THAT(complete({"--json", "remote", "r"}).words, ElementsAre("rm"));
}

TEST_F(CompleteCommand, KnowsNothingBehindAWordThatIsNoCommand) {
    EXPECT_EQ(complete({"nosuch", ""}).text, "none\n");
    EXPECT_EQ(complete({"nosuch", "-"}).text, "none\n");
    EXPECT_EQ(complete({"nosuch", "status", ""}).text, "none\n");
}

TEST_F(CompleteCommand, NamesCommandsBehindHelp) {
    EXPECT_THAT(complete({"he"}).words, ElementsAre("help"));
    EXPECT_THAT(complete({"help", "mer"}).words, ElementsAre("merge", "merge-base"));
    EXPECT_THAT(
        complete({"help", ""}).words,
        testing::AllOf(Contains("status"), Not(Contains("help")), Not(Contains("complete"))));
    EXPECT_THAT(complete({"help", "remote", "r"}).words, ElementsAre("rm"));
    EXPECT_EQ(complete({"help", "add", ""}).text, "none\n");
    EXPECT_EQ(complete({"help", "checkout", ""}).text, "none\n");
    EXPECT_EQ(complete({"help", "help", ""}).text, "none\n");
    EXPECT_THAT(complete({"-C", "src", "help", "mer"}).words, ElementsAre("merge", "merge-base"));
    EXPECT_EQ(complete({"checkout", "help", ""}).text, "none\n");
}

// ---- another folder ---------------------------------------------------------------------------

TEST_F(CompleteCommand, NamesAreThoseOfTheFolderBehindC) {
    repository.write("src/my file.c", "");
    repository.write("src/main.c", "");
    repository.write("src/mine/x.c", "");
    repository.write("src/.hidden", "");
    const TemporaryFolder folder;
    const auto outside = [&folder](const std::vector<std::string>& words) {
        return answerOf(runNebsc(callOf(words), {.folder = folder.path()}));
    };
    const std::string top = repository.path();
    EXPECT_EQ(outside({"-C", ""}).text, "folders\n");
    EXPECT_THAT(outside({"-C", top, "che"}).words, ElementsAre("checkout"));
    EXPECT_THAT(outside({"-C" + top, "checkout", "fi"}).words, ElementsAre("fix"));
    EXPECT_EQ(outside({"-C", top, "-C", "src", "add", "m"}).text,
              "none\nmain.c\nmine/\nmy file.c\n");
    EXPECT_EQ(outside({"-C", top, "add", "src/mi"}).text, "none\nsrc/mine/\n");
    EXPECT_EQ(outside({"-C", top, "mkdir", "src/"}).text, "none\nsrc/mine/\n");
    EXPECT_EQ(outside({"-C", top, "add", "src/."}).text, "none\nsrc/.hidden\n");
    EXPECT_EQ(outside({"-C", top, "-C", "s"}).text, "none\nsrc/\n");
    EXPECT_EQ(outside({"-C", top, "--plugin=src/ma"}).text, "none\n--plugin=src/main.c\n");
    EXPECT_EQ(outside({"-C", "nosuch", "checkout", ""}).text, "none\n");
    EXPECT_THAT(complete({"-"}).words, Contains("-C"));
    EXPECT_THAT(complete({"-C", "src", "-"}).words, Contains("-C"));
    EXPECT_THAT(complete({"status", "-"}).words, Not(Contains("-C")));
}

// ---- options ----------------------------------------------------------------------------------

TEST_F(CompleteCommand, NamesOptionsOfTheCommandAndOfAll) {
    const Answer answer = complete({"commit", "-"});
    EXPECT_THAT(answer.words, testing::IsSupersetOf({"-m", "--message", "--allow-empty", "--json",
                                                     "--plugin", "--help", "-h"}));
    EXPECT_THAT(answer.text, testing::HasSubstr("\n--allow-empty\tCommit even if"));
    EXPECT_THAT(complete({"log", "--f"}).words, ElementsAre("--files", "--full"));
    EXPECT_THAT(complete({"remote", "rm", "--h"}).words, ElementsAre("--help"));
    EXPECT_THAT(complete({"--j"}).words, ElementsAre("--json"));
}

TEST_F(CompleteCommand, LeavesOutOptionsThatStandThere) {
    EXPECT_THAT(complete({"log", "--files", "--f"}).words, ElementsAre("--full"));
    EXPECT_THAT(complete({"log", "-n5", "--l"}).words, IsEmpty());
    EXPECT_THAT(complete({"log", "--limit=5", "-n"}).words, IsEmpty());
    EXPECT_THAT(complete({"commit", "-mText", "--m"}).words, ElementsAre("--message"));
}

TEST_F(CompleteCommand, AnOptionsValueIsNoWordOfTheCommand) {
    EXPECT_EQ(complete({"commit", "-m", ""}).text, "none\n");
    EXPECT_EQ(complete({"commit", "-m", "text", ""}).paths, "files");
    EXPECT_EQ(complete({"log", "-n5", "--branch", "f"}).words,
              (std::vector<std::string>{"feature/$x;(y)", "fix"}));
    EXPECT_EQ(complete({"--plugin", ""}).paths, "files");
    EXPECT_THAT(complete({"--plugin", "status", "che"}).words, ElementsAre("checkout"));
}

TEST_F(CompleteCommand, AValueMayFollowAnEqualsSign) {
    EXPECT_THAT(complete({"log", "--branch=fi"}).words, ElementsAre("--branch=fix"));
    EXPECT_EQ(complete({"--plugin=/x"}).text, "files\n");
    EXPECT_EQ(complete({"log", "--full="}).text, "none\n");
    EXPECT_EQ(complete({"log", "--nosuch="}).text, "none\n");
}

TEST_F(CompleteCommand, NoOptionsStandBehindTwoDashes) {
    EXPECT_EQ(complete({"add", "--", "-"}).text, "files\n");
    EXPECT_THAT(complete({"checkout", "--", "fi"}).words, ElementsAre("fix"));
}

TEST_F(CompleteCommand, WordsOfWhichTheValuesNameTellsAreThose) {
    EXPECT_THAT(complete({"completion", ""}).words, ElementsAre("bash", "zsh", "fish"));
    EXPECT_THAT(complete({"completion", "f"}).words, ElementsAre("fish"));
}

// ---- values -----------------------------------------------------------------------------------

TEST_F(CompleteCommand, Branches) {
    EXPECT_THAT(complete({"branch", "delete", ""}).words,
                ElementsAre("feature/$x;(y)", "fix", "main"));
    EXPECT_THAT(complete({"branch", "delete", "--force", "m"}).words, ElementsAre("main"));
    EXPECT_THAT(complete({"branch", "tracking", "fi"}).words, ElementsAre("fix"));
}

TEST_F(CompleteCommand, RevisionsAreBranchesTagsAndBranchesOfRemotes) {
    const Answer answer = complete({"checkout", ""});
    EXPECT_THAT(answer.words, ElementsAre("feature/$x;(y)", "fix", "main", "v1.0", "origin/fast",
                                          "origin/main", "other/far", "HEAD"));
    EXPECT_EQ(answer.paths, "none");
    EXPECT_THAT(answer.text, testing::HasSubstr("\nv1.0\ttag\n"));
    for (const std::vector<std::string>& words : {std::vector<std::string>{"merge", "v"},
                                                  {"merge-base", "v"},
                                                  {"merge-base", "main", "v"},
                                                  {"branch", "create", "new", "v"},
                                                  {"export", "v"}}) {
        EXPECT_THAT(complete(words).words, ElementsAre("v1.0")) << words[0];
    }
}

TEST_F(CompleteCommand, RevisionsOrFiles) {
    for (const char* command : {"log", "blame", "diff"}) {
        const Answer answer = complete({command, "v"});
        EXPECT_THAT(answer.words, ElementsAre("v1.0")) << command;
        EXPECT_EQ(answer.paths, "files") << command;
    }
    EXPECT_EQ(complete({"blame", "main", "v"}).text, "files\n");
    EXPECT_THAT(complete({"diff", "main", "a.c", "v"}).words, ElementsAre("v1.0"));
}

TEST_F(CompleteCommand, BothSidesOfARange) {
    EXPECT_THAT(complete({"log", "main..v"}).words, ElementsAre("main..v1.0"));
    EXPECT_THAT(complete({"diff", "main...fi"}).words, ElementsAre("main...fix"));
    EXPECT_THAT(complete({"checkout", "main..v"}).words, IsEmpty());
}

TEST_F(CompleteCommand, Remotes) {
    for (const char* command : {"fetch", "push", "update"}) {
        EXPECT_THAT(complete({command, ""}).words, ElementsAre("origin", "other")) << command;
    }
    EXPECT_THAT(complete({"remote", "rm", "ori"}).words, ElementsAre("origin"));
    EXPECT_THAT(complete({"remote", "branches", "ot"}).text,
                "none\nother\thttps://example.org/other.git\n");
}

TEST_F(CompleteCommand, BranchesOfRemotes) {
    EXPECT_THAT(complete({"branch", "track", "new", "o"}).words,
                ElementsAre("origin/fast", "origin/main", "other/far"));
    EXPECT_THAT(complete({"update", "origin", ""}).words, ElementsAre("fast", "main"));
    EXPECT_THAT(complete({"update", "nosuch", ""}).words, IsEmpty());
}

TEST_F(CompleteCommand, BothSidesOfAPush) {
    EXPECT_THAT(complete({"push", "origin", "f"}).words, ElementsAre("feature/$x;(y)", "fix"));
    EXPECT_THAT(complete({"push", "origin", "fix:"}).words, ElementsAre("fix:fast", "fix:main"));
    EXPECT_THAT(complete({"push", "other", "fix:"}).words, ElementsAre("fix:far"));
}

TEST_F(CompleteCommand, LocationsAreConfiguredURLsAndFolders) {
    const Answer answer = complete({"clone", "https:"});
    EXPECT_THAT(answer.words,
                ElementsAre("https://example.org/some where.git", "https://example.org/other.git"));
    EXPECT_EQ(answer.paths, "folders");
    EXPECT_THAT(complete({"remote", "add", "third", ""}).words.size(), 2U);
}

TEST_F(CompleteCommand, FilesAndFoldersAreTheShells) {
    for (const std::vector<std::string>& words : {std::vector<std::string>{"status", ""},
                                                  {"add", "a.c", "b.c", ""},
                                                  {"rm", ""},
                                                  {"mv", ""},
                                                  {"mv", "a.c", ""},
                                                  {"cp", "a.c", ""},
                                                  {"revert", ""},
                                                  {"commit", ""},
                                                  {"export", "main", ""},
                                                  {"export", "main", "a.c", ""},
                                                  {"request", ""}}) {
        EXPECT_EQ(complete(words).text, "files\n") << words[0];
    }
    for (const std::vector<std::string>& words : {std::vector<std::string>{"mkdir", ""},
                                                  {"ls", ""},
                                                  {"export-tree", ""},
                                                  {"init", ""},
                                                  {"clone", "url", ""}}) {
        EXPECT_EQ(complete(words).text, "folders\n") << words[0];
    }
}

TEST_F(CompleteCommand, NewNamesAreNobodysToGuess) {
    EXPECT_EQ(complete({"branch", "create", ""}).text, "none\n");
    EXPECT_EQ(complete({"remote", "add", ""}).text, "none\n");
    EXPECT_EQ(complete({"clone", "--branch", ""}).text, "none\n");
    EXPECT_EQ(complete({"merge", "main", ""}).text, "none\n");
}

// ---- failures ---------------------------------------------------------------------------------

TEST_F(CompleteCommand, WithoutCommitsThereAreNoRevisions) {
    const TestRepository empty;
    EXPECT_EQ(runNebsc(callOf({"checkout", ""}), {.folder = empty.path()}).output, "none\n");
}

TEST(CompleteCommandOutside, NeedsNoRepository) {
    const TemporaryFolder folder;
    const NebscSurroundings outside{.folder = folder.path()};
    EXPECT_THAT(answerOf(runNebsc(callOf({"ini"}), outside)).words, ElementsAre("init"));
    for (const std::vector<std::string>& words : {std::vector<std::string>{"checkout", ""},
                                                  {"fetch", ""},
                                                  {"branch", "delete", ""},
                                                  {"branch", "track", "x", ""}}) {
        EXPECT_EQ(answerOf(runNebsc(callOf(words), outside)).text, "none\n") << words[0];
    }
    EXPECT_EQ(answerOf(runNebsc(callOf({"clone", ""}), outside)).text, "folders\n");
}

TEST_F(CompleteCommand, AGitThatFailsLeavesNamesOutAndSaysNothing) {
    const StandInGit git(repository.path(), "echo broken >&2; exit 3");
    for (const std::vector<std::string>& words : {std::vector<std::string>{"checkout", ""},
                                                  {"fetch", ""},
                                                  {"branch", "delete", ""},
                                                  {"push", "origin", ""}}) {
        EXPECT_EQ(answerOf(nebsc(callOf(words), git)).text, "none\n") << words[0];
    }
}

TEST_F(CompleteCommand, AGitThatHangsIsNotWaitedFor) {
    const StandInGit git(repository.path(), "exec sleep 100");
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"checkout", ""}, {"fetch", ""}}) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(answerOf(nebsc(callOf(words), git)).text, "none\n") << words[0];
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(50));
    }
}

TEST_F(CompleteCommand, NamesThatWouldBreakALineAreLeftOut) {
    repository.git({"config", "remote.odd.url", "https://example.org/a\nb\tc"});
    repository.git({"config", "remote.dash.url", "--upload-pack=x"});
    EXPECT_THAT(complete({"clone", ""}).words,
                ElementsAre("https://example.org/some where.git", "https://example.org/other.git"));
}

// ---- the rows of the commands -----------------------------------------------------------------

void expectCompleted(const nebsc::Command& command, const std::string& names) {
    // What only the person who types knows.
    static const std::vector<std::string> unknown{
        "commit --message",  "log --limit",     "clone --branch",   "branch create NAME",
        "branch track NAME", "remote add NAME", "complete ARGUMENT"};
    for (const nebsc::Parameter& parameter : command.parameters) {
        const std::string_view name = parameter.name.substr(parameter.name.find(',') + 1);
        const std::string whole = names + std::string(command.name) + " " + std::string(name);
        const bool isUnknown = parameter.takes == nebsc::Takes::text &&
                               parameter.valueName.find('|') == std::string_view::npos;
        EXPECT_EQ(isUnknown, std::find(unknown.begin(), unknown.end(), whole) != unknown.end())
            << whole << ": say in its row what kind of word it takes";
    }
    for (const nebsc::Command* inner : command.commands) {
        expectCompleted(*inner, names + std::string(command.name) + " ");
    }
}

TEST(CompleteCommandRows, EachParameterSaysWhatItTakes) {
    for (const nebsc::Command* command : nebsc::allCommands()) {
        expectCompleted(*command, "");
    }
}

}  // namespace
}  // namespace neb::test
