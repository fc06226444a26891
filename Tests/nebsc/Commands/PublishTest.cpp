// `nebsc push` to the upstream branch and with a lease, and `nebsc pull`, run as a program.

#include <filesystem>
#include <fstream>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/SharingTest.h"

namespace neb::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;

class Publishing : public SharingTest {
protected:
    [[nodiscard]] static std::string atHead(const TestRepository& who) {
        return "; now at " + revision(who) + ".\n";
    }
};

// ---- push -------------------------------------------------------------------------------------

TEST_F(Publishing, PushGoesToTheUpstreamBranch) {
    const std::string before = revision(*ann);
    ann->commitFile("src/b", "b");
    expectDone(nebsc(*ann, {"push", "--dry-run"}),
               "Would push:\n    updated  main -> main  " + before + ".." + revision(*ann) + "\n");
    EXPECT_EQ(shared(), before);
    expectDone(nebsc(*ann, {"push"}, "src"),
               "Pushed:\n    updated  main -> main  " + before + ".." + revision(*ann) + "\n");
    EXPECT_EQ(shared(), revision(*ann));
    expectDone(nebsc(*ann, {"push"}), "Nothing to push: the remote is up to date.\n");
    EXPECT_EQ(nebsc(*ann, {"push", "--json"}).json()["type"], NEBSourceControlRequestPublish);
}

TEST_F(Publishing, PushShowsWhatTheServerSays) {
    const std::string hook = bare() + "/hooks/post-receive";
    std::ofstream(hook)
        << "#!/bin/sh\nprintf 'Review it at\\n\\n  \\033[1mhttps://example.org\\n'\n";
    std::filesystem::permissions(hook, std::filesystem::perms::owner_all);
    ann->commitFile("src/b", "b");
    const NebscOutcome outcome = nebsc(*ann, {"push"});
    EXPECT_EQ(outcome.errors,
              "remote: Review it at\nremote:\nremote:   \\x1b[1mhttps://example.org\n");
    EXPECT_THAT(outcome.output, testing::StartsWith("Pushed:\n    updated  main -> main"));
    EXPECT_EQ(outcome.exitStatus, 0);
    ann->commitFile("src/b", "c");
    const auto records = nebsc(*ann, {"push", "--json"}).json()["result"];
    EXPECT_EQ(records[1]["NEBSourceControlOperationKindKey"], "remote lines");
    EXPECT_EQ(records[1]["NEBSourceControlOperationRemoteLinesKey"].size(), 3U);
}

TEST_F(Publishing, PushSetsTheUpstreamBranch) {
    ann->git({"checkout", "--quiet", "-b", "topic"});
    expectFailed(nebsc(*ann, {"push"}), HasSubstr("'nebsc push -u' pushes the branch"));
    expectDone(nebsc(*ann, {"push", "-u"}),
               "Pushed:\n    new  HEAD -> topic\nThe upstream branch is 'origin/topic'.\n");
    EXPECT_EQ(shared("topic"), revision(*ann));
    expectDone(nebsc(*ann, {"push", "--set-upstream", "origin", "topic:review"}),
               "Pushed:\n    new  topic -> review\nThe upstream branch is 'origin/review'.\n");
    ann->git({"remote", "add", "other", bare()});
    expectFailed(nebsc(*ann, {"push", "-u"}), HasSubstr("there are several remotes"), 2);
    expectDone(nebsc(*ann, {"push", "-u", "other"}),
               "Nothing to push: the remote is up to date.\n"
               "The upstream branch is 'other/topic'.\n");
    const TestRepository alone;
    expectFailed(nebsc(alone, {"pull"}), HasSubstr("'nebsc pull REMOTE BRANCH' names a branch"));
    alone.commitFile("a", "1");
    expectFailed(nebsc(alone, {"push"}), HasSubstr("'nebsc remote add' adds a remote.\n"));
    expectFailed(nebsc(alone, {"push", "-u"}),
                 "nebsc: there is no remote to push to\n'nebsc remote add' adds one.\n");
}

TEST_F(Publishing, PushOverwritesOnlyWithAValidLease) {
    const std::string before = revision(*ben);
    ben->git({"commit", "--quiet", "--amend", "-m", "another"});
    expectFailed(nebsc(*ben, {"push"}),
                 AllOf(HasSubstr("[rejected]"), HasSubstr("'nebsc pull' fetches and integrates")));
    EXPECT_EQ(shared(), before);
    ann->commitFile("b", "ann");
    share(*ann);
    expectFailed(nebsc(*ben, {"push", "--force-with-lease"}),
                 HasSubstr("The branch of the remote has changed since the last fetch"));
    EXPECT_EQ(shared(), revision(*ann));
    ben->git({"fetch", "--quiet"});
    expectDone(
        nebsc(*ben, {"push", "--force-with-lease", "origin", "main"}),
        "Pushed:\n    forced  main -> main  " + revision(*ann) + ".." + revision(*ben) + "\n");
    EXPECT_EQ(shared(), revision(*ben));
}

