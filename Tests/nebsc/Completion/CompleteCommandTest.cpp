// `nebsc complete`, which prints the completions of the argument being typed.

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

/// The first line, and the candidates of the others without their descriptions.
struct Completions {
    std::string paths;
    std::vector<std::string> candidates;
    std::string text;
};

Completions completionsOf(const NebscOutcome& outcome) {
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
    Completions completions{.paths = {}, .candidates = {}, .text = outcome.output};
    std::istringstream stream(outcome.output);
    std::getline(stream, completions.paths);
    for (std::string line; std::getline(stream, line);) {
        completions.candidates.push_back(line.substr(0, line.find('\t')));
    }
    return completions;
}

std::vector<std::string> argumentsFor(std::vector<std::string> words) {
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
    [[nodiscard]] Completions complete(std::vector<std::string> words) const {
        return completionsOf(nebsc(argumentsFor(std::move(words))));
    }
};

// ---- commands ---------------------------------------------------------------------------------

TEST_F(CompleteCommand, NamesExactlyTheCommandsOfTheHelp) {
    std::vector<std::string> names;
    for (const nebsc::Command* command : nebsc::allCommands()) {
        if (!command->group.empty()) {
            names.emplace_back(command->name);
        }
    }
    names.emplace_back("help");
    const Completions completions = complete({""});
    EXPECT_EQ(completions.candidates, names);
    EXPECT_EQ(completions.paths, "none");
    EXPECT_THAT(completions.candidates, Not(Contains("complete")));
    EXPECT_EQ(complete({}).candidates, names);
}

TEST_F(CompleteCommand, NamesTheCommandsWithThePrefix) {
    const Completions completions = complete({"mer"});
    EXPECT_THAT(completions.candidates, ElementsAre("merge", "merge-base"));
    EXPECT_THAT(completions.text, testing::HasSubstr("\nmerge\tMerge "));
}

TEST_F(CompleteCommand, NamesSubcommands) {
    EXPECT_THAT(complete({"remote", ""}).candidates,
                ElementsAre("list", "add", "rm", "branches", "help"));
    EXPECT_THAT(complete({"branch", "tr"}).candidates, ElementsAre("track", "tracking"));
    EXPECT_THAT(complete({"--json", "remote", "r"}).candidates, ElementsAre("rm"));
}

TEST_F(CompleteCommand, CompletesNothingAfterAnUnknownCommand) {
    EXPECT_EQ(complete({"nosuch", ""}).text, "none\n");
    EXPECT_EQ(complete({"nosuch", "-"}).text, "none\n");
    EXPECT_EQ(complete({"nosuch", "status", ""}).text, "none\n");
}

TEST_F(CompleteCommand, NamesCommandsAfterHelp) {
    EXPECT_THAT(complete({"he"}).candidates, ElementsAre("help"));
    EXPECT_THAT(complete({"branch", "he"}).candidates, ElementsAre("help"));
    EXPECT_EQ(complete({"branch", "help", "he"}).text, "none\n");
    EXPECT_EQ(complete({"branch", "create", "he"}).text, "none\n");
    EXPECT_EQ(complete({"branch", "--help", "he"}).text, "none\n");
    EXPECT_THAT(complete({"help", "mer"}).candidates, ElementsAre("merge", "merge-base"));
    EXPECT_THAT(
        complete({"help", ""}).candidates,
        testing::AllOf(Contains("status"), Not(Contains("help")), Not(Contains("complete"))));
    EXPECT_THAT(complete({"help", "remote", "r"}).candidates, ElementsAre("rm"));
    EXPECT_EQ(complete({"help", "add", ""}).text, "none\n");
    EXPECT_EQ(complete({"help", "checkout", ""}).text, "none\n");
    EXPECT_THAT(complete({"help", "help", "mer"}).candidates, ElementsAre("merge", "merge-base"));
    EXPECT_THAT(complete({"-C", "src", "help", "mer"}).candidates,
                ElementsAre("merge", "merge-base"));
    EXPECT_EQ(complete({"checkout", "help", ""}).text, "none\n");
}

// ---- another folder ---------------------------------------------------------------------------

