// What every clone gets from nebsc, whichever way the request comes in: its folder.

#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using JSON = nlohmann::ordered_json;

class CloneRequest : public CommandTest {
protected:
    void SetUp() override { repository.commitFile("a.c", "first\n"); }

    /// The request as JSON.
    [[nodiscard]] static std::string requestTo(const std::string& destination,
                                               const std::string& source) {
        return JSON({{"type", 29},
                     {"sourceTree", {{"location", source}}},
                     {"repositoryToAuthenticate", JSON::object()},
                     {"destination", destination}})
            .dump();
    }

    TemporaryFolder folder;
};

TEST_F(CloneRequest, MakesAMissingFolder) {
    const std::string destination = folder.path("on/the way/clone");
    const NebscOutcome outcome = runRequest(requestTo(destination, repository.path()));
    EXPECT_TRUE(outcome.json()["error"].is_null());
    EXPECT_EQ(outcome.json()["command"]["currentDirectoryPath"], destination);
    EXPECT_EQ(folder.read("on/the way/clone/a.c"), "first\n");
    EXPECT_EQ(outcome.exitStatus, 0);
}

TEST_F(CloneRequest, TakesAnEmptyFolderThatIsThere) {
    fs::create_directory(folder.path("clone"));
    EXPECT_EQ(runRequest(requestTo(folder.path("clone"), repository.path())).exitStatus, 0);
    EXPECT_EQ(folder.read("clone/a.c"), "first\n");
}

TEST_F(CloneRequest, RemovesWhatItMadeWhenItFails) {
    const NebscOutcome outcome =
        runRequest(requestTo(folder.path("on/the/way"), folder.path("nosuch")));
    EXPECT_THAT(outcome.json()["error"]["text"].get<std::string>(), HasSubstr("nosuch"));
    EXPECT_TRUE(fs::is_empty(folder.path()));
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST_F(CloneRequest, LeavesAFolderThatWasThereWhenItFails) {
    fs::create_directory(folder.path("empty"));
    folder.write("full/mine", "mine");
    EXPECT_EQ(runRequest(requestTo(folder.path("empty"), folder.path("nosuch"))).exitStatus, 1);
    EXPECT_EQ(runRequest(requestTo(folder.path("full"), repository.path())).exitStatus, 1);
    EXPECT_TRUE(fs::is_directory(folder.path("empty")));
    EXPECT_EQ(folder.read("full/mine"), "mine");
}

TEST_F(CloneRequest, RemovesAHalfDoneCloneWithASubmoduleThatFailed) {
    repository.git({"config", "--file", ".gitmodules", "submodule.sub.path", "sub"});
    repository.git({"config", "--file", ".gitmodules", "submodule.sub.url", folder.path("nosuch")});
    repository.git({"add", ".gitmodules"});
    repository.git({"update-index", "--add", "--cacheinfo",
                    "160000,1234567890123456789012345678901234567890,sub"});
    repository.git({"commit", "--quiet", "-m", "with a submodule"});
    EXPECT_EQ(runRequest(requestTo(folder.path("clone"), repository.path())).exitStatus, 1);
    EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST_F(CloneRequest, RemovesWhatItMadeWhenGitFailsWithoutAWord) {
    const StandInGit git("", "echo half > done; exit 3");
    const NebscOutcome outcome = runRequest(requestTo(folder.path("a/clone"), repository.path()),
                                            {.variables = {git.path()}});
    EXPECT_EQ(outcome.json()["error"]["text"], "git told nothing and ended with exit status 3.");
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST_F(CloneRequest, EmptiesAgainWhatWasEmptyAndKeepsIt) {
    const StandInGit git("", "echo half > done; mkdir more; exit 3");
    fs::create_directory(folder.path("there"));
    EXPECT_EQ(
        runRequest(requestTo(folder.path("there"), repository.path()), {.variables = {git.path()}})
            .exitStatus,
        1);
    EXPECT_TRUE(fs::is_empty(folder.path("there")));
    folder.write("full/file", "x");
    EXPECT_EQ(
        runRequest(requestTo(folder.path("full"), repository.path()), {.variables = {git.path()}})
            .exitStatus,
        1);
    EXPECT_EQ(folder.read("full/file"), "x");
}

TEST_F(CloneRequest, AFolderThatCannotBeMadeIsTheError) {
    folder.write("file", "");
    const NebscOutcome outcome =
        runRequest(requestTo(folder.path("file/clone"), repository.path()));
    const JSON json = outcome.json();
    EXPECT_EQ(json["operation"], "GitCloneOperation");
    EXPECT_EQ(json["commands"], JSON::array());
    EXPECT_EQ(json["error"]["domain"], "NEBPOSIXErrorDomain");
    EXPECT_EQ(json["error"]["text"], "The folder \"" + folder.path("file/clone") +
                                         "\" could not be made: Not a directory.");
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST_F(CloneRequest, NothingIsMadeWhereNothingRuns) {
    const std::string request = requestTo(folder.path("clone"), repository.path());
    EXPECT_EQ(runNebsc({"request", "--dry-run"}, {.input = request}).exitStatus, 0);
    JSON unreachable = JSON::parse(request);
    unreachable.erase("repositoryToAuthenticate");
    EXPECT_EQ(runRequest(unreachable.dump()).exitStatus, 1);
    EXPECT_EQ(runRequest(requestTo(folder.path("clone"), "--upload-pack=x:y")).exitStatus, 2);
    EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST_F(CloneRequest, ADestinationThatIsNoAbsolutePathIsRefused) {
    for (const char* destination : {"\"clone\"", "\"~/clone\"", "\"\"", "\"./clone\"", "7"}) {
        const NebscOutcome outcome =
            runRequest(std::string(R"({"destination": )") + destination +
                           R"(, "type": 29, "sourceTree": {"location": "/x"}})",
                       {.folder = folder.path()});
        EXPECT_EQ(outcome.output, "");
        EXPECT_THAT(outcome.errors,
                    testing::StartsWith("nebsc: The request's member \"destination\" is \""));
        EXPECT_THAT(outcome.errors, HasSubstr("for a clone an absolute path was expected"));
        EXPECT_EQ(outcome.exitStatus, 2);
    }
    EXPECT_TRUE(fs::is_empty(folder.path()));
    EXPECT_EQ(
        runNebsc({"request", "--dry-run"},
                 {.input = R"({"type": 29, "sourceTree": {}, "repositoryToAuthenticate": {}})"})
            .exitStatus,
        0);
    EXPECT_EQ(
        runNebsc({"request", "--dry-run"}, {.input = R"({"type": 14, "destination": "topic"})"})
            .exitStatus,
        0);
}

}  // namespace
}  // namespace neb::test
