// `nebsc stage`, `unstage` and `discard`, run as a program.

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class IndexCommands : public CommandTest {
protected:
    void SetUp() override {
        for (const char* name : {"a.c", "b[1].c", "src/c.c"}) {
            repository.commitFile(name, "first\n");
            repository.write(name, "second\n");
        }
    }
};

TEST_F(IndexCommands, StageAndUnstageTakeFilesOrAll) {
    expectDone(nebsc({"stage", "../b[1].c", "c.c"}, "src"));
    EXPECT_EQ(state(), " M a.c\nM  b[1].c\nM  src/c.c\n");
    expectDone(nebsc({"unstage", "."}, "src"));
    EXPECT_EQ(state(), " M a.c\nM  b[1].c\n M src/c.c\n");
    expectDone(nebsc({"stage", "--all"}, "src"));
    EXPECT_EQ(state(), "M  a.c\nM  b[1].c\nM  src/c.c\n");
    expectDone(nebsc({"unstage", "--all"}, "src"));
    EXPECT_EQ(state(), " M a.c\n M b[1].c\n M src/c.c\n");
    for (const char* command : {"stage", "unstage", "discard"}) {
        expectFailed(nebsc({command}), HasSubstr("expected either FILE or --all"), 2);
        expectFailed(nebsc({command, "--all", "a.c"}), HasSubstr("expected either"), 2);
        expectFailed(nebsc({command, "nosuch"}),
                     "nebsc: the file or folder 'nosuch' does not exist\n");
    }
}

TEST_F(IndexCommands, StageTakesIgnoredFilesOnlyByForce) {
    repository.write(".gitignore", "*.o\n");
    repository.write("x.o", "1");
    expectFailed(nebsc({"stage", "x.o"}), HasSubstr("'nebsc stage --force' stages ignored files."));
    expectDone(nebsc({"stage", "--force", "x.o"}));
    EXPECT_THAT(state(), HasSubstr("A  x.o\n"));
}

TEST_F(IndexCommands, UnstageKeepsConflictsWithoutForce) {
    repository.git({"checkout", "--quiet", "-f", "-b", "topic", "HEAD"});
    repository.commitFile("a.c", "topic\n");
    repository.git({"checkout", "--quiet", "main"});
    repository.commitFile("a.c", "main\n");
    EXPECT_NE(repository.gitStatus({"merge", "--quiet", "topic"}), 0);
    for (const char* what : {"--all", "a.c"}) {
        expectFailed(nebsc({"unstage", what}), HasSubstr("'nebsc unstage --force' unstages"));
        EXPECT_EQ(state(), "UU a.c\n");
    }
    expectDone(nebsc({"unstage", "--force", "a.c"}));
    EXPECT_EQ(state(), " M a.c\n");
}

TEST_F(IndexCommands, DiscardRefusesToLoseChanges) {
    expectFailed(nebsc({"discard", "../a.c"}, "src"),
                 "nebsc: nothing was discarded, because changes would be lost:\n"
                 "    modified  ../a.c\n"
                 "'nebsc discard --force' throws them away.\n");
    EXPECT_EQ(state(), " M a.c\n M b[1].c\n M src/c.c\n");
    expectDone(nebsc({"discard", "--force", "../a.c"}, "src"),
               "Discarded:\n    modified  ../a.c\n");
    EXPECT_EQ(state(), " M b[1].c\n M src/c.c\n");
    std::filesystem::remove(repository.path("src/c.c"));
    expectDone(nebsc({"discard", "src"}), "Discarded:\n    deleted  src/c.c\n");
    expectDone(nebsc({"discard", "src"}), "Nothing to discard.\n");
    EXPECT_EQ(state(), " M b[1].c\n");
}

