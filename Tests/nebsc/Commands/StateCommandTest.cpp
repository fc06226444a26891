// `nebsc status` without --short, run as a program.

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class StateCommand : public CommandTest {
protected:
    StateCommand() {
        for (const char* name : {"a.c", "b.c", "old.c", "src/gone.c"}) {
            repository.commitFile(name, std::string("the content of ") + name + "\n");
        }
    }
    /// Gives main an upstream that has one commit more and lacks `ahead` commits of main.
    void diverge(int ahead) const {
        repository.git({"config", "remote.origin.url", "/no/where"});
        repository.git({"config", "remote.origin.fetch", "+refs/heads/*:refs/remotes/origin/*"});
        repository.git({"checkout", "--quiet", "--detach"});
        repository.commitFile("theirs.c", "x\n");
        repository.git({"update-ref", "refs/remotes/origin/main", "HEAD"});
        repository.git({"checkout", "--quiet", "main"});
        repository.git({"branch", "--quiet", "--set-upstream-to=origin/main"});
        for (int i = 0; i < ahead; ++i) {
            repository.commitFile("ours.c", std::to_string(i));
        }
    }
    /// Creates a conflict in a.c between main and topic, with topic checked out.
    void makeSidesOfConflict() const {
        repository.git({"checkout", "--quiet", "-b", "topic"});
        repository.commitFile("a.c", "topic\n", "Topic");
        repository.git({"checkout", "--quiet", "main"});
        repository.commitFile("a.c", "main\n", "Main");
        repository.git({"checkout", "--quiet", "topic"});
    }
};

TEST_F(StateCommand, ShowsWhatIsStagedAndWhatIsNot) {
    repository.write("a.c", "staged\n");
    repository.git({"add", "a.c"});
    repository.write("a.c", "not staged\n");
    repository.git({"mv", "old.c", "new name.c"});
    std::filesystem::remove(repository.path("src/gone.c"));
    repository.write("new/x", "");
    repository.write("added", "");
    repository.git({"add", "added"});
    expectDone(nebsc({"status"}),
               "On branch main\n"
               "\nStaged:\n"
               "  modified      a.c\n"
               "  added         added\n"
               "  renamed       old.c -> new name.c\n"
               "\nNot staged:\n"
               "  modified      a.c\n"
               "  deleted       src/gone.c\n"
               "\nUntracked:\n"
               "  new/\n");
    expectDone(nebsc({"status", "."}, "src"),
               "On branch main\n\nNot staged:\n  deleted       gone.c\n");
    EXPECT_THAT(nebsc({"status", "--all"}).output, HasSubstr("\nUntracked:\n  new/x\n"));
}

TEST_F(StateCommand, ShowsTheDistanceFromTheUpstream) {
    diverge(0);
    EXPECT_THAT(nebsc({"status"}).output, StartsWith("On branch main, 1 behind origin/main\n"));
    diverge(2);
    EXPECT_THAT(nebsc({"status"}).output,
                StartsWith("On branch main, 2 ahead of and 1 behind origin/main\n"));
    repository.git({"merge", "--quiet", "-m", "Merge", "origin/main"});
    EXPECT_THAT(nebsc({"status"}).output, StartsWith("On branch main, 3 ahead of origin/main\n"));
    repository.git({"update-ref", "refs/remotes/origin/main", "HEAD"});
    expectDone(nebsc({"status"}),
               "On branch main, up to date with origin/main\n"
               "\nNo changes in the working copy 'repository'.\n");
    repository.git({"update-ref", "-d", "refs/remotes/origin/main"});
    EXPECT_THAT(nebsc({"status"}).output,
                StartsWith("On branch main, the upstream origin/main does not exist\n"));
}

TEST_F(StateCommand, ShowsADetachedHEADAndABranchWithoutCommits) {
    repository.git({"checkout", "--quiet", "--detach"});
    EXPECT_THAT(nebsc({"status"}).output,
                StartsWith("HEAD is detached at " +
                           repository.git({"rev-parse", "HEAD"}).substr(0, 12) + "\n"));
    const TestRepository unborn;
    unborn.write("new", "");
    expectDone(runNebsc({"status"}, {.folder = unborn.path()}),
               "On branch main, no commits yet\n\nUntracked:\n  new\n");
}

TEST_F(StateCommand, ShowsAMergeWithItsConflictsAndTheNextStep) {
    makeSidesOfConflict();
    ASSERT_EQ(repository.gitStatus({"merge", "--quiet", "main"}), 1);
    expectDone(nebsc({"status"}),
               "On branch topic\n"
               "\nUnfinished: a merge\n"
               "  'nebsc commit' completes it, 'nebsc abort' cancels it.\n"
               "\nConflicts:\n"
               "  a.c (both modified)\n");
}

TEST_F(StateCommand, ShowsTheStepOfARebase) {
    makeSidesOfConflict();
    repository.commitFile("c.c", "1\n", "Second of topic");
    ASSERT_EQ(repository.gitStatus({"rebase", "--quiet", "main"}), 1);
    const std::string output = nebsc({"status"}).output;
    EXPECT_THAT(output, StartsWith("HEAD is detached at "));
    EXPECT_THAT(output, HasSubstr("\nUnfinished: a rebase, step 1 of 2\n"
                                  "  'nebsc continue' resumes it, 'nebsc skip' leaves the commit "
                                  "out, 'nebsc abort' cancels it.\n"));
}