TEST_F(CompleteCommand, NamesAreThoseOfTheGivenFolder) {
    repository.write("src/my file.c", "");
    repository.write("src/main.c", "");
    repository.write("src/mine/x.c", "");
    repository.write("src/.hidden", "");
    const TemporaryFolder folder;
    const auto outside = [&folder](const std::vector<std::string>& words) {
        return completionsOf(runNebsc(argumentsFor(words), {.folder = folder.path()}));
    };
    const std::string top = repository.path();
    EXPECT_EQ(outside({"-C", ""}).text, "folders\n");
    EXPECT_THAT(outside({"-C", top, "chec"}).candidates, ElementsAre("checkout"));
    EXPECT_THAT(outside({"-C" + top, "checkout", "fi"}).candidates, ElementsAre("fix"));
    EXPECT_EQ(outside({"-C", top, "-C", "src", "add", "m"}).text,
              "none\nmain.c\nmine/\nmy file.c\n");
    EXPECT_EQ(outside({"-C", top, "add", "src/mi"}).text, "none\nsrc/mine/\n");
    EXPECT_EQ(outside({"-C", top, "mkdir", "src/"}).text, "none\nsrc/mine/\n");
    EXPECT_EQ(outside({"-C", top, "add", "src/."}).text, "none\nsrc/.hidden\n");
    EXPECT_EQ(outside({"-C", top, "-C", "s"}).text, "none\nsrc/\n");
    EXPECT_EQ(outside({"-C", top, "--plugin=src/ma"}).text, "none\n--plugin=src/main.c\n");
    EXPECT_EQ(outside({"-C", "nosuch", "checkout", ""}).text, "none\n");
    EXPECT_THAT(complete({"-"}).candidates, Contains("-C"));
    EXPECT_THAT(complete({"-C", "src", "-"}).candidates, Contains("-C"));
    EXPECT_THAT(complete({"status", "-"}).candidates, Not(Contains("-C")));
}

// ---- options ----------------------------------------------------------------------------------

TEST_F(CompleteCommand, NamesTheOptionsOfTheCommandAndTheCommonOnes) {
    const Completions completions = complete({"commit", "-"});
    EXPECT_THAT(completions.candidates,
                testing::IsSupersetOf(
                    {"-m", "--message", "--allow-empty", "--json", "--plugin", "--help", "-h"}));
    EXPECT_THAT(completions.text, testing::HasSubstr("\n--allow-empty\tCommit even if"));
    EXPECT_THAT(complete({"log", "--f"}).candidates,
                ElementsAre("--files", "--full", "--first-parent", "--follow"));
    EXPECT_THAT(complete({"remote", "rm", "--h"}).candidates, ElementsAre("--help"));
    EXPECT_THAT(complete({"--j"}).candidates, ElementsAre("--json"));
}

TEST_F(CompleteCommand, OmitsOptionsThatAreGiven) {
    EXPECT_THAT(complete({"log", "--files", "--f"}).candidates,
                ElementsAre("--full", "--first-parent", "--follow"));
    EXPECT_THAT(complete({"log", "-n5", "--l"}).candidates, IsEmpty());
    EXPECT_THAT(complete({"log", "--limit=5", "-n"}).candidates, IsEmpty());
    EXPECT_THAT(complete({"commit", "-mText", "--m"}).candidates, ElementsAre("--message"));
}

TEST_F(CompleteCommand, TheValueOfAnOptionIsNoArgument) {
    EXPECT_EQ(complete({"commit", "-m", ""}).text, "none\n");
    EXPECT_EQ(complete({"commit", "-m", "text", ""}).paths, "files");
    EXPECT_EQ(complete({"log", "-n5", "--branch", "f"}).candidates,
              (std::vector<std::string>{"feature/$x;(y)", "fix"}));
    EXPECT_EQ(complete({"--plugin", ""}).paths, "files");
    EXPECT_THAT(complete({"--plugin", "status", "chec"}).candidates, ElementsAre("checkout"));
}

TEST_F(CompleteCommand, AValueMayFollowAnEqualsSign) {
    EXPECT_THAT(complete({"log", "--branch=fi"}).candidates, ElementsAre("--branch=fix"));
    EXPECT_EQ(complete({"--plugin=/x"}).text, "files\n");
    EXPECT_EQ(complete({"log", "--full="}).text, "none\n");
    EXPECT_EQ(complete({"log", "--nosuch="}).text, "none\n");
}

TEST_F(CompleteCommand, NamesNoOptionsAfterTwoDashes) {
    EXPECT_EQ(complete({"add", "--", "-"}).text, "files\n");
    EXPECT_THAT(complete({"checkout", "--", "fi"}).candidates, ElementsAre("fix"));
}

TEST_F(CompleteCommand, NamesTheChoices) {
    EXPECT_THAT(complete({"completion", ""}).candidates, ElementsAre("bash", "zsh", "fish"));
    EXPECT_THAT(complete({"completion", "f"}).candidates, ElementsAre("fish"));
}

// ---- values -----------------------------------------------------------------------------------

