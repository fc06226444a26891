// `nebsc ls`, run as a program.

#include <filesystem>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using JSON = nlohmann::ordered_json;

class ListCommand : public CommandTest {
protected:
    void SetUp() override {
        repository.write("top.c", "");
        repository.write("src/a b.c", "");
        repository.write("src/grüße/x", "");
        repository.write("src/.hidden", "");
        repository.git({"add", "."});
        repository.git({"commit", "--quiet", "-m", "all"});
        repository.write("src/untracked", "");
    }
};

TEST_F(ListCommand, MarksFolders) {
    expectDone(nebsc({"ls", "src"}), ".hidden\na b.c\ngrüße/\n");
    expectDone(nebsc({"ls", "grüße/"}, "src"), "x\n");
    expectDone(nebsc({"ls"}, "src"), ".hidden\na b.c\ngrüße/\n");
    expectDone(nebsc({"ls", repository.path("src")}), ".hidden\na b.c\ngrüße/\n");
}

TEST_F(ListCommand, ListsTheTop) {
    for (const char* top : {".", "src/.."}) {
        expectDone(nebsc({"ls", top}), "src/\ntop.c\n");
    }
    expectDone(nebsc({"ls"}), "src/\ntop.c\n");
    expectDone(nebsc({"ls", ".."}, "src"), "src/\ntop.c\n");
    expectDone(nebsc({"ls", repository.path()}, "src"), "src/\ntop.c\n");
}

TEST_F(ListCommand, TakesFolderNamesLiterally) {
    const TemporaryFolder elsewhere;
    const std::string names[] = {"a b",           "a*",      "a?b",          "[ab]", "a\\b", "-l",
                                 "$(touch oops)", "~",       "a;touch oops", "'",    "a\nb", "ab",
                                 "a\tb",          "[[:x:]]", "{a,b}"};
    for (const std::string& name : names) {
        repository.write(name + "/in " + name, "");
    }
    repository.git({"add", "."});
    repository.git({"commit", "--quiet", "-m", "names"});
    for (const std::string& name : names) {
        const NebscOutcome outcome = nebsc({"ls", "--json", "./" + name});
        const JSON json = outcome.json();
        ASSERT_EQ(json["result"].size(), 1U) << name << outcome.output;
        EXPECT_EQ(json["result"][0]["NEBSourceControlOperationNameKey"], "in " + name);
    }
    EXPECT_FALSE(isThere("oops"));
    expectDone(nebsc({"ls", "--", "-l"}), "in -l\n");
}

TEST_F(ListCommand, ListsATopWithABlankInItsName) {
    const TemporaryFolder folder;
    const std::string top = folder.path("a top [x]");
    repository.git({"clone", "--quiet", repository.path(), top});
    expectDone(runNebsc({"ls"}, {.folder = top}), "src/\ntop.c\n");
    expectDone(runNebsc({"ls", top + "/src"}, {.folder = top}), ".hidden\na b.c\ngrüße/\n");
}

TEST_F(ListCommand, ReportsAPathThatIsNoFolder) {
    expectFailed(nebsc({"ls", "nosuch"}),
                 "nebsc: the folder 'nosuch' exists neither on disk nor in the latest commit\n");
    fs::create_directory(repository.path("new"));
    expectFailed(nebsc({"ls", "new"}), "nebsc: 'new' is on disk but not in the latest commit\n");
    expectFailed(nebsc({"ls", "top.c"}),
                 "nebsc: 'top.c' is not a folder in the latest commit but a file\n");
    const NebscOutcome json = nebsc({"ls", "--json", "nosuch"});
    EXPECT_EQ(json.json()["result"], nullptr);
    EXPECT_EQ(json.json()["error"]["class"], "path-unknown");
    EXPECT_EQ(json.exitStatus, 1);
}

TEST_F(ListCommand, ListsNamesThatAreNotOnDisk) {
    fs::remove_all(repository.path("src"));
    expectDone(nebsc({"ls", "src"}), ".hidden\na b.c\ngrüße/\n");
    expectDone(nebsc({"ls", "src/grüße"}), "x\n");
    expectDone(nebsc({"ls"}), "src/\ntop.c\n");
}

