// `nebsc branch rename` and `nebsc branch upstream`, run as a program.

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;

class BranchChangeCommands : public CommandTest {
protected:
    void SetUp() override { repository.commitFile("a.c", "first\n"); }
    [[nodiscard]] std::string branches() const {
        return repository.git({"for-each-ref", "--format=%(refname:short)", "refs/heads"});
    }
};

TEST_F(BranchChangeCommands, RenameTheCurrentBranchOrAnother) {
    repository.git({"branch", "topic"});
    expectDone(nebsc({"branch", "rename", "Grüße"}), "Renamed branch 'main' to 'Grüße'.\n");
    expectDone(nebsc({"branch", "rename", "topic", "rename"}),
               "Renamed branch 'topic' to 'rename'.\n");
    expectDone(nebsc({"branch", "rename", "rename", "upstream"}),
               "Renamed branch 'rename' to 'upstream'.\n");
    EXPECT_EQ(branches(), "Grüße\nupstream\n");
    EXPECT_EQ(nebsc({"branch", "rename", "main", "--json"}).json()["type"],
              NEBSourceControlRequestChangeBranch);
    const TestRepository empty;
    expectDone(runNebsc({"branch", "rename", "trunk"}, {.folder = empty.path()}),
               "Renamed branch 'main' to 'trunk'.\n");
}

TEST_F(BranchChangeCommands, RenameRefusesToReplaceABranch) {
    repository.git({"branch", "topic"});
    expectFailed(nebsc({"branch", "rename", "topic"}),
                 AllOf(HasSubstr("'topic' already exists"),
                       HasSubstr("\n'nebsc branch rename --force' replaces that branch.\n")));
    EXPECT_EQ(branches(), "main\ntopic\n");
    expectDone(nebsc({"branch", "rename", "--force", "topic"}),
               "Renamed branch 'main' to 'topic'.\n");
    EXPECT_EQ(branches(), "topic\n");
}

/// git renames the branch before its settings, and does not print why it cannot lock those.
TEST_F(BranchChangeCommands, RenameReportsSettingsThatKeepTheFormerName) {
    repository.git({"branch", "--track", "topic"});
    repository.write(".git/config.lock", "");
    expectFailed(nebsc({"branch", "rename", "topic", "new"}),
                 AllOf(HasSubstr("'" + repository.path(".git/config.lock") + "' is "),
                       HasSubstr("\nThe branch was renamed, but its settings were not. 'git config "
                                 "--rename-section branch.OLD branch.NEW' renames them.\n")));
    EXPECT_EQ(branches(), "main\nnew\n");
    EXPECT_EQ(repository.git({"config", "branch.topic.remote"}), ".\n");
}

TEST_F(BranchChangeCommands, SetAndRemoveTheUpstream) {
    repository.git({"branch", "topic"});
    repository.git({"update-ref", "refs/remotes/origin/main", "HEAD"});
    repository.git({"config", "remote.origin.url", "."});
    repository.git({"config", "remote.origin.fetch", "+refs/heads/*:refs/remotes/origin/*"});
    expectDone(nebsc({"branch", "upstream", "origin/main"}), "'main' tracks 'origin/main'.\n");
    expectDone(nebsc({"branch", "tracking", "main"}), "'main' tracks 'origin/main'.\n");
    expectDone(nebsc({"branch", "upstream", "topic", "main"}), "'topic' tracks 'main'.\n");
    expectDone(nebsc({"branch", "upstream", "--unset", "topic"}),
               "'topic' no longer tracks a branch.\n");
    expectDone(nebsc({"branch", "upstream", "--unset"}), "'main' no longer tracks a branch.\n");
    expectFailed(nebsc({"branch", "upstream", "--unset"}), HasSubstr("upstream"));
}

TEST_F(BranchChangeCommands, SayWhatIsWrong) {
    expectFailed(nebsc({"branch", "rename"}), HasSubstr("missing argument 'NAME'"), 2);
    expectFailed(nebsc({"branch", "rename", "nosuch", "x"}), HasSubstr("'nosuch'"));
    expectFailed(nebsc({"branch", "rename", "a b"}), HasSubstr("'a b' is not a valid branch name"));
    expectFailed(nebsc({"branch", "upstream"}),
                 HasSubstr("expected an upstream branch, or --unset"), 2);
    expectFailed(nebsc({"branch", "upstream", "--unset", "main", "origin/main"}),
                 HasSubstr("expected at most a branch with --unset"), 2);
    expectFailed(nebsc({"branch", "upstream", "origin/nosuch"}),
                 AllOf(HasSubstr("the remote does not have this branch, or it was not fetched\n"),
                       HasSubstr("'origin/nosuch'")));
    expectFailed(nebsc({"branch", "upstream", "nosuch"}),
                 AllOf(HasSubstr("nebsc: there is no branch 'nosuch'\n"),
                       testing::Not(HasSubstr("remote"))));
    EXPECT_EQ(nebsc({"branch", "upstream", "nosuch", "--json"}).json()["error"]["class"],
              "branch-unknown");
    expectFailed(nebsc({"branch", "upstream", "main"}), HasSubstr("its own upstream"));
    repository.git({"checkout", "-q", "--detach"});
    expectFailed(nebsc({"branch", "rename", "x"}), HasSubstr("no branch is checked out"));
    EXPECT_EQ(branches(), "main\n");
}

}  // namespace
}  // namespace neb::test
