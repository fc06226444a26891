// `nebsc add`, `rm` and `revert`, run as a program.

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;
using JSON = nlohmann::ordered_json;

class FileCommands : public CommandTest {
protected:
    void SetUp() override {
        for (const char* name : {"a.c", "b.c", "src/deep.c", "Grüße.txt", "with blank.c", "x[1].c",
                                 "x1.c", "-dash.c"}) {
            repository.commitFile(name, "first\n");
        }
    }
    void change(std::initializer_list<const char*> names) const {
        for (const char* name : names) {
            repository.write(name, "second\n");
        }
    }
};

// ---- add --------------------------------------------------------------------------------------

TEST_F(FileCommands, AddStagesOnlyTheNamedFiles) {
    change({"a.c", "b.c", "Grüße.txt", "with blank.c"});
    expectDone(nebsc({"add", "a.c", "Grüße.txt", "with blank.c"}));
    EXPECT_EQ(state(), "M  Grüße.txt\nM  a.c\n M b.c\nM  \"with blank.c\"\n");
}

TEST_F(FileCommands, AddOfAFolderStagesEverythingInIt) {
    change({"a.c", "src/new/x.c"});
    fs::remove(repository.path("src/deep.c"));
    expectDone(nebsc({"add", "."}, "src"));
    EXPECT_EQ(state(), " M a.c\nD  src/deep.c\nA  src/new/x.c\n");
    expectDone(nebsc({"add", "."}));
    EXPECT_EQ(state(), "M  a.c\nD  src/deep.c\nA  src/new/x.c\n");
}

TEST_F(FileCommands, AddTakesPathsRelativeToTheCurrentFolder) {
    change({"a.c", "b.c", "src/deep.c"});
    expectDone(nebsc({"add", "../a.c", "deep.c", repository.path("b.c")}, "src"));
    EXPECT_EQ(state(), "M  a.c\nM  b.c\nM  src/deep.c\n");
}

TEST_F(FileCommands, AddTakesNamesLiterally) {
    change({"x[1].c", "x1.c", "-dash.c"});
    expectDone(nebsc({"add", "x[1].c", "--", "-dash.c"}));
    EXPECT_EQ(state(), "M  -dash.c\n M x1.c\nM  x[1].c\n");
    repository.write("[a]", "");
    repository.write("[b,c]", "");
    expectDone(nebsc({"add", "[a]", "[b,c]"}));
    EXPECT_THAT(state(), HasSubstr("A  [a]\nA  [b,c]\n"));
}

TEST_F(FileCommands, AddStagesASymbolicLinkItself) {
    fs::create_symlink("nowhere", repository.path("link"));
    expectDone(nebsc({"add", "link"}));
    EXPECT_EQ(state(), "A  link\n");
}

TEST_F(FileCommands, AddOfAMissingFileStagesNothing) {
    change({"a.c"});
    expectFailed(nebsc({"add", "a.c", "nosuch.c"}),
                 testing::AllOf(StartsWith("nebsc: "), HasSubstr("nosuch.c")));
    EXPECT_EQ(state(), " M a.c\n");
}

TEST_F(FileCommands, AddRefusesAPathOutsideTheWorkingCopy) {
    expectFailed(nebsc({"add", "/etc/passwd"}), HasSubstr("outside repository"));
}

TEST_F(FileCommands, AddWithJSONPrintsOnlyTheOutcome) {
    change({"src/deep.c"});
    const NebscOutcome outcome = nebsc({"add", "--json", "deep.c"}, "src");
    const JSON json = outcome.json();
    EXPECT_EQ(json["type"], NEBSourceControlRequestAddFiles);
    EXPECT_EQ(json["command"]["arguments"], JSON({"add", "--", repository.path("src/deep.c")}));
    EXPECT_EQ(json["command"]["currentDirectoryPath"], repository.path());
    EXPECT_TRUE(json["error"].is_null());
    EXPECT_EQ(outcome.errors, "");
    const NebscOutcome failed = nebsc({"--json", "add", "nosuch"});
    EXPECT_EQ(failed.json()["error"]["class"], "path-unknown");
    EXPECT_THAT(failed.errors, HasSubstr("nosuch"));
    EXPECT_EQ(failed.exitStatus, 1);
}

