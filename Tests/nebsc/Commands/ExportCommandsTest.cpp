// `nebsc export` and `nebsc export-tree`, run as programs.

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using JSON = nlohmann::ordered_json;

class ExportCommands : public CommandTest {
protected:
    void SetUp() override {
        repository.commitFile("src/grüße a.c", std::string("old\0\xE4\r\n", 7));
        repository.commitFile("src/grüße a.c", "new\n");
        repository.write("run", "#!/bin/sh\n");
        fs::permissions(repository.path("run"), fs::perms::owner_all);
        repository.git({"add", "."});
        repository.git({"commit", "--quiet", "-m", "a program"});
    }
    /// Returns the names in the folder for exports, hidden ones included.
    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const auto& entry : fs::directory_iterator(folder.path())) {
            all.push_back(entry.path().filename());
        }
        std::sort(all.begin(), all.end());
        return all;
    }

    TemporaryFolder folder;
    const std::string old = std::string("old\0\xE4\r\n", 7);
};

TEST_F(ExportCommands, ExportWritesToATemporaryFileByDefault) {
    const NebscOutcome outcome = nebsc({"export", "HEAD~1", "grüße a.c"}, "src");
    EXPECT_THAT(outcome.output, testing::EndsWith("grüße a.c\n"));
    const std::string path = outcome.output.substr(0, outcome.output.size() - 1);
    const NebscOutcome shown = runProgram("/bin/cat", {path}, {});
    fs::remove(path);
    EXPECT_EQ(shown.output, "new\n");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

TEST_F(ExportCommands, ExportUsesTheNameOfTheDestination) {
    // Some contain the name of the file, at the end or elsewhere; others do not.
    for (const char* name :
         {"grüße a.c", "x.c", "1-grüße a.c", "grüße a.c-grüße a.c", "grüße a.c.old", "Zoë"}) {
        const std::string path = folder.path(name);
        expectDone(nebsc({"export", "HEAD~2", "src/grüße a.c", path}), path + "\n");
        EXPECT_EQ(folder.read(name), old);
        EXPECT_EQ(names(), std::vector<std::string>{name});
        fs::remove(path);
    }
}

TEST_F(ExportCommands, ExportTakesPathsRelativeToTheCurrentFolder) {
    expectDone(nebsc({"export", "HEAD~2", "grüße a.c", "old.c"}, "src"),
               repository.path("src/old.c") + "\n");
    EXPECT_EQ(state(), "?? src/old.c\n");
}

TEST_F(ExportCommands, ExportToAFolderKeepsTheName) {
    expectDone(nebsc({"export", "HEAD", "run", folder.path()}), folder.path("run") + "\n");
    EXPECT_TRUE((fs::status(folder.path("run")).permissions() & fs::perms::owner_exec) !=
                fs::perms::none);
    expectFailed(nebsc({"export", "HEAD", "run", folder.path("none/")}),
                 HasSubstr("the folder '" + folder.path("none/") + "' does not exist"));
}

TEST_F(ExportCommands, ExportWritesAWholeFolder) {
    fs::remove_all(repository.path("src"));
    expectDone(nebsc({"export", "HEAD~2", "src", folder.path("sources")}),
               folder.path("sources") + "\n");
    EXPECT_EQ(folder.read("sources/grüße a.c"), old);
}

TEST_F(ExportCommands, ExportNeverOverwrites) {
    const std::string path = folder.write("x.c", "mine");
    expectFailed(nebsc({"export", "HEAD", "run", path}),
                 HasSubstr("already exists; nothing was changed"));
    folder.write("run", "mine");
    const NebscOutcome json = nebsc({"export", "--json", "HEAD", "run", folder.path()});
    EXPECT_THAT(json.json()["error"]["localizedDescription"], HasSubstr("already"));
    EXPECT_EQ(json.exitStatus, 1);
    fs::create_symlink("nowhere", folder.path("link"));
    expectFailed(nebsc({"export", "HEAD", "run", folder.path("link")}), HasSubstr("already"));
    EXPECT_EQ(folder.read("x.c"), "mine");
    EXPECT_EQ(folder.read("run"), "mine");
    EXPECT_EQ(names(), (std::vector<std::string>{"link", "run", "x.c"}));
}

TEST_F(ExportCommands, ExportReportsFailuresAndLeavesNothing) {
    const std::string path = folder.path("x");
    expectFailed(nebsc({"export", "nosuch", "run", path}), "nebsc: unknown revision 'nosuch'\n");
    expectFailed(nebsc({"export", "HEAD~2", "run", path}),
                 "nebsc: 'run' does not exist in the revision 'HEAD~2'\n");
    expectFailed(nebsc({"export", "HEAD", "/etc/hosts", path}),
                 HasSubstr("is outside the working copy"));
    expectFailed(nebsc({"export", "HEAD", "run", folder.path("no/x")}),
                 HasSubstr("could not be written: No such file or directory\n"));
    expectFailed(nebsc({"export", "--", "--remote=x", "run", path}), HasSubstr("begins with"), 2);
    expectFailed(nebsc({"export", "HEAD"}), HasSubstr("FILE"), 2);
    const NebscOutcome json = nebsc({"export", "--json", "HEAD~2", "run", path});
    EXPECT_FALSE(json.json()["error"].is_null());
    EXPECT_EQ(json.exitStatus, 1);
    EXPECT_TRUE(names().empty());
    expectFailed(runNebsc({"export", "HEAD", "run"}, {.folder = folder.path()}),
                 testing::StartsWith("nebsc: the folder is not in a git repository"));
}

TEST_F(ExportCommands, ExportWithJSONNamesTheFile) {
    const NebscOutcome outcome =
        nebsc({"export", "--json", "HEAD~1", "grüße a.c", folder.path("y")}, "src");
    const JSON json = outcome.json();
    EXPECT_EQ(json["type"], NEBSourceControlRequestExport);
    EXPECT_EQ(json["result"],
              JSON::array({{{"NEBSourceControlOperationPathKey", folder.path("y")}}}));
    EXPECT_EQ(folder.read("y"), "new\n");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

TEST_F(ExportCommands, ExportLeavesNothingIfGitFails) {
    const StandInGit git(repository.path(), "[ \"$2\" = -t ] && { echo blob; exit; }; exit 3");
    const NebscOutcome outcome = nebsc({"export", "HEAD", "run", folder.path("x")}, git);
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_TRUE(names().empty());
}

// ---- export-tree ------------------------------------------------------------------------------

TEST_F(ExportCommands, ExportTreeWritesTheIndex) {
    repository.write("staged", "staged");
    repository.git({"add", "staged"});
    repository.write("run", "changed");
    expectDone(nebsc({"export-tree", folder.path("new/tree")}, "src"),
               "Wrote the files of the index to '" + folder.path("new/tree") + "'.\n");
    EXPECT_EQ(folder.read("new/tree/src/grüße a.c"), "new\n");
    EXPECT_EQ(folder.read("new/tree/run"), "#!/bin/sh\n");
    EXPECT_EQ(folder.read("new/tree/staged"), "staged");
}

TEST_F(ExportCommands, ExportTreeRefusesAFolderThatIsNotEmpty) {
    fs::create_directory(folder.path("empty"));
    expectDone(nebsc({"export-tree", folder.path("empty")}),
               "Wrote the files of the index to '" + folder.path("empty") + "'.\n");
    folder.write("full/run", "mine");
    folder.write("full/other", "mine");
    expectFailed(nebsc({"export-tree", folder.path("full")}), HasSubstr("is not empty"));
    EXPECT_EQ(folder.read("full/run"), "mine");
    EXPECT_EQ(nebsc({"export-tree", "--force", folder.path("full")}).exitStatus, 0);
    EXPECT_EQ(folder.read("full/run"), "#!/bin/sh\n");
    EXPECT_EQ(folder.read("full/other"), "mine");
}

TEST_F(ExportCommands, ExportTreeNeverOverwritesTheWorkingCopy) {
    repository.write("run", "mine");
    fs::create_symlink(repository.path(), folder.path("link"));
    for (const std::string& place : {repository.path(), folder.path("link")}) {
        expectFailed(nebsc({"export-tree", "--force", place}),
                     HasSubstr("the working copy itself"));
    }
    expectFailed(nebsc({"export-tree", "--force", "run"}), HasSubstr("is not a folder"));
    EXPECT_EQ(state(), " M run\n");
}

TEST_F(ExportCommands, ExportTreeReportsAnEmptyIndex) {
    const TestRepository empty;
    expectDone(runNebsc({"export-tree", folder.path("tree")}, {.folder = empty.path()}),
               "The index has no files; nothing was written.\n");
    EXPECT_TRUE(names().empty());
    expectFailed(runNebsc({"export-tree", "x"}, {.folder = folder.path()}),
                 testing::StartsWith("nebsc: the folder is not in a git repository"));
}

TEST_F(ExportCommands, ExportTreeListsFilesInConflict) {
    repository.git({"checkout", "--quiet", "-b", "topic", "HEAD~1"});
    repository.commitFile("src/grüße a.c", "topic\n");
    repository.git({"checkout", "--quiet", "main"});
    repository.commitFile("src/grüße a.c", "main\n");
    EXPECT_EQ(repository.gitStatus({"merge", "--quiet", "topic"}), 1);
    const NebscOutcome outcome = nebsc({"export-tree", folder.path("tree")}, "src");
    EXPECT_THAT(outcome.errors, testing::EndsWith("in conflict and were not written:\n"
                                                  "    grüße a.c\n"));
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_FALSE(fs::exists(folder.path("tree/src/grüße a.c")));
}

TEST_F(ExportCommands, ExportTreeCountsFilesOutsideASparseCheckout) {
    repository.git({"sparse-checkout", "set", "--no-cone", "/run"});
    const NebscOutcome outcome = nebsc({"export-tree", folder.path("tree")});
    EXPECT_EQ(outcome.errors,
              "nebsc: one file of the index outside the sparse checkout was not written\n");
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_TRUE(fs::exists(folder.path("tree/run")));
}

TEST_F(ExportCommands, RefuseAPathInTheGitDirectory) {
    fs::create_symlink(repository.path(".git"), folder.path("link"));
    const std::string head = repository.git({"symbolic-ref", "HEAD"});
    for (const std::string& place :
         {repository.path(".git"), repository.path(".git/new"), folder.path("link")}) {
        expectFailed(nebsc({"export-tree", "--force", place}),
                     HasSubstr("is inside the git directory"));
        expectFailed(nebsc({"export", "HEAD", "run", place + "/X"}),
                     HasSubstr("is inside the git directory"));
    }
    EXPECT_EQ(repository.git({"symbolic-ref", "HEAD"}), head);
    EXPECT_FALSE(fs::exists(repository.path(".git/new")));
    EXPECT_FALSE(fs::exists(repository.path(".git/X")));
}

TEST_F(ExportCommands, ExportTreeKeepsAFolderThatBlocksAFile) {
    folder.write("full/run/precious", "mine");
    expectFailed(nebsc({"export-tree", "--force", folder.path("full")}),
                 HasSubstr("the folder '" + folder.path("full/run") + "' blocks a file"));
    EXPECT_EQ(folder.read("full/run/precious"), "mine");
}

TEST_F(ExportCommands, ExportRefusesTheWholeWorkingCopy) {
    expectFailed(nebsc({"export", "HEAD", ".", folder.path("x")}), HasSubstr("nebsc export-tree"));
}

TEST_F(ExportCommands, ExportReportsALostObject) {
    const std::string blob = repository.git({"rev-parse", "HEAD:run"}).substr(0, 40);
    fs::remove(repository.path(".git/objects/" + blob.substr(0, 2) + "/" + blob.substr(2)));
    const NebscOutcome outcome = nebsc({"export", "HEAD", "run", folder.path("x")});
    EXPECT_THAT(outcome.errors, testing::Not(HasSubstr("does not exist in the revision")));
    EXPECT_THAT(outcome.errors, HasSubstr(blob));
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST_F(ExportCommands, ExportTreeWithJSONPrintsOnlyTheOutcome) {
    const NebscOutcome outcome = nebsc({"--json", "export-tree", folder.path("t")});
    const JSON json = outcome.json();
    EXPECT_EQ(json["type"], NEBSourceControlRequestExportTree);
    EXPECT_EQ(json["command"]["arguments"],
              JSON({"checkout-index", "-a", "-f", "--prefix=" + folder.path("t") + "/"}));
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

}  // namespace
}  // namespace neb::test
