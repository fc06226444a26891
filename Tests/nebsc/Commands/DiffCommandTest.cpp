// `nebsc diff`, run as a program.

#include <filesystem>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using JSON = nlohmann::ordered_json;

class DiffCommand : public CommandTest {
protected:
    void SetUp() override {
        repository.commitFile("a.c", "1\n");
        repository.commitFile("src/grüße dir/b c.c", "one\ntwo\n");
    }
    [[nodiscard]] std::string onTerminal(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "diff");
        return runNebsc(arguments, {.folder = repository.path(),
                                    .variables = {{"TERM", "xterm"}, {"NO_COLOR", std::nullopt}},
                                    .output = NebscOutput::terminal})
            .output;
    }
};

TEST_F(DiffCommand, PrintsNothingWithoutChanges) {
    expectDone(nebsc({"diff"}));
    expectDone(nebsc({"diff", "--name-status", "HEAD", "HEAD"}));
}

TEST_F(DiffCommand, ShowsUncommittedChangesByDefault) {
    repository.write("a.c", "2\n");
    repository.git({"add", "a.c"});
    repository.write("src/grüße dir/b c.c", "one\n\tthree\r\n");
    const std::string patch = repository.git({"-c", "core.quotePath=false", "diff", "HEAD"});
    EXPECT_THAT(patch, HasSubstr("\n+\tthree\r\n"));
    expectDone(nebsc({"diff"}), patch);
    expectDone(nebsc({"diff"}, "src"), patch);
    expectDone(nebsc({"diff", "../a.c"}, "src"), repository.git({"diff", "HEAD", "--", "a.c"}));
    expectDone(nebsc({"diff", "HEAD~1", "a.c", "src"}),
               repository.git({"-c", "core.quotePath=false", "diff", "HEAD~1"}));
}

TEST_F(DiffCommand, ShowsNamesRelativeToTheCurrentFolder) {
    repository.git({"mv", "a.c", "src/new näme.c"});
    repository.git({"rm", "--quiet", "src/grüße dir/b c.c"});
    repository.write("z", "1");
    repository.git({"add", "z"});
    expectDone(nebsc({"diff", "--name-status"}, "src"),
               "deleted    grüße dir/b c.c\n"
               "renamed    ../a.c -> new näme.c\n"
               "added      ../z\n");
    expectDone(nebsc({"diff", "--name-status", "--", "z", "a.c"}),
               "deleted    a.c\nadded      z\n");
}

TEST_F(DiffCommand, ReportsFilesThatAreNotCompared) {
    repository.write("src/new.c", "1\n");
    repository.write("folder/new.c", "1\n");
    const auto expectSaid = [](const NebscOutcome& outcome, const std::string& errors) {
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors, errors);
        EXPECT_EQ(outcome.exitStatus, 0) << "as of git";
    };
    const std::string reason = " is untracked and was not compared; 'nebsc add' tracks it.\n";
    expectSaid(nebsc({"diff", "new.c"}, "src"), "'new.c'" + reason);
    expectSaid(nebsc({"diff", "--name-status", "HEAD~1", "--", "src/new.c", "folder"}),
               "'src/new.c'" + reason + "'folder'" + reason);
    expectSaid(nebsc({"diff", "--", "gone"}), "'gone' exists neither on disk nor in 'HEAD'.\n");
    expectSaid(nebsc({"diff", "a.c"}), "");
    expectSaid(nebsc({"diff", "src"}), "");
    EXPECT_EQ(nebsc({"diff", "--json", "src/new.c"}).errors, "");
    repository.git({"rm", "--quiet", "--cached", "a.c"});
    EXPECT_EQ(nebsc({"diff", "a.c"}).errors, "") << "it is shown as deleted";
}

TEST_F(DiffCommand, WorksInABareRepository) {
    repository.git({"clone", "--quiet", "--bare", ".", "../bare.git"});
    const auto inBare = [this](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "diff");
        return runNebsc(arguments, {.folder = repository.path("../bare.git")});
    };
    expectDone(inBare({"--name-status", "HEAD~1", "HEAD", "src"}),
               "added      src/grüße dir/b c.c\n");
    expectDone(inBare({"HEAD~1", "HEAD", "--", "a.c"}));
}

TEST_F(DiffCommand, KeepsBothQuotesOfAQuotedName) {
    repository.git({"mv", "a.c", "q't"});
    expectDone(nebsc({"diff", "--name-status"}), "renamed    a.c -> q't\n");
}

