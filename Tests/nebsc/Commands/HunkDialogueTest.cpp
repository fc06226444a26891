// `nebsc stage --patch` and `nebsc unstage --patch`, run as a program.

#include <csignal>

#include "nebsc/Commands/HunkTest.h"

namespace neb::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class HunkDialogue : public HunkTest {};

TEST_F(HunkDialogue, StagesTheChosenHunks) {
    repository.commitFile("a.c", numberedLines({}));
    repository.write("a.c", numberedLines({3, 20, 37}));
    const NebscOutcome outcome = answering({"stage", "--patch"}, "n\ny\nn\n");
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_THAT(outcome.output,
                AllOf(HasSubstr("diff --git a/a.c b/a.c\n--- a/a.c\n+++ b/a.c\n@@ -1,6 +1,6 @@\n"),
                      HasSubstr("(1/3) Stage this hunk [y,n,q,a,d,j,J,g,/,?]? @@ -17,7 +17,7 @@")));
    EXPECT_EQ(content("a.c"), numberedLines({20}));
    unstage("y\n");
    EXPECT_EQ(content("a.c"), numberedLines({}));
}

TEST_F(HunkDialogue, TakesOrLeavesTheRestOfAFileAndQuits) {
    for (const char* name : {"a", "b", "c"}) {
        repository.commitFile(name, numberedLines({}));
        repository.write(name, numberedLines({3, 20, 37}));
    }
    stage("n\na\ny\nd\nq\n");
    EXPECT_EQ(content("a"), numberedLines({20, 37}));
    EXPECT_EQ(content("b"), numberedLines({3}));
    EXPECT_EQ(content("c"), numberedLines({}));
    unstage("y\nn\nn");  // the end of the input is the end of the last answer
    EXPECT_EQ(content("a"), numberedLines({37}));
    EXPECT_EQ(content("b"), numberedLines({3}));
}

TEST_F(HunkDialogue, AppliesTheAnswersBeforeTheEndOfTheInput) {
    repository.commitFile("a", numberedLines({}));
    repository.write("a", numberedLines({3, 20}));
    const NebscOutcome outcome = answering({"stage", "-p"}, "y\n");
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_THAT(outcome.output, testing::EndsWith("Stage this hunk [y,n,q,a,d,K,g,/,?]? \n"));
    EXPECT_EQ(content("a"), numberedLines({3}));
    stage("");
    EXPECT_EQ(content("a"), numberedLines({3}));
}

TEST_F(HunkDialogue, SplitsHunks) {
    repository.commitFile("a", numberedLines({}));
    repository.write("a", numberedLines({10, 12, 15}));
    const NebscOutcome outcome = answering({"stage", "-p"}, "s\nn\ny\nn\n");
    EXPECT_THAT(outcome.output,
                AllOf(HasSubstr("(1/1) Stage this hunk [y,n,q,a,d,s,?]? Split into 3 hunks.\n"
                                "@@ -7,5 +7,5 @@"),
                      HasSubstr("(2/3) Stage this hunk [y,n,q,a,d,K,j,J,g,/,?]? ")));
    EXPECT_EQ(content("a"), numberedLines({12}));
    repository.git({"add", "a"});
    unstage("s\ny\nn\ny\n");
    EXPECT_EQ(content("a"), numberedLines({12}));
}

TEST_F(HunkDialogue, FindsThePlaceOfAHunkAmongEqualLines) {
    std::string before;
    for (int i = 0; i < 60; ++i) {
        before += "same\n";
    }
    repository.commitFile("a", before);
    std::string after = before;
    for (const int line : {50, 30, 10}) {
        after.insert(static_cast<std::size_t>(line) * 5, "new\nnew\n");
    }
    repository.write("a", after);
    stage("n\ny\nn\n");
    EXPECT_EQ(content("a"), std::string(before).insert(30 * 5, "new\nnew\n"));
    repository.git({"add", "a"});
    unstage("n\ny\nn\n");
    EXPECT_EQ(content("a"), std::string(after).erase(32 * 5 - 2, 8));
}

