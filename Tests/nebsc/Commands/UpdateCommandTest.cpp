// `nebsc update`, run as a program.

#include <filesystem>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/SharingTest.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using JSON = nlohmann::ordered_json;

class UpdateCommand : public SharingTest {
protected:
    /// Lets ann commit a change and push it.
    void shareChange(const std::string& file = "b", const std::string& bytes = "ann\n") const {
        ann->commitFile(file, bytes);
        share(*ann);
    }
    [[nodiscard]] std::string updated() const {
        return "Updated from 'origin/main'; now at " + revision(*ben) + ".\n";
    }
};

const std::string upToDate = "Already up to date with 'origin/main'.\n";

TEST_F(UpdateCommand, FetchesAndMerges) {
    for (const std::vector<std::string>& words : {std::vector<std::string>{"update"},
                                                  {"update", "--ff"},
                                                  {"update", "origin", "main"},
                                                  {"update", "origin", "main", "--ff"}}) {
        shareChange("src/b", words.back() + std::to_string(words.size()));
        ben->write("src/x", "");
        const NebscOutcome outcome = nebsc(*ben, words, "src");
        expectDone(outcome, updated());
        EXPECT_EQ(revision(*ben), revision(*ann));
        expectDone(nebsc(*ben, words), upToDate);
    }
}

TEST_F(UpdateCommand, KnowsARemoteWhoseNameIsNotUTF8) {
    shareChange();
    ben->git({"remote", "rename", "origin", "b\xe4r"});
    EXPECT_EQ(nebsc(*ben, {"update"}).exitStatus, 0);
    EXPECT_EQ(revision(*ben), revision(*ann));
}

TEST_F(UpdateCommand, MergesDivergedBranches) {
    shareChange("a", "ann\n2\n3\n");
    ben->commitFile("a", "ben\n2\n3\n");
    ben->commitFile("c", "ben\n");
    expectFailed(nebsc(*ben, {"update", "--ff"}),
                 AllOf(StartsWith("nebsc: "), HasSubstr("fast-forward"),
                       EndsWith("\n'nebsc update' without --ff merges them.\n")));
    const std::string before = revision(*ben);
    const NebscOutcome merged = nebsc(*ben, {"update"});
    EXPECT_EQ(merged.output, updated());
    EXPECT_EQ(merged.errors,
              "nebsc: both sides changed the same lines or binary files; the current branch's were "
              "kept and the other branch's dropped in:\n    a\n'git diff " +
                  before + "..." + revision(*ann) +
                  "' shows all changes of the side whose lines were dropped.\n");
    EXPECT_EQ(merged.exitStatus, 0);
    EXPECT_EQ(ben->git({"rev-parse", "HEAD^2"}), ann->git({"rev-parse", "HEAD"}));
    EXPECT_EQ(ben->git({"show", "HEAD:a"}), "ben\n2\n3\n");
    expectDone(nebsc(*ben, {"update"}), upToDate);
    expectDone(nebsc(*ben, {"update", "--ff"}), upToDate);
}

TEST_F(UpdateCommand, NamesTheCommitOfALinkedWorktreeAndOfADetachedHEAD) {
    shareChange("b", "1\n");
    ben->git({"worktree", "add", "--quiet", "-b", "topic", "../linked", "main"});
    NebscOutcome outcome =
        runNebsc({"update", "origin", "main"}, {.folder = ben->path("../linked")});
    EXPECT_THAT(outcome.output, EndsWith("; now at " + revision(*ann) + ".\n"));
    ben->git({"checkout", "--quiet", "--detach"});
    outcome = nebsc(*ben, {"update", "origin", "main"});
    EXPECT_THAT(outcome.output, EndsWith("; now at " + revision(*ann) + ".\n"));
}

TEST_F(UpdateCommand, AHooksOutputIsNotTakenForGits) {
    shareChange();
    const std::string before = revision(*ben);
    ben->write(".git/hooks/reference-transaction",
               "#!/bin/sh\n[ $1 != prepared ] || { echo Already up-to-date >&2; exit 1; }\n");
    fs::permissions(ben->path(".git/hooks/reference-transaction"), fs::perms::owner_all);
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"update", "--ff"}, {"update"}}) {
        expectFailed(nebsc(*ben, words), HasSubstr("Already up-to-date"));
        EXPECT_EQ(revision(*ben), before);
    }
}

TEST_F(UpdateCommand, ReportsAMergeThatIsNotCommitted) {
    shareChange();
    ben->commitFile("c", "ben\n");
    ben->git({"config", "branch.main.mergeOptions", "--no-commit"});
    expectDone(nebsc(*ben, {"update"}), "Merged 'origin/main'; it is not committed yet.\n");
}