TEST_F(FileCommands, ReportMissingArguments) {
    for (const char* command : {"add", "rm", "revert"}) {
        expectFailed(nebsc({command}), HasSubstr("FILE"), 2);
        expectFailed(nebsc({command, "a.c", ""}), HasSubstr("argument 'FILE' must not be empty"),
                     2);
    }
}

TEST_F(FileCommands, FailsOutsideARepository) {
    const TemporaryFolder folder;
    folder.write("a.c", "");
    for (const char* command : {"add", "rm", "revert"}) {
        expectFailed(runNebsc({command, "a.c"}, {.folder = folder.path()}),
                     StartsWith("nebsc: the folder is not in a git repository"));
    }
    expectFailed(runNebsc({"rm", "--force", "a.c"}, {.folder = folder.path()}),
                 StartsWith("nebsc: the folder is not in a git repository"));
    EXPECT_EQ(folder.read("a.c"), "");
}

TEST_F(FileCommands, ASilentGitFailureIsAnError) {
    const StandInGit git(repository.path(), "exit 128");
    for (const char* command : {"add", "rm", "revert"}) {
        expectFailed(nebsc({command, "a.c"}, git),
                     "nebsc: git exited with status 128 and printed nothing\n");
    }
    const NebscOutcome json = nebsc({"add", "--json", "a.c"}, git);
    EXPECT_EQ(json.json()["commands"][0]["terminationStatus"], 128);
    EXPECT_EQ(json.errors, "nebsc: git exited with status 128 and printed nothing\n");
    EXPECT_EQ(json.exitStatus, 1);
}

// ---- rm ---------------------------------------------------------------------------------------

TEST_F(FileCommands, RemoveDeletesFilesAndFolders) {
    expectDone(nebsc({"rm", "a.c", "src", "x[1].c"}));
    EXPECT_FALSE(isThere("a.c") || isThere("src") || isThere("x[1].c"));
    EXPECT_TRUE(isThere("x1.c"));
    EXPECT_EQ(state(), "D  a.c\nD  src/deep.c\nD  x[1].c\n");
}

TEST_F(FileCommands, RemoveOfASymbolicLinkKeepsItsTarget) {
    fs::create_symlink("src", repository.path("link"));
    repository.git({"add", "link"});
    repository.git({"commit", "--quiet", "-m", "a link"});
    expectDone(nebsc({"rm", "link/"}));
    EXPECT_EQ(state(), "D  link\n");
    EXPECT_TRUE(isThere("src/deep.c"));
}

TEST_F(FileCommands, RemoveAcceptsDeletedFiles) {
    fs::remove(repository.path("a.c"));
    expectDone(nebsc({"rm", "a.c"}));
    EXPECT_EQ(state(), "D  a.c\n");
}

TEST_F(FileCommands, RemoveRefusesToLoseChanges) {
    change({"a.c", "src/deep.c", "x1.c", "staged.c"});
    repository.git({"add", "staged.c"});
    expectFailed(nebsc({"rm", "../a.c", ".", "../b.c", "../x[1].c", "../staged.c"}, "src"),
                 "nebsc: nothing was deleted, because uncommitted changes would be lost:\n"
                 "    ../a.c\n"
                 "    deep.c\n"
                 "    ../staged.c\n"
                 "'nebsc rm --force' deletes the files anyway.\n");
    EXPECT_EQ(state(), " M a.c\n M src/deep.c\nA  staged.c\n M x1.c\n");
}

TEST_F(FileCommands, RemoveRefusesToLoseStagedChanges) {
    change({"a.c", "new.c"});
    repository.git({"add", "a.c", "new.c"});
    fs::remove(repository.path("a.c"));
    fs::remove(repository.path("new.c"));
    expectFailed(nebsc({"rm", "a.c", "new.c"}), HasSubstr("    a.c\n    new.c\n"));
}

TEST_F(FileCommands, RemoveWithForceDiscardsChanges) {
    change({"a.c", "new.c"});
    repository.git({"add", "new.c"});
    expectDone(nebsc({"rm", "--force", "a.c", "new.c"}));
    EXPECT_FALSE(isThere("a.c") || isThere("new.c"));
    EXPECT_EQ(state(), "D  a.c\n");
}