TEST_F(HunkDialogue, ExplainsTheAnswersAndAsksAgain) {
    repository.commitFile("a", "1\n");
    repository.write("a", "2\n");
    for (const char* answer : {"?", "yes", "", "s", "x"}) {
        const NebscOutcome outcome = answering({"stage", "-p"}, std::string(answer) + "\n");
        EXPECT_THAT(outcome.output,
                    AllOf(HasSubstr("y - stage this hunk\n"), Not(HasSubstr("s - split")),
                          HasSubstr("? - show this help\n@@ -1 +1 @@\n-1\n+2\n(1/1)")))
            << answer;
    }
    EXPECT_EQ(content("a"), "1\n");
    stage(" Y \n");
    EXPECT_EQ(content("a"), "2\n");
}

TEST_F(HunkDialogue, AsksAboutNewAndDeletedFiles) {
    repository.commitFile("gone", "1\n2\n");
    repository.commitFile("empty", "");
    std::filesystem::remove(repository.path("gone"));
    std::filesystem::remove(repository.path("empty"));
    repository.write("new", "other\n");
    repository.write("untracked", "other\n");
    repository.git({"add", "--intent-to-add", "new"});
    EXPECT_THAT(answering({"stage", "-p"}, "y\ny\ny\n").output,
                AllOf(HasSubstr("deleted file mode 100644\n(1/1) Stage this deletion"),
                      HasSubstr("Stage this new file [y,n,q,a,d,?]?")));
    EXPECT_EQ(state(), "D  empty\nD  gone\nA  new\n?? untracked\n");
    unstage("y\nn\ny\n");
    EXPECT_EQ(state(), " D empty\nD  gone\n?? new\n?? untracked\n");
}

TEST_F(HunkDialogue, UnstagesBeforeTheFirstCommit) {
    repository.write("a", "1\n");
    repository.write("b", "1\n");
    repository.git({"add", "."});
    unstage("n\ny\n");
    EXPECT_EQ(state(), "A  a\n?? b\n");
}

TEST_F(HunkDialogue, AsksAboutTheModeApartFromTheContent) {
    repository.commitFile("a b", "1\n");
    repository.write("a b", "2\n");
    std::filesystem::permissions(repository.path("a b"), std::filesystem::perms::owner_exec,
                                 std::filesystem::perm_options::add);
    EXPECT_THAT(answering({"stage", "-p"}, "n\ny\n").output,
                HasSubstr("old mode 100644\nnew mode 100755\n--- a/a b\t\n+++ b/a b\t\n"
                          "(1/2) Stage this change of the mode [y,n,q,a,d,j,J,g,/,?]?"));
    EXPECT_THAT(repository.git({"ls-files", "--stage"}), HasSubstr("100644"));
    EXPECT_EQ(content("a b"), "2\n");
    stage("y\n");
    EXPECT_THAT(repository.git({"ls-files", "--stage"}), HasSubstr("100755"));
    unstage("y\nn\n");
    EXPECT_THAT(repository.git({"ls-files", "--stage"}), HasSubstr("100644"));
    EXPECT_EQ(content("a b"), "2\n");
}

TEST_F(HunkDialogue, AsksOnceAboutAChangeOfTheType) {
    repository.commitFile("a", "1\n");
    std::filesystem::remove(repository.path("a"));
    std::filesystem::create_symlink("target", repository.path("a"));
    EXPECT_THAT(answering({"stage", "-p"}, "y\n").output,
                HasSubstr("(1/1) Stage this change of the type"));
    EXPECT_EQ(state(), "T  a\n");
    unstage("y\n");
    EXPECT_EQ(state(), " T a\n");
}

TEST_F(HunkDialogue, UnstagesARenameAndItsHunksOneByOne) {
    repository.commitFile("old", numberedLines({}));
    std::filesystem::remove(repository.path("old"));
    repository.write("new", numberedLines({3, 20}));
    repository.git({"add", "--all"});
    EXPECT_THAT(answering({"unstage", "-p"}, "n\ny\nn\n").output,
                HasSubstr("rename from old\nrename to new\n--- a/old\n+++ b/new\n"
                          "(1/3) Unstage this rename"));
    EXPECT_EQ(content("new"), numberedLines({20}));
    unstage("y\nn\n");
    EXPECT_EQ(content("old"), numberedLines({20}));
    EXPECT_EQ(state(), "MD old\n?? new\n");
}

