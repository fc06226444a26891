// `nebsc cherry-pick`, `revert --commit`, `reset` and `switch`, run as a program.

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;

class PickCommands : public CommandTest {
protected:
    /// Makes the branch "topic", which adds the file "b.c" and then changes "src/a.c".
    void SetUp() override {
        repository.commitFile("src/a.c", "first\n");
        repository.git({"checkout", "--quiet", "-b", "topic"});
        repository.commitFile("b.c", "1\n");
        repository.commitFile("src/a.c", "topic\n");
        repository.git({"checkout", "--quiet", "main"});
    }
    [[nodiscard]] std::string idOf(const std::string& revision) const {
        return repository.git({"rev-parse", revision}).substr(0, 12);
    }
    [[nodiscard]] std::string atHead() const { return "; now at " + idOf("HEAD") + ".\n"; }
    [[nodiscard]] std::string branch() const {
        return repository.git({"symbolic-ref", "--short", "HEAD"});
    }
};

// ---- cherry-pick and revert -------------------------------------------------------------------

TEST_F(PickCommands, CherryPickAndRevertCommit) {
    const NebscOutcome picked = nebsc({"cherry-pick", "topic~1"}, "src");
    expectDone(picked, "Applied 'topic~1'" + atHead());
    EXPECT_EQ(repository.git({"show", "HEAD:b.c"}), "1\n");
    const NebscOutcome reverted = nebsc({"revert", "--commit", "HEAD"});
    expectDone(reverted, "Reverted 'HEAD'" + atHead());
    EXPECT_EQ(repository.gitStatus({"cat-file", "-e", "HEAD:b.c"}), 128);
    EXPECT_EQ(nebsc({"revert", "--commit", "HEAD", "--json"}).json()["type"],
              NEBSourceControlRequestPick);
}

TEST_F(PickCommands, CherryPickStopsAtConflicts) {
    repository.commitFile("src/a.c", "main\n");
    const std::string before = idOf("HEAD");
    expectFailed(nebsc({"cherry-pick", "topic"}, "src"),
                 "nebsc: the cherry-pick stopped at conflicts:\n"
                 "    both modified  a.c\n"
                 "Resolve them in the files, run 'nebsc stage' on these, then 'nebsc continue'; "
                 "'nebsc abort' restores the state before.\n");
    expectDone(nebsc({"abort"}), "Aborted the cherry-pick; now at " + before + ".\n");
    expectFailed(nebsc({"revert", "--commit", "HEAD~1"}), HasSubstr("the revert stopped"));
    repository.write("src/a.c", "resolved\n");
    expectDone(nebsc({"stage", "--all"}));
    const NebscOutcome continued = nebsc({"continue"});
    expectDone(continued, "Continued the revert" + atHead());
}

/// See rerere.autoUpdate in git-config(1).
TEST_F(PickCommands, CherryPickStopsAfterGitAppliedRecordedResolutions) {
    repository.git({"config", "rerere.enabled", "true"});
    repository.git({"config", "rerere.autoUpdate", "true"});
    repository.commitFile("src/a.c", "main\n");
    expectFailed(nebsc({"cherry-pick", "topic"}), HasSubstr("    both modified  src/a.c\n"));
    repository.write("src/a.c", "resolved\n");
    expectDone(nebsc({"stage", "--all"}));
    const NebscOutcome recorded = nebsc({"continue"});
    expectDone(recorded, "Continued the cherry-pick" + atHead());
    repository.git({"reset", "--quiet", "--hard", "HEAD~1"});
    expectFailed(
        nebsc({"cherry-pick", "topic"}),
        "nebsc: the cherry-pick stopped; git resolved the conflicts as recorded by 'git rerere'\n"
        "Check them with 'nebsc diff --staged', then run 'nebsc continue'; 'nebsc abort' restores "
        "the state before.\n");
    EXPECT_EQ(state(), "M  src/a.c\n");
    const NebscOutcome continued = nebsc({"continue"});
    expectDone(continued, "Continued the cherry-pick" + atHead());
    EXPECT_EQ(repository.git({"show", "HEAD:src/a.c"}), "resolved\n");
}

TEST_F(PickCommands, MergesNeedTheNumberOfAParent) {
    repository.git({"merge", "--quiet", "--no-ff", "-m", "Merge", "topic"});
    repository.git({"checkout", "--quiet", "-b", "other", "main~1"});
    expectFailed(nebsc({"cherry-pick", "main"}), HasSubstr("is a merge but no -m option"));
    expectFailed(nebsc({"cherry-pick", "-m", "first", "main"}),
                 HasSubstr("expected the number of a parent, from 1"), 2);
    const NebscOutcome picked = nebsc({"cherry-pick", "-m", "1", "main"});
    expectDone(picked, "Applied 'main'" + atHead());
    EXPECT_EQ(repository.git({"show", "HEAD:src/a.c"}), "topic\n");
}

TEST_F(PickCommands, CherryPickOfWhatIsThereCanBeSkipped) {
    const NebscOutcome picked = nebsc({"cherry-pick", "topic~1"});
    expectDone(picked, "Applied 'topic~1'" + atHead());
    expectFailed(nebsc({"cherry-pick", "topic~1"}), HasSubstr("'nebsc skip' leaves"));
    const NebscOutcome skipped = nebsc({"skip"});
    expectDone(skipped, "Skipped a commit of the cherry-pick" + atHead());
}

