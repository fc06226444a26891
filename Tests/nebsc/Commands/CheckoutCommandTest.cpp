// `nebsc checkout`, run as a program.

#include "Support/InstalledGit.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::MatchesRegex;
using JSON = nlohmann::ordered_json;

class CheckoutCommand : public CommandTest {
protected:
    /// Creates a branch "topic" that differs in a.c and in src/b.c.
    void SetUp() override {
        repository.commitFile("a.c", "1\n2\n3\n4\n5\n6\n");
        repository.commitFile("src/b.c", "first\n");
        repository.git({"checkout", "--quiet", "-b", "topic"});
        repository.commitFile("a.c", "one\n2\n3\n4\n5\n6\n");
        repository.commitFile("src/b.c", "topic\n");
        repository.git({"checkout", "--quiet", "main"});
    }
    [[nodiscard]] std::string branch() const {
        return repository.git({"rev-parse", "--abbrev-ref", "HEAD"});
    }
    /// Adds the repository itself as the remote "origin", in place of a clone.
    void makeRemote() const {
        repository.git({"remote", "add", "origin", repository.path()});
        repository.git({"fetch", "--quiet", "origin"});
    }
};

TEST_F(CheckoutCommand, SwitchesToABranchFromAnyFolder) {
    expectDone(nebsc({"checkout", "topic"}, "src"), "Now on branch 'topic'.\n");
    EXPECT_EQ(branch(), "topic\n");
    expectDone(nebsc({"checkout", "topic"}), "Now on branch 'topic'.\n");
    repository.git({"branch", "zwölf/日"});
    expectDone(nebsc({"checkout", "zwölf/日"}), "Now on branch 'zwölf/日'.\n");
    repository.git({"tag", "topic"});
    const NebscOutcome ambiguous = nebsc({"checkout", "topic"});
    EXPECT_EQ(ambiguous.output, "Now on branch 'topic'.\n");
    EXPECT_EQ(ambiguous.exitStatus, 0);
}

TEST_F(CheckoutCommand, KeepsLocalChanges) {
    repository.write("a.c", "1\n2\n3\n4\n5\nsix\n");
    const NebscOutcome outcome = nebsc({"checkout", "topic"});
    EXPECT_EQ(outcome.output, "Now on branch 'topic'.\n");
    EXPECT_EQ(outcome.errors, isGitSince(55) ? "Applied autostash.\n" : "");
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_EQ(state(), " M a.c\n");
}

TEST_F(CheckoutCommand, ListsFilesInConflict) {
    repository.write("a.c", "uno\n2\n3\n4\n5\n6\n");
    repository.write("src/b.c", "mine\n");
    const NebscOutcome outcome = nebsc({"checkout", "topic"}, "src");
    EXPECT_EQ(outcome.output, "Now on branch 'topic'.\n");
    EXPECT_EQ(outcome.errors,
              "nebsc: local changes conflict with the checked-out revision in:\n"
              "    ../a.c\n"
              "    b.c\n");
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST_F(CheckoutCommand, ConflictsAreAFailureWithJSONToo) {
    repository.write("src/b.c", "mine\n");
    const NebscOutcome outcome = nebsc({"checkout", "--json", "topic"});
    EXPECT_EQ(outcome.json()["error"]["localizedDescription"],
              "Local changes conflict with the checked-out revision in:");
    EXPECT_EQ(outcome.json()["error"]["files"], JSON({"src/b.c"}));
    EXPECT_EQ(outcome.json()["command"]["arguments"], JSON({"checkout", "topic", "--merge"}));
    EXPECT_THAT(outcome.errors, HasSubstr("    src/b.c\n"));
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST_F(CheckoutCommand, RefusesToLoseUnfinishedWork) {
    repository.git({"checkout", "--quiet", "-b", "side"});
    repository.commitFile("side.c", "1\n");
    repository.git({"checkout", "--quiet", "main"});
    repository.git({"merge", "--quiet", "--no-commit", "--no-ff", "side"});
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"checkout", "side"},
                                               {"checkout", "HEAD~1"},
                                               {"switch", "side"},
                                               {"switch", "--create", "new"}}) {
        expectFailed(nebsc(arguments),
                     "nebsc: this working copy is in the middle of a merge; nothing was changed\n"
                     "'nebsc commit' completes it, 'nebsc abort' cancels it.\n");
    }
    EXPECT_EQ(repository.gitStatus({"rev-parse", "--verify", "--quiet", "MERGE_HEAD"}), 0);
    EXPECT_EQ(repository.gitStatus({"rev-parse", "--verify", "--quiet", "new"}), 1);
    repository.git({"merge", "--abort"});
    repository.git({"bisect", "start"});
    EXPECT_EQ(nebsc({"switch", "side"}).exitStatus, 0);
}