TEST_F(HunkDialogue, KeepsAMissingLineEnd) {
    repository.commitFile("a", numberedLines({}) + "last");
    repository.write("a", numberedLines({3}) + "last\nmore");
    stage("n\ny\n");
    EXPECT_EQ(content("a"), numberedLines({}) + "last\nmore");
    unstage("y\n");
    EXPECT_EQ(content("a"), numberedLines({}) + "last");
    repository.write("a", numberedLines({38}) + "last\n");
    stage("s\ny\nn\n");
    EXPECT_EQ(content("a"), numberedLines({38}) + "last");
    repository.git({"add", "a"});
    unstage("s\ny\nn\n");
    EXPECT_EQ(content("a"), numberedLines({}) + "last\n");
}

TEST_F(HunkDialogue, KeepsEveryByteOfNamesAndLines) {
    for (const char* name :
         {"blank name", "latin1 \xe4", "quote\"\\\t", "line\nend", "-x", "[a]*"}) {
        repository.commitFile(name, "1\r\n\xff\n\n3\n");
        repository.write(name, "1\r\n\xfe\r\n\n3\n");
        const NebscOutcome outcome = answering({"stage", "-p"}, "y\n");
        EXPECT_EQ(outcome.errors, "");
        EXPECT_EQ(content(name), "1\r\n\xfe\r\n\n3\n") << name;
        unstage("y\n");
        EXPECT_EQ(content(name), "1\r\n\xff\n\n3\n") << name;
        repository.git({"checkout", "--quiet", "."});
    }
}

TEST_F(HunkDialogue, NamesFilesThatGitDoesNotKnow) {
    repository.write("new", "1\n");
    for (const char* name : {"nosuch", "new"}) {
        const NebscOutcome outcome = answering({"stage", "-p", name}, "y\n");
        EXPECT_EQ(outcome.output, "");
        EXPECT_THAT(outcome.errors, HasSubstr("git does not track it"));
        EXPECT_EQ(outcome.exitStatus, 1);
    }
    repository.commitFile("clean", "1\n");
    EXPECT_EQ(answering({"stage", "-p", "clean"}, "").output, "No changes.\n");
}

TEST_F(HunkDialogue, LeavesOutBinaryFilesAndConflicts) {
    repository.commitFile("image", std::string("\0\1", 2));
    repository.write("image", std::string("\0\2", 2));
    const NebscOutcome outcome = answering({"stage", "-p"}, "y\n");
    EXPECT_EQ(outcome.output, "No changes.\n");
    EXPECT_EQ(outcome.errors,
              "'image' is binary and was left out; 'nebsc stage' takes the whole file.\n");
    EXPECT_EQ(outcome.exitStatus, 0);
    repository.git({"checkout", "--quiet", "image"});
    repository.commitFile("a", "1\n");
    repository.git({"checkout", "--quiet", "-b", "topic"});
    repository.commitFile("a", "2\n");
    repository.git({"checkout", "--quiet", "main"});
    repository.commitFile("a", "3\n");
    EXPECT_NE(repository.gitStatus({"merge", "--quiet", "topic"}), 0);
    const NebscOutcome conflict = answering({"stage", "-p"}, "y\n");
    EXPECT_EQ(conflict.output, "No changes.\n");
    EXPECT_EQ(conflict.errors, "'a' is in conflict and was left out.\n");
    EXPECT_EQ(state(), "UU a\n");
    repository.write("src/b", "1\n");
    repository.git({"add", "--intent-to-add", "src/b"});
    const NebscOutcome elsewhere = answering({"stage", "-p", "src"}, "n\n");
    EXPECT_THAT(elsewhere.output, HasSubstr("Stage this new file"));
    EXPECT_EQ(elsewhere.errors, "");
}