TEST_F(StateCommand, FindsAnOperationInALinkedWorktree) {
    makeSidesOfConflict();
    const TemporaryFolder folder;
    const std::string linked = folder.path("linked");
    repository.git({"worktree", "add", "--quiet", linked, "-b", "linked"});
    ASSERT_EQ(repository.gitStatus({"-C", linked, "merge", "--quiet", "main"}), 1);
    EXPECT_THAT(runNebsc({"status"}, {.folder = linked}).output,
                HasSubstr("\nUnfinished: a merge\n"));
    EXPECT_THAT(nebsc({"status"}).output, Not(HasSubstr("Unfinished")));
}

TEST_F(StateCommand, ShowsIgnoredFilesAndStashesOnRequest) {
    repository.commitFile(".gitignore", "*.o\n");
    repository.write("x.o", "");
    EXPECT_THAT(nebsc({"status"}).output, Not(HasSubstr("x.o")));
    expectDone(nebsc({"status", "--ignored"}), "On branch main\n\nIgnored:\n  x.o\n");
    const auto json = nebsc({"status", "--ignored", "--json"}).json();
    EXPECT_EQ(json["type"], NEBSourceControlRequestWorkingCopyState);
    EXPECT_EQ(json["result"][1]["NEBSourceControlOperationKindKey"], "ignored");
    expectFailed(nebsc({"status", "--short", "--ignored"}),
                 HasSubstr("'--short' cannot be combined with '--ignored'"), 2);
    repository.write("a.c", "other\n");
    repository.git({"stash", "--quiet"});
    EXPECT_THAT(nebsc({"status"}).output, HasSubstr("\nStash: 1 entry\n"));
}

TEST_F(StateCommand, ShowsWhatChangedInASubmodule) {
    repository.git({"submodule", "--quiet", "add", repository.path(), "sub"});
    repository.git({"commit", "--quiet", "-m", "submodule"});
    repository.write("sub/untracked", "");
    repository.write("sub/a.c", "other\n");
    EXPECT_THAT(nebsc({"status"}).output,
                HasSubstr("  modified      sub (modified content, untracked content)\n"));
}

TEST_F(StateCommand, KeepsNamesSafeForATerminal) {
    repository.write("l\xE4t\x1b[2J", "");
    EXPECT_THAT(nebsc({"status"}).output, HasSubstr("  l\\xe4t\\x1b[2J\n"));
}

TEST_F(StateCommand, ColoursAsGitDoes) {
    repository.write("a.c", "staged\n");
    repository.git({"add", "a.c"});
    repository.write("b.c", "not staged\n");
    const NebscOutcome outcome =
        runNebsc({"status"}, {.folder = repository.path(),
                              .variables = {{"TERM", "xterm"}, {"NO_COLOR", std::nullopt}},
                              .output = NebscOutput::terminal});
    EXPECT_THAT(outcome.output, HasSubstr("\x1b[32mmodified      a.c\x1b[0m"));
    EXPECT_THAT(outcome.output, HasSubstr("\x1b[31mmodified      b.c\x1b[0m"));
}

TEST_F(StateCommand, ReportsAFolderThatCannotBeRead) {
    const StandInGit git(repository.path(),
                         "case \"$*\" in *status*) printf '# branch.head main\\0? a.c\\0'; echo "
                         "\"warning: could not open directory 'p/': Permission denied\" >&2;; "
                         "*) exec /usr/bin/git \"$@\";; esac");
    const NebscOutcome outcome =
        runNebsc({"status"}, {.folder = repository.path(), .variables = {git.path()}});
    EXPECT_THAT(outcome.output, HasSubstr("  a.c\n"));
    EXPECT_THAT(outcome.errors, HasSubstr("'p/'"));
    EXPECT_EQ(outcome.exitStatus, 1);
}

/// The request of an older type has the error of a wrong password.
TEST_F(StateCommand, DoesNotBlameAPasswordForAForbiddenFile) {
    const StandInGit git(repository.path(),
                         "echo \"fatal: Unable to create '/r/.git/x': Permission denied\" >&2; "
                         "exit 128");
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"status"}, {"status", "--short"}}) {
        const NebscOutcome outcome =
            runNebsc(arguments, {.folder = repository.path(), .variables = {git.path()}});
        EXPECT_THAT(outcome.errors,
                    testing::StartsWith("nebsc: the operating system denied access to a file or "
                                        "folder\nCheck the permissions of the file or folder.\n"));
        EXPECT_EQ(outcome.exitStatus, 1);
    }
    const auto error =
        runNebsc({"status", "--json"}, {.folder = repository.path(), .variables = {git.path()}})
            .json()["error"];
    EXPECT_EQ(error["class"], "permission-denied");
    EXPECT_EQ(error["code"], 513);
    EXPECT_EQ(error["localizedDescription"],
              "The operating system denied access to a file or folder.");
    EXPECT_FALSE(error["userInfo"].contains("NEBSourceControlAuthenticationErrorTypeKey"));
}

}  // namespace
}  // namespace neb::test
