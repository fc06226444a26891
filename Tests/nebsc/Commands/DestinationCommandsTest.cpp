// `nebsc mv`, `cp` and `mkdir`, run as a program.

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

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

TEST_F(DestinationCommands, MoveGoesIntoAFolder) {
    expectDone(nebsc({"mv", "a.c", "src"}));
    expectDone(nebsc({"mv", "b.c", "src/"}));
    EXPECT_EQ(state(), "R  a.c -> src/a.c\nR  b.c -> src/b.c\n");
}

TEST_F(DestinationCommands, MoveTakesNamesLikeOptions) {
    expectDone(nebsc({"mv", "--", "a.c", "-a.c"}));
    EXPECT_EQ(state(), "R  a.c -> -a.c\n");
}

TEST_F(DestinationCommands, MoveIntoAFolderThatIsMissingIsRefused) {
    expectFailed(nebsc({"mv", "a.c", "nowhere/"}), "nebsc: there is no folder 'nowhere/'\n");
    EXPECT_EQ(state(), "");
}

TEST_F(DestinationCommands, MoveNeverOverwrites) {
    const NebscOutcome outcome = nebsc({"mv", "a.c", "b.c"});
    expectFailed(outcome, StartsWith("nebsc: "));
    EXPECT_EQ(nebsc({"mv", "--json", "a.c", "b.c"}).json()["error"]["code"], -60);
    EXPECT_EQ(state(), "");
}

TEST_F(DestinationCommands, MoveOfWhatIsNotTrackedFails) {
    repository.write("mine.c", "");
    expectFailed(nebsc({"mv", "mine.c", "yours.c"}), HasSubstr("mine.c"));
    EXPECT_EQ(nebsc({"mv", "--json", "mine.c", "yours.c"}).json()["error"]["code"], -71);
    expectFailed(nebsc({"mv", "nosuch.c", "yours.c"}), HasSubstr("nosuch.c"));
    EXPECT_TRUE(isThere("mine.c"));
}

TEST_F(DestinationCommands, AMoveOfWhatIsNotThereIsToldSo) {
    expectFailed(nebsc({"mv", "nosuch.c", "x.c"}),
                 "nebsc: there is no file or folder 'nosuch.c'\n");
}