TEST_F(UpdateCommand, AcceptsNamesOfBranchesAndRemotesWithSlashes) {
    shareChange();
    share(*ann, "feature/Grüße");
    ben->git({"remote", "rename", "origin", "team/one"});
    ben->git({"fetch", "--quiet", "team/one"});
    ben->git({"checkout", "--quiet", "-b", "mine", "--track", "team/one/feature/Grüße"});
    shareChange("c");
    share(*ann, "feature/Grüße");
    expectDone(nebsc(*ben, {"update"}),
               "Updated from 'team/one/feature/Grüße'; now at " + revision(*ann) + ".\n");
    ben->git({"reset", "--quiet", "--hard", "HEAD~1"});
    expectDone(nebsc(*ben, {"update", "--ff"}),
               "Updated from 'team/one/feature/Grüße'; now at " + revision(*ann) + ".\n");
}

TEST_F(UpdateCommand, UpdatesAnEmptyClone) {
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"update"}, {"update", "--ff"}}) {
        const TestRepository empty;
        empty.git({"remote", "add", "origin", bare()});
        empty.git({"config", "branch.main.remote", "origin"});
        empty.git({"config", "branch.main.merge", "refs/heads/main"});
        expectDone(nebsc(empty, words),
                   "Updated from 'origin/main'; now at " + revision(*ann) + ".\n");
        EXPECT_EQ(empty.git({"status", "--porcelain"}), "");
    }
}

TEST_F(UpdateCommand, FollowsALocalTrackedBranch) {
    ben->git({"checkout", "--quiet", "-b", "topic", "--track", "main"});
    ben->git({"checkout", "--quiet", "main"});
    ben->commitFile("c", "ben\n");
    ben->git({"checkout", "--quiet", "topic"});
    expectDone(nebsc(*ben, {"update"}),
               "Updated from 'main'; now at " + revision(*ben, "main") + ".\n");
    expectDone(nebsc(*ben, {"update"}), "Already up to date with 'main'.\n");
}

TEST_F(UpdateCommand, JSONPrintsTheOutcomeOfTheLastRequest) {
    shareChange();
    const NebscOutcome json = nebsc(*ben, {"update", "--json"});
    EXPECT_EQ(json.json()["type"], NEBSourceControlRequestUpdate);
    EXPECT_EQ(json.json()["commands"][0]["arguments"],
              JSON({"merge", "-s", "recursive", "-X", "ours", "refs/remotes/origin/main"}));
    EXPECT_EQ(json.json()["reports"], JSON::array());
    EXPECT_EQ(json.errors, "");
    EXPECT_EQ(json.exitStatus, 0);
    const NebscOutcome nothing = nebsc(*ben, {"update", "--ff", "--json"});
    EXPECT_EQ(nothing.json()["error"]["code"], -34);
    EXPECT_EQ(nothing.json()["commands"][0]["arguments"],
              JSON({"pull", "--ff-only", "origin", "main"}));
    EXPECT_EQ(nothing.errors, "");
    EXPECT_EQ(nothing.exitStatus, 0);
    fs::remove_all(bare());
    const NebscOutcome failed = nebsc(*ben, {"update", "--json"});
    EXPECT_EQ(failed.json()["type"], NEBSourceControlRequestFetch) << "it came no further";
    EXPECT_EQ(failed.exitStatus, 1);
}

TEST_F(UpdateCommand, LocalChangesAreNotOverwritten) {
    shareChange("a");
    ben->write("a", "mine\n");
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"update"}, {"update", "--ff"}}) {
        expectFailed(nebsc(*ben, words),
                     AllOf(HasSubstr("uncommitted changes"), HasSubstr("    a\n")));
        EXPECT_EQ(ben->git({"status", "--porcelain"}), " M a\n");
    }
}

TEST_F(UpdateCommand, AConflictWithoutSidesIsAFailure) {
    shareChange("a");
    ben->git({"rm", "--quiet", "a"});
    ben->git({"commit", "--quiet", "-m", "without a"});
    expectFailed(nebsc(*ben, {"update"}), AllOf(HasSubstr("conflicts"), HasSubstr("CONFLICT")));
}

