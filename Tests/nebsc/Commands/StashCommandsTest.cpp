// `nebsc stash` and its subcommands, run as a program.

#include <filesystem>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

class StashCommands : public CommandTest {
protected:
    void SetUp() override {
        repository.commitFile("a.c", "first\n");
        repository.commitFile("src/b.c", "first\n");
        repository.write("a.c", "second\n");
    }
    [[nodiscard]] std::string stashes() const { return repository.git({"stash", "list"}); }
};

TEST_F(StashCommands, PushPutsChangesAside) {
    repository.write("src/b.c", "second\n");
    repository.write("new", "1");
    expectDone(nebsc({"stash", "push", "-m", "--half", "b.c"}, "src"),
               "Stashed the changes as stash@{0}.\n");
    EXPECT_EQ(state(), " M a.c\n?? new\n");
    expectDone(nebsc({"stash", "push", "--untracked"}), "Stashed the changes as stash@{0}.\n");
    EXPECT_EQ(state(), "");
    expectDone(nebsc({"stash", "push"}), "Nothing to stash.\n");
    expectDone(nebsc({"stash", "show"}), "    modified   a.c\n    untracked  new\n");
    expectDone(nebsc({"stash", "show", "1"}, "src"), "    modified  b.c\n");
    const std::string rows =
        "stash@\\{0\\}  [0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}  WIP on main: .*\n"
        "stash@\\{1\\}  [0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}  On main: --half\n";
    EXPECT_THAT(nebsc({"stash", "list"}).output, MatchesRegex(rows));
    EXPECT_THAT(nebsc({"stash"}).output, MatchesRegex(rows));
}

TEST_F(StashCommands, ListAndPushWorkWithoutAStash) {
    expectDone(nebsc({"stash"}));
    repository.git({"checkout", "--quiet", "a.c"});
    expectDone(nebsc({"stash", "push"}), "Nothing to stash.\n");
    for (const char* command : {"show", "apply", "pop"}) {
        expectFailed(nebsc({"stash", command}), "nebsc: there is no stash\n");
    }
    expectFailed(nebsc({"stash", "drop"}), HasSubstr("missing argument 'STASH'"), 2);
    expectFailed(nebsc({"stash", "drop", "0"}), "nebsc: there is no stash '0'\n");
}

TEST_F(StashCommands, PushKeepsTheIndexAndPopRestoresIt) {
    repository.git({"add", "a.c"});
    expectDone(nebsc({"stash", "push", "--keep-index"}), "Stashed the changes as stash@{0}.\n");
    EXPECT_EQ(state(), "M  a.c\n");
    repository.git({"reset", "--quiet", "--hard"});
    expectDone(nebsc({"stash", "apply", "--index"}), "Applied the stash; it is kept.\n");
    EXPECT_EQ(state(), "M  a.c\n");
    repository.git({"reset", "--quiet", "--hard"});
    expectDone(nebsc({"stash", "pop"}), "Applied and deleted the stash.\n");
    EXPECT_EQ(state(), " M a.c\n");
    EXPECT_EQ(stashes(), "");
}

TEST_F(StashCommands, PopKeepsAStashThatConflicts) {
    expectDone(nebsc({"stash", "push"}), "Stashed the changes as stash@{0}.\n");
    repository.commitFile("a.c", "third\n");
    expectFailed(
        nebsc({"stash", "pop"}, "src"),
        "nebsc: the stash stopped at conflicts:\n"
        "    both modified  ../a.c\n"
        "Resolve them in the files, then run 'nebsc stage' on these. The stash is kept.\n");
    EXPECT_NE(stashes(), "");
    EXPECT_EQ(nebsc({"stash", "pop", "--json"}).json()["type"], NEBSourceControlRequestStash);
}

TEST_F(StashCommands, PushTakesStagedFilesInPlaceOfDeletedOnes) {
    repository.commitFile("dir/b.c", "1");
    repository.commitFile("file", "1");
    repository.git({"rm", "-rq", "dir", "file"});
    repository.write("dir", "own");
    repository.write("file/[b]", "own");
    repository.git({"add", "dir", "file"});
    const std::string changes = state();
    repository.write("file/new", "untracked");
    expectFailed(nebsc({"stash", "push"}),
                 "nebsc: untracked files are in place of deleted ones, and would be lost\n"
                 "Move the files away, or add and commit them.\n"
                 "    file\n"
                 "'nebsc stash push --untracked' stashes them too.\n");
    std::filesystem::remove(repository.path("file/new"));
    expectDone(nebsc({"stash", "push"}, "src"), "Stashed the changes as stash@{0}.\n");
    EXPECT_EQ(state(), "");
    repository.git({"stash", "pop", "-q", "--index"});
    EXPECT_EQ(state(), changes);
}

/// See rerere.autoUpdate in git-config(1).
TEST_F(StashCommands, PopKeepsAStashWithRecordedResolutions) {
    repository.git({"config", "rerere.enabled", "true"});
    repository.git({"config", "rerere.autoUpdate", "true"});
    expectDone(nebsc({"stash", "push"}), "Stashed the changes as stash@{0}.\n");
    repository.commitFile("a.c", "third\n");
    expectFailed(nebsc({"stash", "pop"}), HasSubstr("    both modified  a.c\n"));
    repository.write("a.c", "resolved\n");
    repository.git({"add", "a.c"});
    repository.git({"rerere"});
    repository.git({"reset", "--quiet", "--hard"});
    expectFailed(
        nebsc({"stash", "pop"}),
        "nebsc: the stash stopped; git resolved the conflicts as recorded by 'git rerere'\n"
        "Check them with 'nebsc diff --staged'. The stash is kept.\n");
    EXPECT_EQ(state(), "M  a.c\n");
    EXPECT_NE(stashes(), "");
}

TEST_F(StashCommands, DropSaysHowToRestoreTheStash) {
    expectDone(nebsc({"stash", "push"}), "Stashed the changes as stash@{0}.\n");
    std::string id = repository.git({"rev-parse", "stash"});
    id.pop_back();
    expectDone(nebsc({"stash", "drop", "stash@{0}"}),
               "Deleted stash@{0}; 'git stash store " + id + "' restores it.\n");
    EXPECT_EQ(stashes(), "");
    repository.git({"stash", "store", id});
    EXPECT_NE(stashes(), "");
}

TEST_F(StashCommands, PushKeepsAnUntrackedFileInPlaceOfAFolder) {
    std::filesystem::remove_all(repository.path("src"));
    repository.write("src", "own");
    expectFailed(nebsc({"stash", "push"}),
                 HasSubstr("'nebsc stash push --untracked' stashes them too."));
    EXPECT_EQ(stashes(), "");
}

}  // namespace
}  // namespace neb::test