TEST_F(IndexCommands, DiscardRefusesFilesInConflict) {
    repository.git({"checkout", "--quiet", "-f", "-b", "topic", "HEAD"});
    repository.commitFile("a.c", "topic\n");
    repository.git({"checkout", "--quiet", "main"});
    repository.commitFile("a.c", "main\n");
    EXPECT_NE(repository.gitStatus({"merge", "--quiet", "topic"}), 0);
    repository.write("src/c.c", "third\n");
    const std::vector<std::vector<std::string>> choices{
        {"a.c"}, {"--all"}, {"--force", "a.c"}, {"--dry-run", "a.c"}, {"--untracked", "a.c"}};
    for (std::vector<std::string> arguments : choices) {
        arguments.insert(arguments.begin(), "discard");
        expectFailed(nebsc(arguments),
                     testing::AllOf(HasSubstr("in conflict cannot be discarded"),
                                    HasSubstr("    a.c\n"), Not(HasSubstr("discard --force")),
                                    HasSubstr("\n'nebsc unstage --force' ends the conflict")));
    }
    EXPECT_EQ(state(), "UU a.c\n M src/c.c\n");
    expectDone(nebsc({"discard", "--force", "src"}), "Discarded:\n    modified  src/c.c\n");
    expectDone(nebsc({"unstage", "--force", "a.c"}));
    expectDone(nebsc({"discard", "--force", "a.c"}), "Discarded:\n    modified  a.c\n");
    EXPECT_EQ(state(), "");
}

TEST_F(IndexCommands, DiscardSaysThatItKeepsAnUntrackedRepository) {
    repository.git({"init", "-q", "inner"});
    repository.write("inner/a", "1");
    const NebscOutcome kept = nebsc({"discard", "--force", "--untracked", "inner"});
    EXPECT_EQ(kept.output, "Nothing to discard.\n");
    EXPECT_EQ(kept.errors, "'inner' is a separate git repository, which is not deleted.\n");
    repository.write("other", "1");
    const NebscOutcome both = nebsc({"discard", "--force", "--untracked", "inner", "other"});
    EXPECT_EQ(both.output, "Discarded:\n    untracked  other\n");
    EXPECT_EQ(both.errors, kept.errors);
    EXPECT_EQ(kept.exitStatus, 0);
    EXPECT_TRUE(isThere("inner/a"));
}

TEST_F(IndexCommands, DiscardListsAndDeletesUntrackedFiles) {
    repository.write("new", "1");
    expectDone(nebsc({"discard", "--all", "--untracked", "--dry-run"}),
               "Would discard:\n"
               "    modified   a.c\n"
               "    modified   b[1].c\n"
               "    modified   src/c.c\n"
               "    untracked  new\n");
    EXPECT_EQ(state(), " M a.c\n M b[1].c\n M src/c.c\n?? new\n");
    expectFailed(nebsc({"discard", "--all", "--untracked"}), HasSubstr("    untracked  new\n"));
    EXPECT_EQ(nebsc({"discard", "--all", "--force"}).exitStatus, 0);
    EXPECT_EQ(state(), "?? new\n");
    EXPECT_EQ(nebsc({"discard", "--all", "--force", "--untracked"}).exitStatus, 0);
    EXPECT_EQ(state(), "");
}

TEST_F(IndexCommands, PrintTheOutcomeAsJSON) {
    const NebscOutcome refused = nebsc({"discard", "a.c", "--json"});
    EXPECT_EQ(refused.json()["type"], NEBSourceControlRequestDiscard);
    EXPECT_EQ(refused.json()["error"]["class"], "local-changes");
    EXPECT_EQ(refused.json()["result"].size(), 1U);
    EXPECT_EQ(refused.exitStatus, 1);
    EXPECT_EQ(nebsc({"stage", "a.c", "--json"}).json()["type"], NEBSourceControlRequestStage);
    EXPECT_EQ(nebsc({"unstage", "a.c", "--json"}).json()["type"], NEBSourceControlRequestUnstage);
}

}  // namespace
}  // namespace neb::test
