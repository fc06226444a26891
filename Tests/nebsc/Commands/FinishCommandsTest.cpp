// `nebsc continue`, `skip` and `abort`, run as a program.

#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;

class FinishCommands : public CommandTest {
protected:
    /// Makes the branch "topic" of two commits, of which the first conflicts with main.
    void SetUp() override {
        repository.commitFile("src/a.c", "first\n");
        repository.git({"checkout", "--quiet", "-b", "topic"});
        repository.commitFile("src/a.c", "topic\n");
        repository.commitFile("b.c", "1\n");
        repository.git({"checkout", "--quiet", "main"});
        repository.commitFile("src/a.c", "main\n");
    }
    void stopMerge() const { EXPECT_NE(repository.gitStatus({"merge", "--quiet", "topic"}), 0); }
    void stopRebase() const {
        repository.git({"checkout", "--quiet", "topic"});
        EXPECT_NE(repository.gitStatus({"rebase", "--quiet", "main"}), 0);
    }
    void resolve() const {
        repository.write("src/a.c", "resolved\n");
        expectDone(nebsc({"stage", "a.c"}, "src"));
    }
    [[nodiscard]] std::string head() const { return repository.git({"rev-parse", "HEAD"}); }
};

TEST_F(FinishCommands, ContinueNeedsResolvedConflicts) {
    stopMerge();
    expectFailed(nebsc({"continue"}), HasSubstr("'nebsc stage' marks a file as resolved."));
    EXPECT_EQ(state(), "A  b.c\nUU src/a.c\n");
    resolve();
    const NebscOutcome done = nebsc({"continue"}, "src");
    expectDone(done, "Continued the merge; now at " + head().substr(0, 12) + ".\n");
    EXPECT_EQ(repository.git({"rev-list", "--count", "--merges", "HEAD"}), "1\n");
    EXPECT_EQ(state(), "");
}

TEST_F(FinishCommands, SkipLeavesACommitOut) {
    stopRebase();
    const NebscOutcome skipped = nebsc({"skip"});
    expectDone(skipped, "Skipped a commit of the rebase; now at " + head().substr(0, 12) + ".\n");
    EXPECT_EQ(repository.git({"log", "--format=%s", "main..topic"}).size(),
              repository.git({"log", "-1", "--format=%s", "topic"}).size());
    EXPECT_EQ(state(), "");
}

TEST_F(FinishCommands, AbortRestoresTheStateBefore) {
    const std::string main = head();
    stopMerge();
    expectDone(nebsc({"abort"}, "src"), "Aborted the merge; now at " + main.substr(0, 12) + ".\n");
    EXPECT_EQ(head(), main);
    EXPECT_EQ(state(), "");
    const std::string topic = repository.git({"rev-parse", "topic"});
    stopRebase();
    expectDone(nebsc({"abort"}), "Aborted the rebase; now at " + topic.substr(0, 12) + ".\n");
    EXPECT_EQ(repository.git({"symbolic-ref", "HEAD"}), "refs/heads/topic\n");
}

TEST_F(FinishCommands, StopAtTheNextConflict) {
    repository.git({"checkout", "--quiet", "topic"});
    repository.commitFile("src/a.c", "topic again\n");
    stopRebase();
    resolve();
    expectFailed(nebsc({"continue"}, "src"),
                 "nebsc: the rebase stopped at conflicts:\n"
                 "    both modified  a.c\n"
                 "Resolve them in the files, run 'nebsc stage' on these, then 'nebsc continue'; "
                 "'nebsc abort' restores the state before.\n");
    resolve();
    EXPECT_THAT(nebsc({"continue"}).output, MatchesRegex("Continued the rebase; now at .*\n"));
    EXPECT_EQ(repository.git({"symbolic-ref", "HEAD"}), "refs/heads/topic\n");
}

TEST_F(FinishCommands, AnEmptyCommitCanBeSkipped) {
    const std::string main = head();
    EXPECT_NE(repository.gitStatus({"cherry-pick", "HEAD"}), 0);
    EXPECT_THAT(nebsc({"status"}).output,
                HasSubstr("\nUnfinished: a cherry-pick\n"
                          "  'nebsc continue' resumes it, 'nebsc skip' leaves the commit out, "
                          "'nebsc abort' cancels it.\n"));
    expectFailed(nebsc({"continue"}), AllOf(HasSubstr("there is nothing to commit\n"),
                                            EndsWith("'nebsc skip' leaves the commit out.\n")));
    expectDone(nebsc({"skip"}),
               "Skipped a commit of the cherry-pick; now at " + main.substr(0, 12) + ".\n");
    EXPECT_EQ(head(), main);
}

TEST_F(FinishCommands, FinishWhatGitAmHasBegun) {
    repository.write(".git/patch", repository.git({"format-patch", "--stdout", "main..topic"}));
    EXPECT_NE(repository.gitStatus({"am", "--quiet", "-3", ".git/patch"}), 0);
    EXPECT_THAT(nebsc({"status"}).output,
                HasSubstr("\nUnfinished: git am, step 1 of 2\n"
                          "  'nebsc continue' resumes it, 'nebsc skip' leaves the patch out, "
                          "'nebsc abort' cancels it.\n"));
    repository.git({"config", "gpg.program", "false"});
    repository.git({"config", "commit.gpgSign", "true"});
    repository.write("src/a.c", "resolved\n");
    repository.git({"add", "src/a.c"});
    expectFailed(nebsc({"continue"}), Not(HasSubstr("'nebsc skip'")));
    repository.git({"checkout", "--quiet", "HEAD", "src/a.c"});
    repository.git({"config", "--unset", "commit.gpgSign"});
    expectFailed(nebsc({"continue"}), EndsWith("'nebsc skip' leaves the patch out.\n"));
    EXPECT_THAT(nebsc({"skip"}).output, MatchesRegex("Skipped a patch of git am; now at .*\n"));
    EXPECT_TRUE(isThere("b.c"));
}

TEST_F(FinishCommands, SayWhatIsMissing) {
    for (const char* command : {"continue", "skip", "abort"}) {
        const NebscOutcome nothing = nebsc({command});
        expectFailed(nothing, HasSubstr("there is no merge, rebase, cherry-pick or revert to " +
                                        std::string(command) + "\n"));
        EXPECT_EQ(nebsc({command, "--json"}).json()["error"]["class"], "nothing-in-progress");
    }
    stopMerge();
    expectFailed(nebsc({"skip"}),
                 "nebsc: a merge has no commits to skip\n"
                 "'nebsc continue' or 'nebsc abort' ends it.\n");
    EXPECT_EQ(state(), "A  b.c\nUU src/a.c\n");
}

}  // namespace
}  // namespace neb::test