TEST_F(CompleteCommand, Branches) {
    EXPECT_THAT(complete({"branch", "delete", ""}).candidates,
                ElementsAre("feature/$x;(y)", "fix", "main"));
    EXPECT_THAT(complete({"branch", "delete", "--force", "m"}).candidates, ElementsAre("main"));
    EXPECT_THAT(complete({"branch", "tracking", "fi"}).candidates, ElementsAre("fix"));
}

TEST_F(CompleteCommand, RevisionsAreBranchesTagsAndBranchesOfRemotes) {
    const Completions completions = complete({"checkout", ""});
    EXPECT_THAT(completions.candidates,
                ElementsAre("feature/$x;(y)", "fix", "main", "v1.0", "origin/fast", "origin/main",
                            "other/far", "HEAD"));
    EXPECT_EQ(completions.paths, "none");
    EXPECT_THAT(completions.text, testing::HasSubstr("\nv1.0\ttag\n"));
    for (const std::vector<std::string>& words : {std::vector<std::string>{"merge", "v"},
                                                  {"merge-base", "v"},
                                                  {"merge-base", "main", "v"},
                                                  {"branch", "create", "new", "v"},
                                                  {"export", "v"}}) {
        EXPECT_THAT(complete(words).candidates, ElementsAre("v1.0")) << words[0];
    }
}

TEST_F(CompleteCommand, TagsAndStashes) {
    EXPECT_THAT(complete({"tag", "delete", ""}).candidates, ElementsAre("v1.0"));
    EXPECT_THAT(complete({"stash", "pop", ""}).candidates, IsEmpty());
    for (const char* message : {"one", "two"}) {
        repository.write("a.c", message);
        repository.git({"stash", "push", "--quiet", "-m", message});
    }
    EXPECT_EQ(complete({"stash", "pop", ""}).text, "none\n0\tOn main: two\n1\tOn main: one\n");
}

TEST_F(CompleteCommand, RevisionsOrFiles) {
    for (const char* command : {"log", "blame", "diff"}) {
        const Completions completions = complete({command, "v"});
        EXPECT_THAT(completions.candidates, ElementsAre("v1.0")) << command;
        EXPECT_EQ(completions.paths, "files") << command;
    }
    EXPECT_EQ(complete({"blame", "main", "v"}).text, "files\n");
    EXPECT_THAT(complete({"diff", "main", "a.c", "v"}).candidates, ElementsAre("v1.0"));
}

TEST_F(CompleteCommand, BothSidesOfARange) {
    EXPECT_THAT(complete({"log", "main..v"}).candidates, ElementsAre("main..v1.0"));
    EXPECT_THAT(complete({"diff", "main...fi"}).candidates, ElementsAre("main...fix"));
    EXPECT_THAT(complete({"checkout", "main..v"}).candidates, IsEmpty());
}

TEST_F(CompleteCommand, Remotes) {
    for (const char* command : {"fetch", "push", "update"}) {
        EXPECT_THAT(complete({command, ""}).candidates, ElementsAre("origin", "other")) << command;
    }
    EXPECT_THAT(complete({"remote", "rm", "ori"}).candidates, ElementsAre("origin"));
    EXPECT_THAT(complete({"remote", "branches", "ot"}).text,
                "none\nother\thttps://example.org/other.git\n");
}

TEST_F(CompleteCommand, BranchesOfRemotes) {
    EXPECT_THAT(complete({"branch", "track", "new", "o"}).candidates,
                ElementsAre("origin/fast", "origin/main", "other/far"));
    EXPECT_THAT(complete({"update", "origin", ""}).candidates, ElementsAre("fast", "main"));
    EXPECT_THAT(complete({"update", "nosuch", ""}).candidates, IsEmpty());
}

TEST_F(CompleteCommand, BothSidesOfAPush) {
    EXPECT_THAT(complete({"push", "origin", "f"}).candidates, ElementsAre("feature/$x;(y)", "fix"));
    EXPECT_THAT(complete({"push", "origin", "fix:"}).candidates,
                ElementsAre("fix:fast", "fix:main"));
    EXPECT_THAT(complete({"push", "other", "fix:"}).candidates, ElementsAre("fix:far"));
}

TEST_F(CompleteCommand, LocationsAreConfiguredURLsAndFolders) {
    const Completions completions = complete({"clone", "https:"});
    EXPECT_THAT(completions.candidates,
                ElementsAre("https://example.org/some where.git", "https://example.org/other.git"));
    EXPECT_EQ(completions.paths, "folders");
    EXPECT_THAT(complete({"remote", "add", "third", ""}).candidates.size(), 2U);
}