TEST_F(UpdateCommand, ReportsThatThereIsNoTrackedBranch) {
    const std::string advice = "'nebsc update REMOTE BRANCH' updates from another branch.\n";
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"update"}, {"update", "--ff"}}) {
        ben->git({"checkout", "--quiet", "-B", "apart", "main", "--no-track"});
        expectFailed(
            nebsc(*ben, words),
            "nebsc: the current branch 'apart' does not track a branch to update from\n" + advice);
        ben->git({"checkout", "--quiet", "--detach"});
        expectFailed(
            nebsc(*ben, words),
            "nebsc: HEAD is detached, so there is no tracked branch to update from\n" + advice);
    }
    shareChange();
    const NebscOutcome named = nebsc(*ben, {"update", "origin", "main"});
    expectDone(named, updated());
}

TEST_F(UpdateCommand, ReportsAMissingBranchOrRemote) {
    expectFailed(nebsc(*ben, {"update", "origin", "nosuch"}),
                 "nebsc: the remote 'origin' has no branch 'nosuch'\n"
                 "'nebsc remote branches origin' lists its branches.\n");
    expectFailed(nebsc(*ben, {"update", "--ff", "origin", "nosuch"}), HasSubstr("nosuch"));
    expectFailed(
        nebsc(*ben, {"update", "nosuch", "main"}),
        "nebsc: 'nosuch' is not the name of a remote\n"
        "'nebsc remote add' adds a remote; 'nebsc update --ff' also accepts a URL or a path.\n");
    expectFailed(nebsc(*ben, {"update", "--ff", "nosuch", "main"}),
                 HasSubstr("'nosuch' does not appear"));
    expectDone(nebsc(*ben, {"update", "--ff", bare(), "main"}),
               "Already up to date with 'main' of '" + bare() + "'.\n");
    ben->git({"config", "branch.main.merge", "refs/heads/nosuch"});
    expectFailed(nebsc(*ben, {"update"}),
                 "nebsc: the remote 'origin' has no branch 'nosuch'\n"
                 "'nebsc remote branches origin' lists its branches.\n");
}

TEST_F(UpdateCommand, ReportsABranchThatTheRefspecsLeaveOut) {
    ann->git({"push", "--quiet", "origin", "main:refs/heads/topic"});
    ben->git({"config", "remote.origin.fetch", "+refs/heads/main:refs/remotes/origin/main"});
    const std::string message =
        "nebsc: the remote 'origin' has the branch 'topic', but the setting "
        "'remote.origin.fetch' does not fetch it as 'origin/topic'\n"
        "'git remote set-branches --add origin topic' adds it to the setting.\n";
    expectFailed(nebsc(*ben, {"update", "origin", "topic"}), message);
    ben->git({"config", "branch.main.merge", "refs/heads/topic"});
    expectFailed(nebsc(*ben, {"update"}), message);
    EXPECT_EQ(nebsc(*ben, {"update", "--json"}).json()["error"]["class"], "remote-branch-unknown");
    ben->git({"remote", "set-branches", "--add", "origin", "topic"});
    expectDone(nebsc(*ben, {"update"}), "Already up to date with 'origin/topic'.\n");
}

TEST_F(UpdateCommand, RefusesInvalidArguments) {
    shareChange();
    for (const std::vector<std::string>& words : {std::vector<std::string>{"update", "origin"},
                                                  {"update", "--svn", "a", "b"},
                                                  {"update", "--svn", "--ff"}}) {
        expectFailed(nebsc(*ben, words), HasSubstr("nebsc update --help"), 2);
    }
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"update", "--", "-x", "main"},
          {"update", "--ff", "--", "-x", "main"},
          {"update", "--ff", "origin", "--", "-x"}}) {
        expectFailed(nebsc(*ben, words), HasSubstr("'-x' begins with '-'"), 2);
    }
    EXPECT_NE(revision(*ben, "origin/main"), revision(*ann));
}

TEST_F(UpdateCommand, FailsOutsideAWorkingCopy) {
    const TemporaryFolder nowhere;
    expectFailed(runNebsc({"update"}, {.folder = nowhere.path()}),
                 StartsWith("nebsc: the folder is not in a git repository"));
    expectFailed(runNebsc({"update"}, {.folder = bare()}), HasSubstr("work tree"));
    expectFailed(nebsc(*ben, {"update", "--svn"}),
                 HasSubstr("not connected to a Subversion repository"));
}

TEST_F(UpdateCommand, ASilentGitFailureIsAnError) {
    const StandInGit git(ben->path(), "exit 3");
    expectFailed(nebsc(*ben, {"update", "--ff", "origin", "main"}, git),
                 "nebsc: git exited with status 3 and printed nothing\n");
}

}  // namespace
}  // namespace neb::test
