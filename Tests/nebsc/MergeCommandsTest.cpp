// `nebsc merge` and `nebsc merge-base`, run as a program.

#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using JSON = nlohmann::ordered_json;

class MergeCommands : public CommandTest {
protected:
    /// "topic" and "main" have gone apart in a.c.
    void SetUp() override {
        repository.commitFile("a.c", "first\n");
        base = revision("HEAD");
        repository.git({"checkout", "--quiet", "-b", "topic"});
        repository.commitFile("a.c", "topic\n");
        repository.commitFile("topic.c", "topic\n");
        repository.git({"checkout", "--quiet", "main"});
        repository.commitFile("a.c", "main\n");
    }
    /// 12 characters.
    [[nodiscard]] std::string revision(const char* name) const {
        return repository.git({"rev-parse", name}).substr(0, 12);
    }

    std::string base;
};

TEST_F(MergeCommands, AConflictIsSettledToTheCurrentBranchsSide) {
    const NebscOutcome outcome = nebsc({"merge", "topic"});
    expectDone(outcome, "Merged \"topic\"; now at " + revision("HEAD") + ".\n");
    EXPECT_EQ(content("a.c"), "main\n");
    EXPECT_EQ(content("topic.c"), "topic\n");
    EXPECT_EQ(repository.git({"rev-parse", "HEAD^2"}), repository.git({"rev-parse", "topic"}));
    EXPECT_EQ(state(), "");
}

TEST_F(MergeCommands, AFastForwardIsAMergeToo) {
    repository.git({"reset", "--quiet", "--hard", base});
    expectDone(nebsc({"merge", "topic"}), "Merged \"topic\"; now at " + revision("topic") + ".\n");
}

TEST_F(MergeCommands, WhatIsMergedAlreadyIsToldPlainly) {
    for (const char* name : {"HEAD", "main~1", "main"}) {
        expectDone(nebsc({"merge", name}),
                   "Already up to date: \"" + std::string(name) + "\" is merged.\n");
    }
    const NebscOutcome json = nebsc({"merge", "--json", "main"});
    EXPECT_TRUE(json.json()["result"].is_null());
    EXPECT_EQ(json.json()["command"]["arguments"],
              JSON({"merge", "-s", "recursive", "-X", "ours", "main"}));
    EXPECT_EQ(json.errors, "");
    EXPECT_EQ(json.exitStatus, 0);
}

TEST_F(MergeCommands, AMergeThatTheUserWantsUncommittedIsToldSo) {
    repository.git({"config", "branch.main.mergeOptions", "--no-commit"});
    expectDone(nebsc({"merge", "topic"}), "Merged \"topic\"; it is not committed yet.\n");
    EXPECT_EQ(state(), "A  topic.c\n");
}

TEST_F(MergeCommands, AConflictThatHasNoSideIsAFailure) {
    repository.git({"rm", "--quiet", "a.c"});
    repository.git({"commit", "--quiet", "-m", "without a.c"});
    expectFailed(nebsc({"merge", "topic"}),
                 testing::AllOf(testing::StartsWith("nebsc: "), HasSubstr("a.c")));
    EXPECT_EQ(nebsc({"merge", "topic", "--json"}).exitStatus, 1);
}

TEST_F(MergeCommands, LocalChangesAreNotOverwritten) {
    repository.write("topic.c", "mine\n");
    expectFailed(nebsc({"merge", "topic"}), HasSubstr("topic.c"));
    EXPECT_EQ(state(), "?? topic.c\n");
}

TEST_F(MergeCommands, WhatCannotBeMergedIsNamed) {
    expectFailed(nebsc({"merge", "nosuch"}), HasSubstr("nosuch"));
    expectFailed(nebsc({"merge", "--", "--abort"}), HasSubstr("\"--abort\" begins with \"-\""), 2);
    expectFailed(nebsc({"merge"}), HasSubstr("REVISION"), 2);
    const TemporaryFolder folder;
    expectFailed(runNebsc({"merge", "topic"}, {.folder = folder.path()}),
                 testing::StartsWith("nebsc: The folder is not in a git repository."));
}

TEST_F(MergeCommands, AMergeThatFailsWithoutAWordIsAFailure) {
    const StandInGit git(repository.path(), "exit 1");
    expectFailed(nebsc({"merge", "topic"}, git),
                 "nebsc: git told nothing and ended with exit status 1.\n");
}

// ---- merge-base -------------------------------------------------------------------------------

TEST_F(MergeCommands, TheMergeBaseIsShown) {
    repository.write("src/b.c", "");
    expectDone(nebsc({"merge-base", "main", "topic"}, "src"), base + "\n");
    const NebscOutcome json = nebsc({"--json", "merge-base", "main", "topic"});
    EXPECT_EQ(json.json()["result"][0]["NEBSourceControlOperationRevisionKey"], base);
    EXPECT_EQ(json.errors, "");
    EXPECT_EQ(json.exitStatus, 0);
}

TEST_F(MergeCommands, WithoutACommonAncestorThatIsTold) {
    repository.git({"checkout", "--quiet", "--orphan", "other"});
    repository.git({"commit", "--quiet", "-m", "another start"});
    expectFailed(nebsc({"merge-base", "main", "other"}),
                 "nebsc: \"main\" and \"other\" have no common ancestor.\n");
    const NebscOutcome json = nebsc({"--json", "merge-base", "main", "other"});
    EXPECT_TRUE(json.json()["result"].is_null());
    EXPECT_EQ(json.exitStatus, 1);
}

TEST_F(MergeCommands, AMergeOfWhatIsNotThereIsToldSo) {
    expectFailed(nebsc({"merge", "nosuch"}), "nebsc: There is no branch or revision \"nosuch\".\n");
    expectFailed(nebsc({"merge", ""}), "nebsc: REVISION is empty.\n", 2);
}

TEST_F(MergeCommands, AnUnknownRevisionIsNoMissingAncestor) {
    expectFailed(nebsc({"merge-base", "main", "nosuch"}),
                 "nebsc: There is no revision \"nosuch\".\n");
    expectFailed(nebsc({"merge-base", "HEAD~7", "main"}), HasSubstr("\"HEAD~7\""));
    const NebscOutcome json = nebsc({"merge-base", "--json", "main", "nosuch"});
    EXPECT_EQ(json.json()["error"]["class"], "revision-unknown");
    EXPECT_EQ(json.exitStatus, 1);
    expectFailed(nebsc({"merge-base", "main", "--", "--all"}), HasSubstr("\"--all\" begins"), 2);
    const TemporaryFolder folder;
    expectFailed(runNebsc({"merge-base", "a", "b"}, {.folder = folder.path()}),
                 testing::StartsWith("nebsc: The folder is not in a git repository."));
    expectFailed(nebsc({"merge-base", "main"}), HasSubstr("B is required"), 2);
    const StandInGit git(repository.path(), "exit 3");
    expectFailed(nebsc({"merge-base", "main", "topic"}, git),
                 "nebsc: git told nothing and ended with exit status 3.\n");
}

}  // namespace
}  // namespace neb::test