TEST_F(CheckoutCommand, ARevisionDetachesHEAD) {
    const std::string commit = repository.git({"rev-parse", "topic~1"});
    expectDone(nebsc({"checkout", "topic~1"}),
               "HEAD is now detached at " + commit.substr(0, 12) + ".\n");
    expectDone(nebsc({"checkout", "main"}), "Now on branch 'main'.\n");
}

TEST_F(CheckoutCommand, ReportsCommitsThatAreLeftBehind) {
    repository.git({"checkout", "--quiet", "--detach"});
    repository.commitFile("lost.c", "lost\n", "a lost commit");
    const NebscOutcome outcome = nebsc({"checkout", "main"});
    EXPECT_EQ(outcome.output, "Now on branch 'main'.\n");
    EXPECT_THAT(outcome.errors,
                MatchesRegex("Warning: you are leaving 1 commit behind(.|\n)* a lost commit\n"
                             "(.|\n)*git branch [^\n]*\n"));
    EXPECT_EQ(outcome.exitStatus, 0);
}

TEST_F(CheckoutCommand, ShowsTheOutputOfHooks) {
    repository.write(".git/hooks/post-checkout", "#!/bin/sh\nprintf 'hello\\033[2J\\n\\nbye\\n'\n");
    fs::permissions(repository.path(".git/hooks/post-checkout"), fs::perms::owner_all);
    for (const char* name : {"topic", "main~1"}) {
        const NebscOutcome outcome = nebsc({"checkout", name});
        EXPECT_EQ(outcome.errors, "hello\\x1b[2J\n\nbye\n");
        EXPECT_EQ(outcome.exitStatus, 0);
    }
}

TEST_F(CheckoutCommand, RefusesTheNameOfAFile) {
    repository.write("a.c", "mine\n");
    repository.write("src/b.c", "mine\n");
    for (const char* name : {"a.c", "src", "src/b.c", ".", "./a.c"}) {
        expectFailed(nebsc({"checkout", name}),
                     "nebsc: '" + std::string(name) +
                         "' is a file or folder, not a branch or revision\n"
                         "'nebsc revert' discards its changes.\n");
    }
    expectFailed(nebsc({"checkout", "b.c"}, "src"), HasSubstr("nebsc revert"));
    fs::remove(repository.path("a.c"));
    expectFailed(nebsc({"checkout", "a.c"}), HasSubstr("nebsc revert"));
    EXPECT_EQ(state(), " D a.c\n M src/b.c\n");
}

TEST_F(CheckoutCommand, ABranchTakesPrecedenceOverAFile) {
    repository.write("topic", "mine\n");
    expectDone(nebsc({"checkout", "topic"}), "Now on branch 'topic'.\n");
    EXPECT_EQ(state(), "?? topic\n");
}

TEST_F(CheckoutCommand, CreatesABranchForARemoteBranch) {
    makeRemote();
    repository.git({"branch", "--quiet", "-D", "topic"});
    expectDone(nebsc({"checkout", "topic"}), "Now on branch 'topic'.\n");
}

TEST_F(CheckoutCommand, RefusesANameOfBothAFileAndARemoteBranch) {
    repository.commitFile("topic", "first\n");
    makeRemote();
    repository.git({"branch", "--quiet", "-D", "topic"});
    repository.write("topic", "mine\n");
    expectFailed(
        nebsc({"checkout", "topic"}),
        "nebsc: 'topic' is both a file or folder and a remote branch; nothing was changed\n"
        "'nebsc branch track' creates the branch.\n");
    EXPECT_EQ(state(), " M topic\n");
}