TEST_F(DiffCommand, ShowsUnusualNames) {
    repository.write("a -> b", "1\n");
    repository.write("lat\xE4", "2\n");
    repository.git({"add", "--all"});
    repository.git({"commit", "--quiet", "-m", "names"});
    repository.git({"mv", "a -> b", "src/b -> a"});
    repository.write("lat\xE4", "3\n");
    expectDone(nebsc({"diff", "--name-status"}),
               "modified   lat\\xe4\nrenamed    a -> b -> src/b -> a\n");
    repository.git({"mv", "lat\xE4", "new\n\xE4"});
    expectDone(nebsc({"diff", "--name-status", "HEAD", "--", "lat\xE4", "a -> b"}, ""),
               "deleted    a -> b\ndeleted    lat\\xe4\n");
}

TEST_F(DiffCommand, ANameWithAnArrowIsNoRename) {
    repository.write("100", "1");
    repository.git({"add", "100"});
    expectDone(nebsc({"diff", "--name-status"}), "added      100\n");
}

TEST_F(DiffCommand, ComparesTwoRevisions) {
    repository.git({"checkout", "--quiet", "-b", "topic"});
    repository.commitFile("t.c", "1\n");
    repository.git({"checkout", "--quiet", "main"});
    repository.commitFile("m.c", "of main\n");
    const std::string both = "deleted    m.c\nadded      t.c\n";
    expectDone(nebsc({"diff", "--name-status", "main", "topic"}), both);
    expectDone(nebsc({"diff", "--name-status", "main..topic"}), both);
    expectDone(nebsc({"diff", "--name-status", "..topic"}), both);
    expectDone(nebsc({"diff", "--name-status", "main", "topic", "--", "t.c", "src"}),
               "added      t.c\n");
    expectDone(nebsc({"diff", "--name-status", "--common-ancestor", "main", "topic"}),
               "added      t.c\n");
    expectDone(nebsc({"diff", "--name-status", "main...topic"}), "added      t.c\n");
}

TEST_F(DiffCommand, DashesSeparateRevisionsFromFiles) {
    repository.git({"branch", "both"});
    repository.write("both", "1");
    repository.git({"add", "both"});
    repository.write("a.c", "2\n");
    expectFailed(nebsc({"diff", "both"}), HasSubstr("'both' is both a revision and a file"));
    expectDone(nebsc({"diff", "--name-status", "--", "both"}), "added      both\n");
    expectDone(nebsc({"diff", "--name-status", "both", "--"}), "modified   a.c\nadded      both\n");
    expectFailed(nebsc({"diff", "main", "a.c", "both", "nosuch"}), HasSubstr("'nosuch'"));
}

TEST_F(DiffCommand, RevisionsMayHaveTheNamesOfFilesAtTheTop) {
    repository.git({"tag", "v1", "HEAD~1"});
    repository.git({"tag", "v2"});
    repository.commitFile("HEAD", "1");
    repository.commitFile("v1..v2", "1");
    repository.write("a.c", "2\n");
    expectDone(nebsc({"diff", "--name-status"}), "modified   a.c\n");
    expectDone(nebsc({"diff", "--name-status"}, "src"), "modified   ../a.c\n");
    expectDone(nebsc({"diff", "--name-status", "v1", "v2"}), "added      src/grüße dir/b c.c\n");
    expectDone(nebsc({"diff", "--name-status", "v1..v2", "--"}),
               "added      src/grüße dir/b c.c\n");
}

TEST_F(DiffCommand, RefusesANegatedRevision) {
    expectFailed(nebsc({"diff", "^HEAD"}), HasSubstr("'^HEAD' is neither a revision nor a file"));
    expectFailed(nebsc({"log", "^HEAD", "--"}), HasSubstr("unknown revision '^HEAD'"));
    expectFailed(nebsc({"blame", "^HEAD", "a.c"}), HasSubstr("unknown revision '^HEAD'"));
}

TEST_F(DiffCommand, FailsOutsideARepository) {
    const TemporaryFolder folder;
    folder.write("a", "1");
    folder.write("b", "2");
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"diff"}, {"diff", "a", "b"}, {"diff", "--", "a"}, {"log", "x"}, {"log", "HEAD"}}) {
        const NebscOutcome outcome = runNebsc(arguments, {.folder = folder.path()});
        EXPECT_THAT(outcome.errors,
                    testing::StartsWith("nebsc: the folder is not in a git repository"));
        EXPECT_EQ(outcome.exitStatus, 1);
    }
}

TEST_F(DiffCommand, ReportsALostCommit) {
    const std::string commit = repository.git({"rev-parse", "HEAD"}).substr(0, 40);
    std::filesystem::remove(
        repository.path(".git/objects/" + commit.substr(0, 2) + "/" + commit.substr(2)));
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"diff"}, {"log"}, {"ls"}, {"blame", "a.c"}, {"branch", "create", "x"}}) {
        const NebscOutcome outcome = nebsc(arguments);
        EXPECT_THAT(outcome.errors, testing::Not(HasSubstr("commits yet"))) << arguments[0];
        EXPECT_THAT(outcome.errors, testing::Not(HasSubstr("commit yet"))) << arguments[0];
        EXPECT_EQ(outcome.exitStatus, 1) << arguments[0];
    }
}