TEST_F(ListCommand, ReportsAnEmptyCommit) {
    repository.git({"rm", "--quiet", "-r", "."});
    repository.git({"commit", "--quiet", "-m", "nothing"});
    const NebscOutcome outcome = nebsc({"ls"});
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "'.' is empty in the latest commit.\n");
    EXPECT_EQ(outcome.exitStatus, 0);
}

TEST_F(ListCommand, ListsVeryManyNames) {
    constexpr std::size_t count = 40'000;
    std::string index;
    const std::string blob = repository.git({"rev-parse", "HEAD:top.c"}).substr(0, 40);
    for (std::size_t i = 0; i < count; ++i) {
        index += "100644 " + blob + "\tlarge/a file with quite a long name, number " +
                 std::to_string(i) + "\n";
    }
    repository.write(".git/new-index", index);
    ASSERT_EQ(runProgram("/bin/sh", {"-c", "git update-index --index-info < .git/new-index"},
                         {.folder = repository.path()})
                  .exitStatus,
              0);
    repository.git({"commit", "--quiet", "-m", "large"});
    const NebscOutcome outcome = nebsc({"ls", "large"});
    EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'), count);
    EXPECT_EQ(nebsc({"ls", "--json", "large"}).json()["result"].size(), count);
}

TEST_F(ListCommand, WorksInABareRepository) {
    const TemporaryFolder folder;
    const std::string bare = folder.path("bare.git");
    repository.git({"clone", "--quiet", "--bare", ".", bare});
    expectDone(runNebsc({"ls"}, {.folder = bare}), "src/\ntop.c\n");
    expectDone(runNebsc({"ls", "src/grüße"}, {.folder = bare}), "x\n");
    expectFailed(runNebsc({"ls", "nosuch"}, {.folder = bare}),
                 "nebsc: the folder 'nosuch' does not exist in the latest commit\n");
    expectFailed(runNebsc({"ls", ".."}, {.folder = bare}),
                 HasSubstr("is outside the repository '" + bare + "'"));
}

TEST_F(ListCommand, ReportsAMissingRootTree) {
    repository.commitFile("a.c", "int a;\n");
    const std::string tree = repository.git({"rev-parse", "HEAD^{tree}"});
    std::filesystem::remove(
        repository.path(".git/objects/" + tree.substr(0, 2) + "/" + tree.substr(2, 38)));
    const NebscOutcome outcome = nebsc({"ls"});
    expectFailed(outcome, HasSubstr("nebsc: objects of the repository are missing or damaged\n"));
    EXPECT_THAT(outcome.errors, HasSubstr(tree.substr(0, 40)));
    EXPECT_EQ(nebsc({"ls", "--json"}).json()["error"]["class"], "objects-damaged");
}

TEST_F(ListCommand, ReportsFailures) {
    expectFailed(nebsc({"ls", "/"}), HasSubstr("'/' is outside the working copy"));
    expectFailed(nebsc({"ls", ""}), HasSubstr("argument 'DIR' must not be empty"), 2);
    const TestRepository empty;
    expectFailed(runNebsc({"ls"}, {.folder = empty.path()}),
                 "nebsc: the current branch 'main' does not have any commits yet\n");
    EXPECT_EQ(runNebsc({"ls", "--json"}, {.folder = empty.path()}).exitStatus, 1);
    const TemporaryFolder folder;
    expectFailed(runNebsc({"ls"}, {.folder = folder.path()}),
                 testing::StartsWith("nebsc: the folder is not in a git repository"));
}

TEST_F(ListCommand, MarksSubmodules) {
    repository.git({"submodule", "--quiet", "add", repository.path(), "sub"});
    repository.git({"commit", "--quiet", "-m", "submodule"});
    expectDone(nebsc({"ls"}), ".gitmodules\nsrc/\nsub/\ntop.c\n");
    expectFailed(nebsc({"ls", "sub"}),
                 "nebsc: 'sub' is not a folder in the latest commit but a submodule\n");
}