TEST_F(CheckoutCommand, FailsForAnUnknownName) {
    expectFailed(nebsc({"checkout", "nosuch"}), HasSubstr("nosuch"));
    expectFailed(nebsc({"checkout", "*"}), HasSubstr("*"));
    expectFailed(nebsc({"checkout"}), HasSubstr("BRANCH"), 2);
    expectFailed(nebsc({"checkout", ""}), HasSubstr("argument 'BRANCH' must not be empty"), 2);
    EXPECT_EQ(branch(), "main\n");
}

TEST_F(CheckoutCommand, BeginsABranchBesideOneWithoutCommits) {
    repository.git({"checkout", "--quiet", "--orphan", "fresh"});
    expectDone(nebsc({"switch", "-c", "new"}), "Now on branch 'new'.\n");
    EXPECT_EQ(repository.git({"symbolic-ref", "HEAD"}), "refs/heads/new\n");
    EXPECT_EQ(state(), "A  a.c\nA  src/b.c\n");
    const NebscOutcome refused = nebsc({"switch", "-c", "topic"});
    EXPECT_THAT(refused.errors, HasSubstr("'topic' already exists"));
    EXPECT_EQ(refused.exitStatus, 1);
    expectDone(nebsc({"switch", "-c", "next", "main"}), "Now on branch 'next'.\n");
    repository.git({"symbolic-ref", "HEAD", "refs/heads/fresh"});
    repository.write(".git/refs/heads/fresh", "junk\n");
    EXPECT_THAT(nebsc({"switch", "-c", "lost"}).errors,
                testing::StartsWith("nebsc: the reference 'refs/heads/fresh' is broken"));
}

TEST_F(CheckoutCommand, SaysThatHEADHasNoCommits) {
    repository.git({"checkout", "--quiet", "--orphan", "fresh"});
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"checkout", "@"},
                                               {"checkout", "HEAD~1"},
                                               {"switch", "HEAD"},
                                               {"switch", "-c", "new", "@"},
                                               {"merge", "@"}}) {
        expectFailed(nebsc(arguments),
                     "nebsc: the current branch 'fresh' does not have any commits yet\n");
        auto json = arguments;
        json.emplace_back("--json");
        EXPECT_EQ(nebsc(json).json()["error"]["class"], "no-commits-yet") << arguments[0];
    }
}

TEST_F(CheckoutCommand, RefusesAValueThatLooksLikeAnOption) {
    expectFailed(nebsc({"checkout", "--", "--orphan=x"}),
                 HasSubstr("'--orphan=x' begins with '-' and is refused, because git would take it "
                           "for an option\n"),
                 2);
    EXPECT_EQ(branch(), "main\n");
}

TEST_F(CheckoutCommand, FailsOutsideARepository) {
    const TemporaryFolder folder;
    folder.write("a.c", "mine\n");
    for (const char* name : {"a.c", "topic"}) {
        expectFailed(runNebsc({"checkout", name}, {.folder = folder.path()}),
                     testing::StartsWith("nebsc: the folder is not in a git repository"));
    }
}

TEST_F(CheckoutCommand, KeepsABlockingUntrackedFile) {
    repository.git({"checkout", "--quiet", "topic"});
    repository.commitFile("new.c", "new\n");
    repository.git({"checkout", "--quiet", "main"});
    repository.write("new.c", "mine\n");
    expectFailed(nebsc({"checkout", "topic"}), HasSubstr("new.c"));
    EXPECT_EQ(state(), "?? new.c\n");
}

TEST_F(CheckoutCommand, ASilentGitFailureIsAnError) {
    const StandInGit git(repository.path(), "exit 128");
    expectFailed(nebsc({"checkout", "topic"}, git),
                 "nebsc: git exited with status 128 and printed nothing\n");
}

TEST_F(CheckoutCommand, ReportsThatTheSearchForConflictsFailed) {
    const StandInGit git(repository.path(),
                         "[ \"$2\" = diff ] && { echo 'fatal: no look' >&2; exit 128; }\n"
                         "[ \"$2\" = symbolic-ref ] && echo topic\nexit 0");
    const NebscOutcome outcome = nebsc({"checkout", "topic"}, git);
    EXPECT_EQ(outcome.output, "Now on branch 'topic'.\n");
    EXPECT_EQ(outcome.errors, "nebsc: no look\n");
    EXPECT_EQ(outcome.exitStatus, 1);
}

}  // namespace
}  // namespace neb::test