TEST_F(DiffCommand, ReportsWhatCannotBeCompared) {
    expectFailed(nebsc({"diff", "nosuch"}), HasSubstr("'nosuch' is neither a revision nor a file"));
    expectFailed(nebsc({"diff", "HEAD", "HEAD", "HEAD"}), HasSubstr("at most two revisions"), 2);
    expectFailed(nebsc({"diff", "--common-ancestor", "HEAD"}), HasSubstr("requires two revisions"),
                 2);
    expectFailed(nebsc({"diff", "--cached"}), HasSubstr("--cached"), 2);
    expectFailed(nebsc({"diff", ""}), HasSubstr("argument 'REVISION' must not be empty"), 2);
    const TestRepository empty;
    expectDone(runNebsc({"diff"}, {.folder = empty.path()}));
    expectFailed(runNebsc({"diff", "HEAD"}, {.folder = empty.path()}),
                 HasSubstr("does not have any commits yet"));
    EXPECT_EQ(
        runNebsc({"diff", "--json", "HEAD"}, {.folder = empty.path()}).json()["error"]["class"],
        "no-commits-yet");
    const TemporaryFolder folder;
    expectFailed(runNebsc({"diff"}, {.folder = folder.path()}), HasSubstr("ot a git repository"));
}

TEST_F(DiffCommand, EscapesControlCharactersOnATerminal) {
    repository.write("a.c", "\x1b[31m\x07\xE4\n");
    EXPECT_THAT(onTerminal({}), HasSubstr("+\\x1b[31m\\x07\xEF\xBF\xBD"));
}

TEST_F(DiffCommand, PrintsGitsPatchUnchangedToAProgram) {
    repository.write("a.c", "\x1b[31m\x07\n");
    const std::string patch = nebsc({"diff"}).output;
    EXPECT_EQ(patch, repository.git({"diff", "HEAD"}));
    repository.git({"checkout", "--quiet", "a.c"});
    repository.gitWithInput({"apply"}, patch);
    EXPECT_EQ(repository.git({"diff", "HEAD"}), patch);
}

TEST_F(DiffCommand, KeepsTheBytesOfAnotherEncodingForAProgram) {
    repository.write("a.c", "gr\xFCn\n");
    const std::string patch = nebsc({"diff", "HEAD", "--", "a.c"}).output;
    EXPECT_THAT(patch, HasSubstr("+gr\xFCn\n"));
    EXPECT_EQ(patch, repository.git({"diff", "HEAD"}));
    repository.git({"checkout", "--quiet", "a.c"});
    repository.gitWithInput({"apply"}, patch);
    EXPECT_EQ(repository.git({"diff", "HEAD"}), patch);
}

TEST_F(DiffCommand, JSONPrintsOnlyTheOutcome) {
    repository.write("a.c", "2\n");
    const NebscOutcome outcome = nebsc({"diff", "--json", "../a.c"}, "src");
    const JSON json = outcome.json();
    EXPECT_EQ(json["type"], NEBSourceControlRequestDiff);
    EXPECT_EQ(json["command"]["arguments"],
              JSON({"diff", "--no-ext-diff", "HEAD", "--", repository.path("a.c")}));
    EXPECT_THAT(json["result"][0]["NEBSourceControlOperationContentKey"].get<std::string>(),
                HasSubstr("\n-1\n+2\n"));
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_TRUE(nebsc({"diff", "--json", "HEAD", "HEAD"}).json()["result"].is_null());
}

TEST_F(DiffCommand, UsesColoursOnATerminal) {
    repository.commitFile("x", "int f()\n{\n1\n2\n3\n-- old\n4\n", "x");
    repository.write("x", "int f()\n{\n1\n2\n3\n++ new\n4");
    EXPECT_THAT(onTerminal({}),
                testing::EndsWith("\x1b[1m--- a/x\x1b[0m\r\n\x1b[1m+++ b/x\x1b[0m\r\n"
                                  "\x1b[36m@@ -3,5 +3,5 @@\x1b[0m int f()\r\n"
                                  " 1\r\n 2\r\n 3\r\n"
                                  "\x1b[31m--- old\x1b[0m\r\n\x1b[31m-4\x1b[0m\r\n"
                                  "\x1b[32m+++ new\x1b[0m\r\n\x1b[32m+4\x1b[0m\r\n"
                                  "\\ No newline at end of file\r\n"));
    EXPECT_EQ(onTerminal({"--name-status"}), "\x1b[33mmodified\x1b[0m   x\r\n");
    repository.write("x", std::string("\0\n", 2));
    EXPECT_THAT(onTerminal({}),
                testing::EndsWith("\x1b[0m\r\nBinary files a/x and b/x differ\r\n"));
}