TEST_F(Publishing, PushRefusesInvalidUsage) {
    for (const char* branches : {":main", "main:", "+main:main", ":"}) {
        expectFailed(nebsc(*ann, {"push", "-u", "origin", branches}),
                     HasSubstr("expected LOCAL:DEST"), 2);
    }
    expectFailed(nebsc(*ann, {"push", "--dry-run", "origin"}),
                 HasSubstr("expected REMOTE and LOCAL:DEST, or neither of them"), 2);
    expectFailed(nebsc(*ann, {"push", "-u", "--svn"}), HasSubstr("expected REMOTE"), 2);
    expectFailed(nebsc(*ann, {"push", "-u", "origin", "nosuch"}),
                 "nebsc: there is no local branch 'nosuch' to push\n");
    EXPECT_EQ(ann->git({"--git-dir=" + bare(), "branch", "--format=%(refname)"}),
              "refs/heads/main\n");
}

// ---- pull -------------------------------------------------------------------------------------

TEST_F(Publishing, PullIntegratesTheUpstreamBranch) {
    expectDone(nebsc(*ben, {"pull"}), "Already up to date.\n");
    ann->commitFile("src/b", "ann");
    share(*ann);
    const NebscOutcome forwarded = nebsc(*ben, {"pull", "--ff-only"});
    expectDone(forwarded, "Pulled by fast-forward" + atHead(*ben));
    EXPECT_EQ(revision(*ben), revision(*ann));
    ann->commitFile("c", "ann");
    share(*ann);
    ben->commitFile("d", "ben");
    expectFailed(nebsc(*ben, {"pull", "--ff-only"}),
                 HasSubstr("'nebsc pull --rebase' or 'nebsc pull --merge'"));
    const NebscOutcome merged = nebsc(*ben, {"pull"}, "src");
    expectDone(merged, "Pulled by merge" + atHead(*ben));
    EXPECT_EQ(ben->git({"rev-list", "--count", "--merges", "HEAD"}), "1\n");
}

TEST_F(Publishing, PullFollowsTheSettings) {
    const auto diverge = [this](const std::string& name) {
        ann->commitFile("ann-" + name, "1");
        share(*ann);
        ben->commitFile("ben-" + name, "1");
    };
    diverge("1");
    ben->git({"config", "pull.ff", "only"});
    EXPECT_EQ(nebsc(*ben, {"pull"}).exitStatus, 1);
    ben->git({"config", "pull.rebase", "true"});
    const NebscOutcome rebased = nebsc(*ben, {"pull"});
    expectDone(rebased, "Pulled by rebase" + atHead(*ben));
    EXPECT_EQ(ben->git({"rev-list", "--count", "--merges", "HEAD"}), "0\n");
    diverge("2");
    ben->git({"config", "branch.main.rebase", "false"});
    EXPECT_EQ(nebsc(*ben, {"pull"}).exitStatus, 1);
    const NebscOutcome merged = nebsc(*ben, {"pull", "--merge", "origin", "main"});
    expectDone(merged, "Pulled by merge" + atHead(*ben));
}

TEST_F(Publishing, PullStopsAtConflicts) {
    ann->commitFile("a", "ann\n");
    share(*ann);
    ben->commitFile("a", "ben\n");
    const std::string before = revision(*ben);
    for (const char* strategy : {"merge", "rebase"}) {
        expectFailed(nebsc(*ben, {"pull", std::string("--") + strategy}),
                     AllOf(testing::StartsWith("nebsc: the " + std::string(strategy) +
                                               " stopped at conflicts:\n    both modified  a\n"),
                           HasSubstr("'nebsc abort' restores the state before.\n")));
        expectDone(nebsc(*ben, {"abort"}),
                   "Aborted the " + std::string(strategy) + "; now at " + before + ".\n");
    }
    EXPECT_EQ(nebsc(*ben, {"pull", "--json"}).json()["error"]["class"], "conflict");
}

TEST_F(Publishing, PullTakesABranchOfTheRepositoryItself) {
    ben->git({"checkout", "--quiet", "-b", "topic"});
    ben->commitFile("a", "topic\n");
    ben->git({"checkout", "--quiet", "main"});
    ben->commitFile("b", "ben\n");
    const NebscOutcome merged = nebsc(*ben, {"pull", ".", "topic"});
    expectDone(merged, "Pulled by merge" + atHead(*ben));
    EXPECT_EQ(ben->git({"show", "HEAD:a"}), "topic\n");
}

TEST_F(Publishing, PullSaysWhatIsMissing) {
    expectFailed(nebsc(*ben, {"pull", "origin"}), HasSubstr("expected REMOTE and BRANCH"), 2);
    expectFailed(nebsc(*ben, {"pull", "--merge", "--rebase"}), HasSubstr("only one of"), 2);
    expectFailed(nebsc(*ben, {"pull", "origin", "nosuch"}), HasSubstr("nosuch"));
    expectFailed(nebsc(*ben, {"pull", "origin", "+main:main"}), HasSubstr("+main:main"));
    ben->git({"checkout", "--quiet", "-b", "alone"});
    expectFailed(nebsc(*ben, {"pull"}), HasSubstr("'nebsc push -u' sets an upstream branch."));
}

}  // namespace
}  // namespace neb::test