/// Otherwise, the versions of a file in conflict would be offered as changes.
TEST_F(HunkDialogue, NeedsToKnowTheConflicts) {
    repository.commitFile("a", "1\n");
    repository.write("a", "2\n");
    const StandInGit git(repository.path(),
                         "case \"$*\" in *--diff-filter=U*) echo 'fatal: broken' >&2; exit 128;; "
                         "esac; exec /usr/bin/git \"$@\"");
    const NebscOutcome outcome = runNebsc(
        {"stage", "-p"}, {.folder = repository.path(), .input = "y\n", .variables = {git.path()}});
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.errors, HasSubstr("broken"));
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(content("a"), "1\n");
}

TEST_F(HunkDialogue, LimitsTheQuestionsToFiles) {
    for (const char* name : {"src/a", "b"}) {
        repository.commitFile(name, "1\n");
        repository.write(name, "2\n");
    }
    const NebscOutcome outcome =
        runNebsc({"stage", "-p", "."}, {.folder = repository.path("src"), .input = "a\na\n"});
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(state(), " M b\nM  src/a\n");
    for (const char* option : {"--all", "--force"}) {
        expectFailed(nebsc({"stage", "-p", option}), HasSubstr("cannot be combined with"), 2);
    }
}

TEST_F(HunkDialogue, IsIndependentOfSettings) {
    repository.commitFile("a", numberedLines({}));
    repository.write("a", numberedLines({10, 12}));
    for (const char* setting : {"diff.context", "diff.interHunkContext"}) {
        repository.git({"config", setting, "0"});
    }
    repository.git({"config", "diff.noprefix", "true"});
    repository.git({"config", "diff.suppressBlankEmpty", "true"});
    repository.git({"config", "apply.whitespace", "fix"});
    stage("s\nn\ny\n");
    EXPECT_EQ(content("a"), numberedLines({12}));
}

TEST_F(HunkDialogue, InterruptionChangesNothing) {
    repository.commitFile("a", numberedLines({}));
    repository.write("a", numberedLines({3, 20}));
    Nebsc nebsc({"stage", "-p"}, {.folder = repository.path(),
                                  .output = NebscOutput::pipe,
                                  .hasTerminalForErrors = true,
                                  .hasTerminalForInput = true});
    const auto awaitHunk = [&nebsc](std::string_view line) {
        while (nebsc.awaitLine().find(line) == std::string::npos) {
        }
    };
    awaitHunk("+++ b/a");
    nebsc.type("y\n");
    awaitHunk("@@ -17,7");
    nebsc.send(SIGINT);
    EXPECT_EQ(nebsc.outcome().exitStatus, 130);
    EXPECT_EQ(content("a"), numberedLines({}));
}

TEST_F(HunkDialogue, UnreadableHunksChangeNothing) {
    repository.commitFile("a", "1\n");
    repository.write("a", "2\n");
    const NebscOutcome outcome =
        runNebsc({"stage", "-p"},
                 {.folder = repository.path(), .input = "y\n", .output = NebscOutput::full});
    EXPECT_THAT(outcome.errors, HasSubstr("the changes could not be shown; nothing was changed"));
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(content("a"), "1\n");
}

TEST_F(HunkDialogue, AsksOnStandardErrorForJSON) {
    repository.commitFile("a", "1\n");
    repository.write("a", "2\n");
    const NebscOutcome outcome = answering({"stage", "-p", "--json"}, "y\n");
    EXPECT_THAT(outcome.errors, HasSubstr("+2\n(1/1) Stage this hunk"));
    EXPECT_EQ(outcome.json()["type"], 1005);
    EXPECT_EQ(content("a"), "2\n");
}

TEST_F(HunkDialogue, ColoursTheQuestions) {
    repository.commitFile("a", "1\n");
    repository.write("a", "2\n");
    EXPECT_THAT(
        answering({"stage", "-p", "--color=always"}, "q\n").output,
        HasSubstr("\x1b[32m+2\x1b[0m\n\x1b[1;34m(1/1) Stage this hunk [y,n,q,a,d,?]?\x1b[0m "));
}

}  // namespace
}  // namespace neb::test
