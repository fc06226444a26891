// `nebsc mv`, `cp` and `mkdir`, run as a program.

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"
#include "nebsc/Recording/RecordedFile.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;
using JSON = nlohmann::ordered_json;

class DestinationCommands : public CommandTest {
protected:
    void SetUp() override {
        for (const char* name : {"a.c", "b.c", "src/deep.c", "with blank.c"}) {
            repository.commitFile(name, std::string("the content of ") + name + "\n");
        }
    }
};

// ---- mv ---------------------------------------------------------------------------------------

TEST_F(DestinationCommands, MoveRenames) {
    expectDone(nebsc({"mv", "../with blank.c", "Grüße.c"}, "src"));
    EXPECT_EQ(state(), "R  \"with blank.c\" -> src/Grüße.c\n");
    EXPECT_EQ(content("src/Grüße.c"), "the content of with blank.c\n");
}

TEST_F(DestinationCommands, MoveAcceptsAFolder) {
    expectDone(nebsc({"mv", "a.c", "src"}));
    expectDone(nebsc({"mv", "b.c", "src/"}));
    EXPECT_EQ(state(), "R  a.c -> src/a.c\nR  b.c -> src/b.c\n");
}

TEST_F(DestinationCommands, MoveAcceptsNamesThatLookLikeOptions) {
    expectDone(nebsc({"mv", "--", "a.c", "-a.c"}));
    EXPECT_EQ(state(), "R  a.c -> -a.c\n");
}

TEST_F(DestinationCommands, MoveRefusesAMissingFolder) {
    expectFailed(nebsc({"mv", "a.c", "nowhere/"}), "nebsc: the folder 'nowhere/' does not exist\n");
    expectFailed(nebsc({"mv", "a.c", "nowhere/x/a.c"}),
                 "nebsc: the folder 'nowhere/x' does not exist\n");
    expectFailed(nebsc({"mv", "deep.c", "../nowhere/a.c"}, "src"),
                 "nebsc: the folder '../nowhere' does not exist\n");
    EXPECT_EQ(nebsc({"mv", "--json", "a.c", "nowhere/a.c"}).json()["error"]["class"],
              "destination-missing");
    EXPECT_EQ(state(), "");
}

TEST_F(DestinationCommands, MoveRefusesAFileAsFolder) {
    expectFailed(nebsc({"mv", "a.c", "b.c/x/a.c"}),
                 "nebsc: 'b.c' exists and is not a folder; nothing was changed\n"
                 "Choose another folder, or move the existing file away.\n");
    EXPECT_EQ(state(), "");
}

TEST_F(DestinationCommands, MoveNeverOverwrites) {
    const NebscOutcome outcome = nebsc({"mv", "a.c", "b.c"});
    expectFailed(outcome, StartsWith("nebsc: "));
    EXPECT_EQ(nebsc({"mv", "--json", "a.c", "b.c"}).json()["error"]["code"], -60);
    EXPECT_EQ(state(), "");
}

TEST_F(DestinationCommands, MoveRefusesAnUntrackedFile) {
    repository.write("mine.c", "");
    expectFailed(nebsc({"mv", "mine.c", "yours.c"}), HasSubstr("mine.c"));
    EXPECT_EQ(nebsc({"mv", "--json", "mine.c", "yours.c"}).json()["error"]["code"], -71);
    expectFailed(nebsc({"mv", "nosuch.c", "yours.c"}), HasSubstr("nosuch.c"));
    EXPECT_TRUE(isThere("mine.c"));
}

