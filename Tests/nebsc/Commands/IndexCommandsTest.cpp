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

// ---- submodules -------------------------------------------------------------------------------

/// Has a submodule "lib/sub", whose file "f" has changed.
class IndexCommandsInSubmodules : public CommandTest {
protected:
    void SetUp() override {
        repository.commitFile("f", "first\n");
        repository.commitFile("f", "second\n");
        repository.git({"submodule", "--quiet", "add", repository.path(), "lib/sub"});
        repository.git({"commit", "--quiet", "-m", "with a submodule"});
        repository.write("lib/sub/f", "third\n");
        repository.write("f", "third\n");
    }
    void expectNotDiscarded(const NebscOutcome& outcome, const std::string& output,
                            const std::string& seen) const {
        EXPECT_EQ(outcome.output, output);
        EXPECT_EQ(outcome.errors,
                  "nebsc: the changes of submodules were not discarded\n"
                  "Perform the operation in the submodule.\n"
                  "    lib/sub\n"
                  "'nebsc submodule update --force " +
                      seen + "' discards them.\n");
        EXPECT_EQ(outcome.exitStatus, 1);
    }
};

TEST_F(IndexCommandsInSubmodules, DiscardSaysThatTheirChangesStay) {
    expectNotDiscarded(nebsc({"discard", "lib/sub"}), "", "lib/sub");
    expectNotDiscarded(nebsc({"discard", "--force", "sub"}, "lib"), "", "sub");
    expectNotDiscarded(nebsc({"discard", "--dry-run", "--all"}),
                       "Would discard:\n    modified  f\n", "lib/sub");
    expectNotDiscarded(nebsc({"discard", "--force", "--all"}), "Discarded:\n    modified  f\n",
                       "lib/sub");
    EXPECT_EQ(state(), " M lib/sub\n");
    const auto json = nebsc({"discard", "--json", "--force", "--all"}).json();
    EXPECT_EQ(json["error"]["class"], "path-in-submodule");
    EXPECT_EQ(json["error"]["files"], nlohmann::ordered_json({"lib/sub"}));
    EXPECT_EQ(nebsc({"submodule", "update", "--force", "lib/sub"}).exitStatus, 0);
    EXPECT_EQ(state(), "");
    expectDone(nebsc({"discard", "--force", "--all"}), "Nothing to discard.\n");
}

TEST_F(IndexCommandsInSubmodules, DiscardSaysThatAnotherCommitStays) {
    repository.git({"-C", "lib/sub", "checkout", "--quiet", "--force", "HEAD~1"});
    expectNotDiscarded(nebsc({"discard", "--force", "lib/sub"}), "", "lib/sub");
    EXPECT_EQ(state(), " M f\n M lib/sub\n");
}

TEST_F(IndexCommandsInSubmodules, RevertSaysThatTheirChangesStay) {
    expectNotDiscarded(nebsc({"revert", "lib/sub"}), "", "lib/sub");
    expectNotDiscarded(nebsc({"revert", "."}), "", "lib/sub");
    EXPECT_EQ(state(), " M lib/sub\n");
    expectDone(nebsc({"revert", "f"}));
}

TEST_F(IndexCommandsInSubmodules, RevertReportsThatTheSearchForTheirChangesFailed) {
    const auto failing = [this](const std::string& commands) {
        return StandInGit(repository.path(), "case \" $* \" in *' diff-files '*) " + commands +
                                                 ";; esac\nPATH=${PATH#*:} exec git \"$@\"");
    };
    const StandInGit git = failing("echo 'fatal: no look' >&2; exit 128");
    expectFailed(nebsc({"revert", "."}, git), "nebsc: no look\n");
    EXPECT_EQ(nebsc({"revert", "--json", "."}, git).json()["error"]["text"], "fatal: no look\n");
    expectFailed(nebsc({"revert", "."}, failing("exit 3")),
                 "nebsc: git exited with status 3 and printed nothing\n");
}

}  // namespace
}  // namespace neb::test