TEST_F(ListCommand, ListsNamesThatAreNotUTF8) {
    repository.commitFile("l\xE9/\xE4\x1b[2J.c", "1\n");
    expectDone(nebsc({"ls"}), "l\\xe9/\nsrc/\ntop.c\n");
    expectDone(nebsc({"ls", "l\xE9"}), "\\xe4\\x1b[2J.c\n");
    const JSON records = nebsc({"ls", "--json", "l\xE9"}).json()["result"];
    EXPECT_EQ(records[0]["NEBSourceControlOperationNameKey"], R"("\344\033[2J.c")");
}

TEST_F(ListCommand, JSONPrintsOnlyTheOutcome) {
    const NebscOutcome outcome = nebsc({"ls", "--json"}, "src");
    const JSON json = outcome.json();
    EXPECT_EQ(json["type"], NEBSourceControlRequestList);
    EXPECT_EQ(json["operation"], "TreeQuery");
    EXPECT_EQ(json["command"]["arguments"], JSON({"ls-tree", "--full-tree", "-z", "HEAD:src"}));
    ASSERT_EQ(json["result"].size(), 3U);
    EXPECT_EQ(json["result"][2], JSON({{"NEBSourceControlOperationIsLeafKey", false},
                                       {"NEBSourceControlOperationNameKey", "grüße"}}));
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

// ---- a folder of any commit -------------------------------------------------------------------

TEST_F(ListCommand, ListsAFolderOfACommitWithSizes) {
    repository.git({"tag", "v1"});
    repository.commitFile("src/a b.c", "four");
    repository.git({"update-index", "--chmod=+x", "top.c"});
    repository.git({"commit", "--quiet", "-m", "executable"});
    const std::string old =
        "file                    0  .hidden\n"
        "file                    0  a b.c\n"
        "folder                     grüße/\n";
    expectDone(nebsc({"ls", "v1:src"}), old);
    expectDone(nebsc({"ls", "v1:src/"}, "src"), old);
    expectDone(nebsc({"ls", "v1:."}, "src"), old);
    expectDone(nebsc({"ls", "HEAD:./grüße"}, "src"), "file                    0  x\n");
    expectDone(nebsc({"ls", "HEAD:"}, "src"),
               "folder                     src/\n"
               "executable              0  top.c\n");
    EXPECT_THAT(nebsc({"ls", "HEAD:src"}).output, HasSubstr("file                    4  a b.c\n"));
}

TEST_F(ListCommand, AFolderOfACommitMayBeCalledAnything) {
    repository.commitFile("HEAD:src/x", "");
    expectDone(nebsc({"ls", "HEAD:src"}), "x\n");
    repository.commitFile("l\xE9/\xE4", "1\n");
    expectDone(nebsc({"ls", "HEAD:l\xE9"}), "file                    2  \\xe4\n");
}

TEST_F(ListCommand, ReportsWhatIsNoFolderOfACommit) {
    expectFailed(nebsc({"ls", "HEAD:nosuch"}),
                 "nebsc: there is no folder 'nosuch' in 'HEAD'\n"
                 "'nebsc ls HEAD:' lists the top of that commit.\n");
    EXPECT_EQ(nebsc({"ls", "--json", "HEAD:nosuch"}).json()["error"]["class"], "path-unknown");
    expectFailed(nebsc({"ls", "HEAD:top.c"}),
                 "nebsc: 'HEAD:top.c' is a file\n'nebsc cat HEAD:top.c' prints it.\n");
    expectFailed(nebsc({"ls", "nosuch:src"}), HasSubstr("unknown revision 'nosuch'"));
    expectFailed(nebsc({"ls", "HEAD:../x"}), HasSubstr("is outside the working copy"));
}

TEST_F(ListCommand, JSONHasTheRecordsOfACommit) {
    const JSON json = nebsc({"ls", "--json", "HEAD:src"}).json();
    EXPECT_EQ(json["type"], NEBSourceControlRequestTree);
    ASSERT_EQ(json["result"].size(), 3U);
    EXPECT_EQ(json["result"][2]["NEBSourceControlOperationKindKey"], "folder");
}

// ---- a terminal -------------------------------------------------------------------------------

TEST_F(ListCommand, ColoursFoldersOnATerminal) {
    const NebscOutcome outcome =
        runNebsc({"ls"}, {.folder = repository.path(),
                          .variables = {{"TERM", "xterm"}, {"NO_COLOR", std::nullopt}},
                          .output = NebscOutput::terminal});
    EXPECT_EQ(outcome.output, "\x1b[36msrc/\x1b[0m\r\ntop.c\r\n");
}

}  // namespace
}  // namespace neb::test