TEST_F(PickCommands, SayWhatIsMissing) {
    expectFailed(nebsc({"cherry-pick", "nosuch"}), "nebsc: unknown revision 'nosuch'\n");
    expectFailed(nebsc({"revert", "--commit", "nosuch"}), "nebsc: unknown revision 'nosuch'\n");
    expectFailed(nebsc({"reset", "nosuch"}), "nebsc: unknown revision 'nosuch'\n");
    expectFailed(nebsc({"revert", "--commit", "HEAD", "b.c"}), HasSubstr("expected either"), 2);
    expectFailed(nebsc({"revert"}), HasSubstr("expected FILE, or --commit"), 2);
    expectFailed(nebsc({"revert", "src", "--mainline", "1"}), HasSubstr("expected FILE"), 2);
    expectFailed(nebsc({"reset", "--soft", "--hard"}), HasSubstr("only one of"), 2);
    expectFailed(nebsc({"reset", "--dry-run"}), HasSubstr("expected --hard with --dry-run"), 2);
}

// ---- reset ------------------------------------------------------------------------------------

TEST_F(PickCommands, ResetMovesTheBranch) {
    const std::string main = idOf("main");
    const std::string topic = idOf("topic");
    const NebscOutcome hard = nebsc({"reset", "--hard", "topic"});
    expectDone(hard, "Reset from " + main + atHead());
    EXPECT_EQ(idOf("main"), topic);
    const NebscOutcome soft = nebsc({"reset", "--soft", main});
    expectDone(soft, "Reset from " + topic + atHead());
    EXPECT_EQ(state(), "A  b.c\nM  src/a.c\n");
    const NebscOutcome mixed = nebsc({"reset"});
    expectDone(mixed, "Reset" + atHead());
    EXPECT_EQ(state(), " M src/a.c\n?? b.c\n");
}

TEST_F(PickCommands, HardResetRefusesToLoseChanges) {
    repository.write("src/a.c", "own\n");
    expectDone(nebsc({"reset", "--hard", "--dry-run"}, "src"),
               "Would lose the changes of:\n    modified  a.c\n");
    expectFailed(nebsc({"reset", "--hard"}, "src"),
                 "nebsc: nothing was reset, because uncommitted changes would be lost:\n"
                 "    a.c\n"
                 "'nebsc reset --hard --force' throws them away.\n");
    EXPECT_EQ(state(), " M src/a.c\n");
    const NebscOutcome forced = nebsc({"reset", "--hard", "--force"});
    expectDone(forced, "Reset" + atHead());
    expectDone(nebsc({"reset", "--hard", "--dry-run"}), "Would lose no changes.\n");
    repository.write("b.c", "own\n");
    expectFailed(nebsc({"reset", "--hard", "topic"}), HasSubstr("'nebsc reset --force' resets"));
    EXPECT_EQ(state(), "?? b.c\n");
}

TEST_F(PickCommands, ResetKeepsConflictsWithoutForce) {
    repository.commitFile("src/a.c", "main\n");
    EXPECT_NE(repository.gitStatus({"merge", "--quiet", "topic"}), 0);
    expectFailed(nebsc({"reset"}), HasSubstr("'nebsc reset --force' resets anyway."));
    EXPECT_THAT(state(), HasSubstr("UU src/a.c\n"));
}

// ---- switch -----------------------------------------------------------------------------------

TEST_F(PickCommands, SwitchTakesBranchesOnly) {
    expectDone(nebsc({"switch", "topic"}), "Now on branch 'topic'.\n");
    repository.git({"tag", "v1"});
    expectFailed(nebsc({"switch", "v1"}),
                 "nebsc: 'v1' is not a branch\n'nebsc checkout' switches to any revision.\n");
    expectFailed(nebsc({"switch", "nosuch"}), HasSubstr("'nosuch'"));
    expectFailed(nebsc({"switch", "main", "v1"}), HasSubstr("expected --create with START"), 2);
    EXPECT_EQ(branch(), "topic\n");
}

TEST_F(PickCommands, SwitchCreatesABranch) {
    repository.write("src/a.c", "own\n");
    expectDone(nebsc({"switch", "-c", "new"}, "src"), "Now on branch 'new'.\n");
    EXPECT_EQ(branch(), "new\n");
    EXPECT_EQ(state(), " M src/a.c\n");
    repository.git({"checkout", "--quiet", "src/a.c"});
    expectDone(nebsc({"switch", "--create", "newer", "topic~1"}), "Now on branch 'newer'.\n");
    EXPECT_EQ(idOf("newer"), idOf("topic~1"));
    expectFailed(nebsc({"switch", "-c", "main"}), HasSubstr("'main' already exists"));
    expectFailed(nebsc({"switch", "-c", "x", "nosuch"}), "nebsc: unknown revision 'nosuch'\n");
    EXPECT_EQ(branch(), "newer\n");
}

}  // namespace
}  // namespace neb::test