TEST_F(CompleteCommand, TheShellCompletesFilesAndFolders) {
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

TEST_F(CompleteCommand, CompletesPathsOfACommit) {
    repository.commitFile("src/in/x.c", "");
    repository.commitFile("src/index.c", "");
    EXPECT_THAT(complete({"cat", "v"}).candidates, ElementsAre("v1.0"));
    EXPECT_THAT(complete({"cat", "v1.0:"}).candidates, ElementsAre("v1.0:a.c"));
    EXPECT_THAT(complete({"cat", "HEAD:src/i"}).candidates,
                ElementsAre("HEAD:src/in/", "HEAD:src/index.c"));
    EXPECT_THAT(complete({"ls", "HEAD:src/in/"}).candidates, ElementsAre("HEAD:src/in/x.c"));
    EXPECT_EQ(complete({"cat", "nosuch:"}).text, "none\n");
}

TEST_F(CompleteCommand, NewNamesHaveNoCandidates) {
    EXPECT_EQ(complete({"branch", "create", ""}).text, "none\n");
    EXPECT_EQ(complete({"remote", "add", ""}).text, "none\n");
    EXPECT_EQ(complete({"clone", "--branch", ""}).text, "none\n");
    EXPECT_EQ(complete({"merge", "main", ""}).text, "none\n");
}

// ---- failures ---------------------------------------------------------------------------------

TEST_F(CompleteCommand, WithoutCommitsThereAreNoRevisions) {
    const TestRepository empty;
    EXPECT_EQ(runNebsc(argumentsFor({"checkout", ""}), {.folder = empty.path()}).output, "none\n");
}

TEST(CompleteCommandOutside, NeedsNoRepository) {
    const TemporaryFolder folder;
    const NebscSurroundings outside{.folder = folder.path()};
    EXPECT_THAT(completionsOf(runNebsc(argumentsFor({"ini"}), outside)).candidates,
                ElementsAre("init"));
    for (const std::vector<std::string>& words : {std::vector<std::string>{"checkout", ""},
                                                  {"fetch", ""},
                                                  {"branch", "delete", ""},
                                                  {"branch", "track", "x", ""}}) {
        EXPECT_EQ(completionsOf(runNebsc(argumentsFor(words), outside)).text, "none\n") << words[0];
    }
    EXPECT_EQ(completionsOf(runNebsc(argumentsFor({"clone", ""}), outside)).text, "folders\n");
}

TEST_F(CompleteCommand, OmitsNamesIfGitFails) {
    const StandInGit git(repository.path(), "echo broken >&2; exit 3");
    for (const std::vector<std::string>& words : {std::vector<std::string>{"checkout", ""},
                                                  {"fetch", ""},
                                                  {"branch", "delete", ""},
                                                  {"push", "origin", ""}}) {
        EXPECT_EQ(completionsOf(nebsc(argumentsFor(words), git)).text, "none\n") << words[0];
    }
}

TEST_F(CompleteCommand, DoesNotWaitForAGitThatHangs) {
    const StandInGit git(repository.path(), "exec sleep 100");
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"checkout", ""}, {"fetch", ""}}) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(completionsOf(nebsc(argumentsFor(words), git)).text, "none\n") << words[0];
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(50));
    }
}

TEST_F(CompleteCommand, OmitsNamesThatWouldBreakALine) {
    repository.git({"config", "remote.odd.url", "https://example.org/a\nb\tc"});
    repository.git({"config", "remote.dash.url", "--upload-pack=x"});
    EXPECT_THAT(complete({"clone", ""}).candidates,
                ElementsAre("https://example.org/some where.git", "https://example.org/other.git"));
}

// ---- the rows of the commands -----------------------------------------------------------------

// Parameters whose values only the user knows. A comma ends each.
constexpr std::string_view valuesOfTheUser =
    "commit --message, commit --author, stash push --message, tag create --message, tag create "
    "NAME, "
    "cherry-pick --mainline, revert --mainline, log --limit, log --author, log --grep, "
    "log --content, log --since, log --until, blame --lines, clone --branch, "
    "branch create NAME, branch rename NEW, branch track NAME, worktree add --branch, remote add "
    "NAME, "
    "config NAME, config VALUE, complete ARGUMENT, ";

void expectCompleted(const nebsc::Command& command, const std::string& names) {
    for (const nebsc::Parameter& parameter : command.parameters) {
        const std::string_view name = parameter.name.substr(parameter.name.find(',') + 1);
        const std::string whole = names + std::string(command.name) + " " + std::string(name);
        const bool isUnknown = parameter.takes == nebsc::Takes::text &&
                               parameter.valueName.find('|') == std::string_view::npos;
        EXPECT_EQ(isUnknown, (valuesOfTheUser.find(whole + ", ") != std::string_view::npos))
            << whole << ": its row must say what it takes";
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