TEST_F(FileCommands, RemoveKeepsUntrackedFiles) {
    change({"src/mine.c"});
    expectDone(nebsc({"rm", "src"}));
    EXPECT_TRUE(isThere("src/mine.c"));
    expectFailed(nebsc({"rm", "src/mine.c"}), HasSubstr("src/mine.c"));
    EXPECT_TRUE(isThere("src/mine.c"));
}

TEST_F(FileCommands, RemoveFindsChangesOfFilesWithUnusualNames) {
    repository.commitFile("quo\"te\\\t.c", "first\n");
    repository.write("quo\"te\\\t.c", "second\n");
    expectFailed(nebsc({"rm", "quo\"te\\\t.c"}), HasSubstr("\n    quo\"te\\\\t.c\n"));
    EXPECT_TRUE(isThere("quo\"te\\\t.c"));
}

TEST_F(FileCommands, RemoveDeletesNothingIfItsCheckFails) {
    const StandInGit git(repository.path(),
                         "[ \"$2\" = status ] && { echo 'fatal: no look' >&2; exit 128; }\n"
                         "exec /usr/bin/env false");
    expectFailed(nebsc({"rm", "a.c"}, git), "nebsc: no look\n");
    EXPECT_TRUE(isThere("a.c"));
}

// ---- revert -----------------------------------------------------------------------------------

TEST_F(FileCommands, RevertDiscardsUnstagedChanges) {
    change({"a.c", "b.c", "src/deep.c", "x[1].c", "x1.c"});
    expectDone(nebsc({"revert", "../a.c", ".", "../x[1].c"}, "src"));
    EXPECT_EQ(state(), " M b.c\n M x1.c\n");
}

TEST_F(FileCommands, RevertKeepsStagedChanges) {
    change({"a.c"});
    repository.git({"add", "a.c"});
    repository.write("a.c", "third\n");
    expectDone(nebsc({"revert", "a.c"}));
    EXPECT_EQ(state(), "M  a.c\n");
}

TEST_F(FileCommands, RevertRefusesAnUntrackedFile) {
    repository.write("mine.c", "");
    expectFailed(nebsc({"revert", "mine.c"}), HasSubstr("mine.c"));
}

TEST_F(FileCommands, RevertListsFilesInConflict) {
    repository.git({"checkout", "--quiet", "-b", "topic"});
    repository.commitFile("src/deep.c", "topic\n");
    repository.git({"checkout", "--quiet", "main"});
    repository.commitFile("src/deep.c", "main\n");
    EXPECT_EQ(repository.gitStatus({"merge", "topic"}), 1);
    change({"a.c"});
    expectFailed(nebsc({"revert", "deep.c", "../a.c"}, "src"),
                 "nebsc: files with conflicts were left unchanged\nResolve the conflicts, then "
                 "mark the files with 'git add'.\n"
                 "    warning: path 'src/deep.c' is unmerged\n");
    EXPECT_EQ(state(), "UU src/deep.c\n");
    expectDone(nebsc({"revert", "a.c"}));
    const NebscOutcome json = nebsc({"revert", "--json", "src/deep.c"});
    EXPECT_EQ(json.json()["type"], NEBSourceControlRequestRevert);
    EXPECT_EQ(json.exitStatus, 1);
}

// ---- missing files ----------------------------------------------------------------------------

TEST_F(FileCommands, ReportMissingAndUntrackedFiles) {
    repository.write("src/untracked.c", "1\n");
    for (const char* command : {"add", "rm", "revert"}) {
        expectFailed(nebsc({command, "nosuch.c"}, "src"),
                     "nebsc: the file or folder 'nosuch.c' does not exist\n");
    }
    for (const char* command : {"rm", "revert"}) {
        expectFailed(nebsc({command, "untracked.c"}, "src"),
                     "nebsc: 'untracked.c' is not tracked by git\n");
    }
    EXPECT_EQ(nebsc({"add", "--json", "nosuch.c"}).json()["error"]["class"], "path-unknown");
    EXPECT_TRUE(isThere("src/untracked.c"));
}

}  // namespace
}  // namespace neb::test