TEST_F(DestinationCommands, NothingIsMovedOrCopiedFromOrToTheGitDirectory) {
    const std::string head = repository.git({"rev-parse", "HEAD"});
    fs::create_directory_symlink(repository.path(".git/hooks"), repository.path("link"));
    fs::create_directories(repository.path(".git/hooks"));
    const std::vector<std::vector<std::string>> changes = {
        {"mv", "a.c", ".git/hooks/pre-commit"},
        {"mv", "a.c", ".git/hooks"},
        {"mv", "a.c", "link/pre-commit"},
        {"mv", ".git", "g"},
        {"mv", "a.c", "src/.git"},
        {"mv", ".git/config", "config"},
        {"cp", "a.c", ".git/hooks/pre-commit"},
        {"cp", "a.c", ".git/hooks"},
        {"cp", "a.c", "link"},
        {"cp", ".git", "g"},
        {"cp", ".git/config", "config"},
        {"mkdir", ".git/zz"},
        {"mkdir", "src/.git"},
        {"mkdir", "link/zz"},
    };
    for (const auto& arguments : changes) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        expectFailed(nebsc(arguments), HasSubstr("is inside the git directory '"));
    }
    EXPECT_EQ(state(), "?? link\n");
    EXPECT_EQ(repository.git({"rev-parse", "HEAD"}), head);
    for (const char* name : {".git/hooks/pre-commit", ".git/hooks/a.c", ".git/zz", "src/.git", "g",
                             "config", ".git/hooks/zz"}) {
        EXPECT_FALSE(isThere(name)) << name;
    }
    for (const int type : {8, 10, 11}) {
        const JSON request{{"type", type},
                           {"sourceTree", {{"location", repository.path()}}},
                           {"files", {"a.c"}},
                           {"destination", ".git/hooks/pre-commit"}};
        const NebscOutcome outcome =
            runNebsc({"request"}, {.folder = repository.path(), .input = request.dump()});
        EXPECT_EQ(outcome.json()["error"]["class"], "path-invalid") << type;
        EXPECT_EQ(outcome.exitStatus, 1);
    }
    EXPECT_FALSE(isThere(".git/hooks/pre-commit"));
}

TEST_F(DestinationCommands, RequestsThatReachTheGitDirectoryIndirectlyAreRefused) {
    const std::string& top = repository.path();
    fs::create_directories(repository.path(".git/hooks"));
    fs::create_directory_symlink(".git/refs", repository.path("link"));
    const auto classOf = [&top](int type, const std::string& location,
                                const std::string& destination) {
        const JSON request{{"type", type},
                           {"sourceTree", {{"location", location}}},
                           {"files", {"a.c"}},
                           {"destination", destination}};
        const NebscOutcome outcome =
            runNebsc({"request"}, {.folder = "/",
                                   .input = request.dump(),
                                   .variables = {{"HOME", fs::path(top).parent_path().string()}}});
        const JSON error = outcome.json()["error"];
        return error.is_object() ? error["class"].get<std::string>() : "no error";
    };
    const std::string inHome = "~/" + fs::path(top).filename().string();
    for (const int type : {8, 10, 11}) {
        EXPECT_EQ(classOf(type, inHome, ".git/hooks/x1"), "path-invalid") << type;
        EXPECT_EQ(classOf(type, top, inHome + "/.git/hooks/x2"), "path-invalid") << type;
        EXPECT_EQ(classOf(type, top, "link/../hooks/x3"), "path-invalid") << type;
        EXPECT_EQ(classOf(type, top, "new/../link/../hooks/x4"), "path-invalid") << type;
        EXPECT_EQ(classOf(type, top, "src/.GIT/hooks/x5"), "path-invalid") << type;
    }
    EXPECT_TRUE(fs::is_empty(repository.path(".git/hooks")));
    EXPECT_FALSE(isThere("src/.GIT"));
    EXPECT_FALSE(isThere("new"));
    EXPECT_EQ(state(), "?? link\n");
}

TEST_F(DestinationCommands, NoRepositoryIsBuiltFromFiles) {
    repository.write("src/.git/info/x", "");
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"mkdir", "src/.git/hooks"},
          {"mkdir", "src/new/.git/hooks"},
          {"cp", "a.c", "src/.git/info/post-checkout"},
          {"mv", "a.c", "src/.git/info"}}) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        expectFailed(nebsc(arguments), HasSubstr("is inside the git directory '"));
    }
    for (const char* name : {"src/.git/hooks", "src/new", "src/.git/info/post-checkout"}) {
        EXPECT_FALSE(isThere(name)) << name;
    }
    EXPECT_TRUE(isThere("a.c"));
}

TEST_F(DestinationCommands, ARefusedChangeReplaysEqually) {
    const TemporaryFolder folder;
    const std::string file = folder.path("recording");
    expectFailed(nebsc({"--record", file, "mkdir", ".git/zz"}), HasSubstr("is inside the git"));
    const NebscOutcome outcome = replayed(file);
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr(": same ("));
    EXPECT_THAT(outcome.output, HasSubstr("1 request, none different\n"));
}