// ---- the index, and counts of lines -----------------------------------------------------------

class DiffOfIndex : public CommandTest {
protected:
    DiffOfIndex() {
        repository.commitFile("a.c", "1\n2\n3\n");
        repository.commitFile("old.c", "the\nsame\nlines\nhere\n");
        repository.commitFile("b\xE4r", std::string("\0binary", 7));
        repository.write("a.c", "1\nstaged\n");
        repository.git({"mv", "old.c", "new.c"});
        repository.write("b\xE4r", std::string("\0other", 6));
        repository.git({"add", "."});
        repository.write("a.c", "not staged\n");
    }
};

TEST_F(DiffOfIndex, ShowsWhatTheNextCommitChanges) {
    expectDone(nebsc({"diff", "--staged"}),
               repository.git({"-c", "core.quotePath=false", "diff", "--cached"}));
    expectDone(nebsc({"diff", "--staged", "a.c"}), repository.git({"diff", "--cached", "a.c"}));
    expectDone(nebsc({"diff", "--staged", "HEAD~2", "a.c"}),
               repository.git({"diff", "--cached", "HEAD~2", "--", "a.c"}));
    expectDone(nebsc({"diff", "--staged", "--name-status", "a.c"}), "modified   a.c\n");
    const auto json = nebsc({"diff", "--staged", "--json"}).json();
    EXPECT_EQ(json["type"], NEBSourceControlRequestChanges);
    EXPECT_EQ(json["result"].size(), 3U);
    expectFailed(nebsc({"diff", "--staged", "HEAD~1", "HEAD"}),
                 testing::HasSubstr("cannot be combined with two revisions"), 2);
}

TEST_F(DiffOfIndex, CountsLines) {
    expectDone(nebsc({"diff", "--stat", "--staged"}),
               "     +1     -2  a.c\n"
               " binary         b\\xe4r\n"
               "     +0     -0  old.c -> new.c\n"
               "3 files changed, 1 line added, 2 deleted\n");
    expectDone(nebsc({"diff", "--stat", "a.c"}),
               "     +1     -3  a.c\n1 file changed, 1 line added, 3 deleted\n");
    expectDone(nebsc({"diff", "--stat", "HEAD~2", "HEAD~1"}),
               "     +4     -0  old.c\n1 file changed, 4 lines added, 0 deleted\n");
    expectDone(nebsc({"diff", "--stat", "HEAD", "HEAD"}));
    const auto json = nebsc({"diff", "--stat", "--json", "HEAD~2", "HEAD~1"}).json();
    EXPECT_EQ(json["result"][0]["NEBSourceControlOperationAddedLinesKey"], 4);
    expectFailed(nebsc({"diff", "--stat", "--name-status"}),
                 testing::HasSubstr("cannot be combined with '--name-status'"), 2);
}

TEST_F(DiffOfIndex, BeforeTheFirstCommitEverythingIsAdded) {
    const TestRepository unborn;
    unborn.write("new.c", "1\n2\n");
    unborn.git({"add", "new.c"});
    expectDone(runNebsc({"diff", "--staged", "--stat"}, {.folder = unborn.path()}),
               "     +2     -0  new.c\n1 file changed, 2 lines added, 0 deleted\n");
    expectDone(runNebsc({"diff", "--staged"}, {.folder = unborn.path()}),
               unborn.git({"diff", "--cached"}));
    unborn.write("new.c", "1\n2\n3\n");
    for (const char* format : {"sha1", "sha256"}) {
        SCOPED_TRACE(format);
        expectDone(runNebsc({"diff", "--stat"}, {.folder = unborn.path()}),
                   "     +3     -0  new.c\n1 file changed, 3 lines added, 0 deleted\n");
        const NebscOutcome json = runNebsc({"diff", "--json"}, {.folder = unborn.path()});
        EXPECT_THAT(json.json()["result"][0].dump(), testing::HasSubstr("+3"));
        EXPECT_EQ(runNebsc({"diff", "--", "nosuch"}, {.folder = unborn.path()}).errors,
                  "'nosuch' exists neither on disk nor in the index.\n");
        std::filesystem::remove_all(unborn.path(".git"));
        unborn.git({"init", "-q", "--object-format=sha256"});
        unborn.git({"add", "new.c"});
    }
}

}  // namespace
}  // namespace neb::test