TEST_F(DestinationCommands, MoveWithJSONPrintsTheOutcomeAlone) {
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

TEST_F(DestinationCommands, CopyOfAFolderIsStagedWhole) {
    repository.write("src/new/x.c", "x");
    expectDone(nebsc({"cp", "src", "attic"}));
    EXPECT_EQ(state(), "A  attic/deep.c\nA  attic/new/x.c\n?? src/new/x.c\n");
}

TEST_F(DestinationCommands, CopyGoesIntoAFolderUnderItsName) {
    expectDone(nebsc({"cp", "a.c", "src"}));
    expectDone(nebsc({"cp", "../b.c", "."}, "src"));
    EXPECT_EQ(state(), "A  src/a.c\nA  src/b.c\n");
}

TEST_F(DestinationCommands, CopyNeverOverwritesAndStagesNothingElse) {
    repository.write("b.c", "mine\n");
    repository.write("src/a.c", "mine\n");
    expectFailed(nebsc({"cp", "a.c", "b.c"}),
                 "nebsc: there is a file or folder 'b.c' already; nothing was done\n");
    expectFailed(nebsc({"cp", "a.c", "src"}),
                 "nebsc: there is a file or folder 'src/a.c' already; nothing was done\n");
    fs::create_symlink("nowhere", repository.path("link"));
    expectFailed(nebsc({"cp", "a.c", "link"}), HasSubstr("'link' already"));
    EXPECT_EQ(state(), " M b.c\n?? link\n?? src/a.c\n");
}

TEST_F(DestinationCommands, CopyToAMissingFolderIsRefused) {
    expectFailed(nebsc({"cp", "a.c", "nowhere/"}), "nebsc: there is no folder 'nowhere/'\n");
    expectFailed(nebsc({"cp", "a.c", "nowhere/a.c"}),
                 testing::AllOf(HasSubstr("\"" + repository.path("nowhere/a.c") + "\""),
                                HasSubstr("No such file or directory")));
    EXPECT_EQ(state(), "");
}

TEST_F(DestinationCommands, CopyOfWhatIsMissingNamesIt) {
    expectFailed(nebsc({"cp", "nosuch.c", "x.c"}),
                 testing::AllOf(HasSubstr("'" + repository.path("nosuch.c") + "'"),
                                HasSubstr("No such file or directory")));
}

TEST_F(DestinationCommands, CopyStaysInTheWorkingCopy) {
    const TemporaryFolder elsewhere;
    expectFailed(nebsc({"cp", "a.c", elsewhere.path()}),
                 "nebsc: '" + elsewhere.path("a.c") + "' lies outside the working copy '" +
                     repository.path() + "'; nothing was done\n");
    EXPECT_TRUE(fs::is_empty(elsewhere.path()));
}

TEST_F(DestinationCommands, CopyThatCannotBeStagedIsTold) {
    repository.write(".gitignore", "*.o\n");
    expectFailed(
        nebsc({"cp", "a.c", "a.o"}),
        testing::AllOf(StartsWith("nebsc: "), HasSubstr("ignored"),
                       testing::EndsWith("\nThe copy was made all the same; it is not staged.\n")));
    EXPECT_TRUE(isThere("a.o"));
    const NebscOutcome json = nebsc({"cp", "--json", "a.c", "b.o"});
    EXPECT_EQ(json.json()["type"], NEBSourceControlRequestCopy);
    EXPECT_EQ(json.json()["error"]["class"], "path-ignored");
    EXPECT_THAT(json.errors, HasSubstr("it is not staged"));
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

TEST_F(DestinationCommands, MakeDirectoryMakesThoseOnTheWayToo) {
    expectDone(nebsc({"mkdir", "x/Grüße/z z"}, "src"));
    EXPECT_TRUE(fs::is_directory(repository.path("src/x/Grüße/z z")));
    EXPECT_EQ(state(), "");
}

TEST_F(DestinationCommands, MakeDirectoryOfAnIgnoredFolderIsNoFailure) {
    repository.commitFile(".gitignore", "build/\n");
    expectDone(nebsc({"mkdir", "build"}));
    EXPECT_TRUE(isThere("build"));
}

TEST_F(DestinationCommands, MakeDirectoryLeavesWhatIsThereAlone) {
    repository.write("src/deep.c", "mine\n");
    expectFailed(nebsc({"mkdir", "src"}),
                 "nebsc: there is a file or folder 'src' already; nothing was done\n");
    expectFailed(nebsc({"mkdir", "a.c"}), HasSubstr("'a.c' already"));
    expectFailed(nebsc({"mkdir", "a.c/x"}), HasSubstr("Not a directory"));
    EXPECT_EQ(state(), " M src/deep.c\n");
}

TEST_F(DestinationCommands, NothingIsMadeWhereThereIsNoWorkingCopy) {
    const TemporaryFolder folder;
    folder.write("a.c", "");
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"mkdir", "x"}, {"cp", "a.c", "x"}, {"mv", "a.c", "x"}}) {
        expectFailed(runNebsc(words, {.folder = folder.path()}),
                     StartsWith("nebsc: the folder is not in a git repository"));
        EXPECT_FALSE(fs::exists(folder.path("x"))) << words[0];
    }
}

TEST_F(DestinationCommands, MakeDirectoryWithJSONPrintsTheOutcomeAlone) {
    const NebscOutcome outcome = nebsc({"mkdir", "x", "--json"});
    EXPECT_EQ(outcome.json()["type"], NEBSourceControlRequestMakeDirectory);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

TEST_F(DestinationCommands, WordsThatAreMissingAreNamed) {
    expectFailed(nebsc({"mv", "a.c"}), HasSubstr("DEST"), 2);
    expectFailed(nebsc({"cp", "a.c"}), HasSubstr("DEST"), 2);
    expectFailed(nebsc({"mkdir"}), HasSubstr("DIR"), 2);
    expectFailed(nebsc({"mv", "a.c", "b", "c"}), HasSubstr("c"), 2);
}

TEST_F(DestinationCommands, AMoveThatFailsWithoutAWordIsAFailure) {
    const StandInGit git(repository.path(), "exit 3");
    expectFailed(nebsc({"mv", "a.c", "z.c"}, git),
                 "nebsc: git exited with status 3 and printed nothing\n");
    expectFailed(nebsc({"cp", "a.c", "z.c"}, git),
                 "nebsc: git exited with status 3 and printed nothing\n"
                 "The copy was made all the same; it is not staged.\n");
}

}  // namespace
}  // namespace neb::test