TEST_F(DestinationCommands, SymbolicLinkToTheGitDirectoryMovesItself) {
    repository.write(".git/annex/k", "a photo\n");
    fs::create_symlink(".git/annex/k", repository.path("photo.jpg"));
    repository.git({"add", "photo.jpg"});
    expectDone(nebsc({"mv", "photo.jpg", "src/p.jpg"}));
    EXPECT_EQ(fs::read_symlink(repository.path("src/p.jpg")), ".git/annex/k");
    expectDone(nebsc({"cp", "src/p.jpg", "q.jpg"}));
    EXPECT_EQ(fs::read_symlink(repository.path("q.jpg")), ".git/annex/k");
    EXPECT_EQ(repository.git({"ls-files", "photo.jpg", "src/p.jpg", "q.jpg"}),
              "q.jpg\nsrc/p.jpg\n");
}

TEST_F(DestinationCommands, FilesMoveInAWorkingCopyWithinAGitDirectory) {
    repository.git({"worktree", "add", "--quiet", "--detach", ".git/tree"});
    expectDone(nebsc({"mv", "a.c", "z.c"}, ".git/tree"));
    EXPECT_TRUE(isThere(".git/tree/z.c"));
    expectFailed(nebsc({"mkdir", "src/.git/hooks"}, ".git/tree"),
                 HasSubstr("is inside the git directory '"));
}

TEST_F(DestinationCommands, MoveReportsAMissingFile) {
    expectFailed(nebsc({"mv", "nosuch.c", "x.c"}),
                 "nebsc: the file or folder 'nosuch.c' does not exist\n");
}

