// `nebsc worktree` and its subcommands, run as a program.

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;

class WorktreeCommands : public CommandTest {
protected:
    void SetUp() override {
        repository.commitFile("src/a.c", "1\n");
        repository.git({"branch", "topic"});
        id = repository.git({"rev-parse", "HEAD"}).substr(0, 12);
    }

    TemporaryFolder folder;
    std::string id;
};

TEST_F(WorktreeCommands, AddListAndRemove) {
    const std::string place = folder.path("topic");
    expectDone(nebsc({"worktree", "add", place, "topic"}),
               "Added worktree '" + place + "' with topic.\n");
    expectDone(nebsc({"worktree", "add", "-b", "fix", "../fix", "HEAD"}, "src"),
               "Added worktree '" + repository.path("fix") + "' with fix.\n");
    expectDone(nebsc({"worktree", "add", "--detach", folder.path("d")}),
               "Added worktree '" + folder.path("d") + "' with (detached).\n");
    repository.git({"worktree", "lock", "--reason", "mine", place});
    const std::string list = nebsc({"worktree"}).output;
    EXPECT_THAT(list, HasSubstr(repository.path() + "  "));
    EXPECT_THAT(list, HasSubstr(id + "  topic       locked: mine\n"));
    EXPECT_THAT(list, HasSubstr(id + "  (detached)\n"));
    repository.git({"worktree", "unlock", place});
    expectDone(nebsc({"worktree", "remove", place}), "Removed worktree '" + place + "'.\n");
    EXPECT_FALSE(std::filesystem::exists(place));
    EXPECT_EQ(nebsc({"worktree", "--json"}).json()["type"], NEBSourceControlRequestWorktrees);
}

TEST_F(WorktreeCommands, RemoveNamesWhatWouldBeLost) {
    const std::string place = folder.path("topic");
    expectDone(nebsc({"worktree", "add", place, "topic"}),
               "Added worktree '" + place + "' with topic.\n");
    folder.write("topic/new.c", "u\n");
    expectFailed(nebsc({"worktree", "remove", place}),
                 "nebsc: the worktree has changed or untracked files, which would be lost\n"
                 "Commit the changes, stash them with 'git stash', or discard them.\n"
                 "    new.c\n"
                 "'nebsc worktree remove --force' removes it anyway; --dry-run lists what would be "
                 "lost.\n");
    expectDone(nebsc({"worktree", "remove", "--dry-run", place}), "untracked  new.c\n");
    expectDone(nebsc({"worktree", "remove", "--force", place}),
               "Removed worktree '" + place + "'.\n");
    EXPECT_FALSE(std::filesystem::exists(place));
}

TEST_F(WorktreeCommands, PruneForgetsMissingOnes) {
    const std::string place = folder.path("topic");
    repository.git({"worktree", "add", "-q", place, "topic"});
    std::filesystem::remove_all(place);
    EXPECT_THAT(nebsc({"worktree", "list"}).output, HasSubstr("  missing\n"));
    expectDone(nebsc({"worktree", "prune"}), "Forgot worktree '" + place + "'.\n");
    expectDone(nebsc({"worktree", "prune"}));
}

TEST_F(WorktreeCommands, SayWhatIsWrong) {
    expectFailed(nebsc({"worktree", "add", folder.path("x")}),
                 HasSubstr("expected a branch, or one of --branch and --detach"), 2);
    expectFailed(nebsc({"worktree", "add", "-b", "y", "--detach", folder.path("x")}),
                 HasSubstr("expected only one of --branch and --detach"), 2);
    expectFailed(nebsc({"worktree", "add", folder.path("x"), "nosuch"}),
                 AllOf(HasSubstr("'nosuch'"), HasSubstr("'nebsc worktree add --branch")));
    expectFailed(nebsc({"worktree", "remove", repository.path()}), HasSubstr("main worktree"));
    expectFailed(nebsc({"worktree", "remove", folder.path("x")}),
                 AllOf(HasSubstr("'" + folder.path("x") + "'"),
                       testing::EndsWith("\n'git worktree list' lists the worktrees.\n"),
                       testing::Not(HasSubstr("ls-files"))));
    EXPECT_FALSE(std::filesystem::exists(folder.path("x")));
}

}  // namespace
}  // namespace neb::test