TEST_F(DestinationCommands, MoveWithJSONPrintsOnlyTheOutcome) {
    const NebscOutcome outcome = nebsc({"mv", "deep.c", "flat.c", "--json"}, "src");
    EXPECT_EQ(outcome.json()["command"]["arguments"],
              JSON({"mv", repository.path("src/deep.c"), repository.path("src/flat.c")}));
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

// ---- cp ---------------------------------------------------------------------------------------

TEST_F(DestinationCommands, CopyIsStaged) {
    expectDone(nebsc({"cp", "../with blank.c", "[copy].c"}, "src"));
    EXPECT_EQ(state(), "A  src/[copy].c\n");
    EXPECT_EQ(content("src/[copy].c"), "the content of with blank.c\n");
    EXPECT_TRUE(isThere("with blank.c"));
}

TEST_F(DestinationCommands, CopyStagesAWholeFolder) {
    repository.write("src/new/x.c", "x");
    expectDone(nebsc({"cp", "src", "attic"}));
    EXPECT_EQ(state(), "A  attic/deep.c\nA  attic/new/x.c\n?? src/new/x.c\n");
}

TEST_F(DestinationCommands, CopyToAFolderKeepsTheName) {
    expectDone(nebsc({"cp", "a.c", "src"}));
    expectDone(nebsc({"cp", "../b.c", "."}, "src"));
    EXPECT_EQ(state(), "A  src/a.c\nA  src/b.c\n");
}

TEST_F(DestinationCommands, CopyNeverOverwritesAndStagesNothingElse) {
    repository.write("b.c", "mine\n");
    repository.write("src/a.c", "mine\n");
    expectFailed(nebsc({"cp", "a.c", "b.c"}), "nebsc: 'b.c' already exists; nothing was changed\n");
    expectFailed(nebsc({"cp", "a.c", "src"}),
                 "nebsc: 'src/a.c' already exists; nothing was changed\n");
    fs::create_symlink("nowhere", repository.path("link"));
    expectFailed(nebsc({"cp", "a.c", "link"}), HasSubstr("'link' already"));
    EXPECT_EQ(state(), " M b.c\n?? link\n?? src/a.c\n");
}

TEST_F(DestinationCommands, CopyRefusesAMissingFolder) {
    expectFailed(nebsc({"cp", "a.c", "nowhere/"}), "nebsc: the folder 'nowhere/' does not exist\n");
    expectFailed(nebsc({"cp", "a.c", "nowhere/x/a.c"}),
                 "nebsc: the folder 'nowhere/x' does not exist\n");
    EXPECT_EQ(state(), "");
}

TEST_F(DestinationCommands, CopyReportsAMissingFile) {
    expectFailed(nebsc({"cp", "nosuch.c", "x.c"}),
                 testing::AllOf(HasSubstr("'" + repository.path("nosuch.c") + "'"),
                                HasSubstr("No such file or directory")));
}

TEST_F(DestinationCommands, CopyRefusesAPathOutsideTheWorkingCopy) {
    const TemporaryFolder elsewhere;
    expectFailed(nebsc({"cp", "a.c", elsewhere.path()}),
                 "nebsc: '" + elsewhere.path("a.c") + "' is outside the working copy '" +
                     repository.path() + "'; nothing was changed\n");
    EXPECT_TRUE(fs::is_empty(elsewhere.path()));
}

TEST_F(DestinationCommands, CopyReportsThatStagingFailed) {
    repository.write(".gitignore", "*.o\n");
    expectFailed(nebsc({"cp", "a.c", "a.o"}),
                 testing::AllOf(StartsWith("nebsc: "), HasSubstr("ignored"),
                                testing::EndsWith("\nThe copy was created but not staged.\n")));
    EXPECT_TRUE(isThere("a.o"));
    const NebscOutcome json = nebsc({"cp", "--json", "a.c", "b.o"});
    EXPECT_EQ(json.json()["type"], NEBSourceControlRequestCopy);
    EXPECT_EQ(json.json()["error"]["class"], "path-ignored");
    EXPECT_THAT(json.errors, HasSubstr("The copy was created but not staged"));
    EXPECT_EQ(json.exitStatus, 1);
}

TEST_F(DestinationCommands, CopyWithJSONPrintsOneOutcome) {
    const NebscOutcome outcome = nebsc({"cp", "--json", "a.c", "c.c"});
    const JSON json = outcome.json();
    EXPECT_EQ(json["operation"], "GitCopyOperation");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_EQ(state(), "A  c.c\n");
}

// ---- mkdir ------------------------------------------------------------------------------------

TEST_F(DestinationCommands, MakeDirectoryCreatesParents) {
    expectDone(nebsc({"mkdir", "x/Grüße/z z"}, "src"));
    EXPECT_TRUE(fs::is_directory(repository.path("src/x/Grüße/z z")));
    EXPECT_EQ(state(), "");
}

TEST_F(DestinationCommands, MakeDirectoryCreatesAnIgnoredFolder) {
    repository.commitFile(".gitignore", "build/\n");
    expectDone(nebsc({"mkdir", "build"}));
    EXPECT_TRUE(isThere("build"));
}

TEST_F(DestinationCommands, MakeDirectoryRefusesAnExistingPath) {
    repository.write("src/deep.c", "mine\n");
    expectFailed(nebsc({"mkdir", "src"}), "nebsc: 'src' already exists; nothing was changed\n");
    expectFailed(nebsc({"mkdir", "a.c"}), HasSubstr("'a.c' already"));
    for (const char* name : {"a.c/x", "a.c/x/y"}) {
        expectFailed(nebsc({"mkdir", name}),
                     "nebsc: 'a.c' exists and is not a folder; nothing was changed\n"
                     "Choose another folder, or move the existing file away.\n");
    }
    EXPECT_EQ(state(), " M src/deep.c\n");
}

TEST_F(DestinationCommands, FailOutsideAWorkingCopy) {
    const TemporaryFolder folder;
    folder.write("a.c", "");
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"mkdir", "x"}, {"cp", "a.c", "x"}, {"mv", "a.c", "x"}}) {
        expectFailed(runNebsc(arguments, {.folder = folder.path()}),
                     StartsWith("nebsc: the folder is not in a git repository"));
        EXPECT_FALSE(fs::exists(folder.path("x"))) << arguments[0];
    }
}

TEST_F(DestinationCommands, MakeDirectoryWithJSONPrintsOnlyTheOutcome) {
    const NebscOutcome outcome = nebsc({"mkdir", "x", "--json"});
    EXPECT_EQ(outcome.json()["type"], NEBSourceControlRequestMakeDirectory);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

TEST_F(DestinationCommands, ReportMissingArguments) {
    expectFailed(nebsc({"mv", "a.c"}), HasSubstr("DEST"), 2);
    expectFailed(nebsc({"cp", "a.c"}), HasSubstr("DEST"), 2);
    expectFailed(nebsc({"mkdir"}), HasSubstr("DIR"), 2);
    expectFailed(nebsc({"mv", "a.c", "b", "c"}), HasSubstr("c"), 2);
}

TEST_F(DestinationCommands, ASilentGitFailureIsAnError) {
    const StandInGit git(repository.path(), "exit 3");
    expectFailed(nebsc({"mv", "a.c", "z.c"}, git),
                 "nebsc: git exited with status 3 and printed nothing\n");
    expectFailed(nebsc({"cp", "a.c", "z.c"}, git),
                 "nebsc: git exited with status 3 and printed nothing\n"
                 "The copy was created but not staged.\n");
}

}  // namespace
}  // namespace neb::test
