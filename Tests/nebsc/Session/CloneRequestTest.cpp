// The destination folder of a clone, and clones that lack submodules.

#include <iterator>
#include <sstream>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using JSON = nlohmann::ordered_json;

class CloneRequest : public CommandTest {
protected:
    void SetUp() override { repository.commitFile("a.c", "first\n"); }

    /// Returns the request as JSON.
    [[nodiscard]] static std::string requestTo(const std::string& destination,
                                               const std::string& source) {
        return JSON({{"type", NEBSourceControlRequestClone},
                     {"sourceTree", {{"location", source}}},
                     {"repositoryToAuthenticate", JSON::object()},
                     {"destination", destination}})
            .dump();
    }

    /// Commits a submodule. If its repository does not exist, the commit of the submodule does not
    /// exist either.
    static void addSubmodule(const TestRepository& outer, const std::string& path,
                             const std::string& url) {
        const std::string section = "submodule." + path + ".";
        outer.git({"config", "--file", ".gitmodules", section + "path", path});
        outer.git({"config", "--file", ".gitmodules", section + "url", url});
        outer.git({"add", ".gitmodules"});
        if (fs::exists(url)) {
            outer.git({"clone", "--quiet", url, path});
            outer.git({"add", path});
        } else {
            outer.git({"update-index", "--add", "--cacheinfo",
                       "160000,1234567890123456789012345678901234567890," + path});
        }
        outer.git({"commit", "--quiet", "-m", "with the submodule " + path});
    }

    /// Lets git clone submodules from paths.
    static std::vector<std::pair<std::string, std::optional<std::string>>> allowingFiles() {
        return {{"GIT_ALLOW_PROTOCOL", "file"}};
    }

    TemporaryFolder folder;
};

TEST_F(CloneRequest, CreatesAMissingFolder) {
    const std::string destination = folder.path("on/the way/clone");
    const NebscOutcome outcome = runRequest(requestTo(destination, repository.path()));
    EXPECT_TRUE(outcome.json()["error"].is_null());
    EXPECT_EQ(outcome.json()["command"]["currentDirectoryPath"], destination);
    EXPECT_EQ(folder.read("on/the way/clone/a.c"), "first\n");
    EXPECT_EQ(outcome.exitStatus, 0);
}

TEST_F(CloneRequest, AcceptsAnEmptyFolder) {
    fs::create_directory(folder.path("clone"));
    EXPECT_EQ(runRequest(requestTo(folder.path("clone"), repository.path())).exitStatus, 0);
    EXPECT_EQ(folder.read("clone/a.c"), "first\n");
}

TEST_F(CloneRequest, RemovesTheCreatedFoldersAfterAFailure) {
    const NebscOutcome outcome =
        runRequest(requestTo(folder.path("on/the/way"), folder.path("nosuch")));
    EXPECT_THAT(outcome.json()["error"]["text"].get<std::string>(), HasSubstr("nosuch"));
    EXPECT_TRUE(fs::is_empty(folder.path()));
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST_F(CloneRequest, KeepsAnExistingFolderAfterAFailure) {
    fs::create_directory(folder.path("empty"));
    folder.write("full/mine", "mine");
    EXPECT_EQ(runRequest(requestTo(folder.path("empty"), folder.path("nosuch"))).exitStatus, 1);
    EXPECT_EQ(runRequest(requestTo(folder.path("full"), repository.path())).exitStatus, 1);
    EXPECT_TRUE(fs::is_directory(folder.path("empty")));
    EXPECT_EQ(folder.read("full/mine"), "mine");
}

TEST_F(CloneRequest, KeepsACloneThatLacksOnlySubmodules) {
    const TestRepository inner;
    inner.commitFile("i", "1\n");
    addSubmodule(inner, "deep er", folder.path("nosuch"));
    addSubmodule(repository, "there", inner.path());
    const NebscOutcome outcome = runRequest(requestTo(folder.path("clone"), repository.path()),
                                            {.variables = allowingFiles()});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.json()["error"]["files"], JSON({"there/deep er"}));
    EXPECT_EQ(outcome.errors,
              "nebsc: the clone '" + folder.path("clone") +
                  "' is kept; it lacks the submodule 'there/deep er'. To get what is missing, "
                  "run 'git submodule update --init --recursive --force' in it.\n");
    EXPECT_EQ(folder.read("clone/a.c"), "first\n");
    EXPECT_EQ(folder.read("clone/there/i"), "1\n");
}

TEST_F(CloneRequest, LeavesARepositoryAtTheDestinationAlone) {
    addSubmodule(repository, "gone", folder.path("nosuch"));
    const NebscOutcome outcome =
        runRequest(requestTo(repository.path(), repository.path()), {.variables = allowingFiles()});
    EXPECT_EQ(outcome.json()["error"]["class"], "destination-exists");
    EXPECT_THAT(outcome.errors, Not(HasSubstr("is kept")));
}

/// git clones all submodules before it checks any of them out.
TEST_F(CloneRequest, NamesTheSubmodulesThatAreNotCheckedOut) {
    const TestRepository inner;
    inner.commitFile("i", "1\n");
    addSubmodule(repository, "there", inner.path());
    addSubmodule(repository, "sub", folder.path("nosuch"));
    fs::create_directory(folder.path("clone"));
    const NebscOutcome outcome = runRequest(requestTo(folder.path("clone"), repository.path()),
                                            {.variables = allowingFiles()});
    EXPECT_EQ(outcome.json()["error"]["files"], JSON({"sub", "there"}));
    EXPECT_THAT(outcome.errors, HasSubstr("it lacks the submodules 'sub', 'there'. To get"));
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(folder.read("clone/a.c"), "first\n");
}

TEST_F(CloneRequest, ThatLacksSubmodulesIsReplayedWithoutTheClone) {
    addSubmodule(repository, "sub", folder.path("nosuch"));
    const std::string recording = folder.path("recording");
    EXPECT_EQ(runNebsc({"--record", recording, "request"},
                       {.input = requestTo(folder.path("clone"), repository.path()),
                        .variables = allowingFiles()})
                  .exitStatus,
              1);
    fs::rename(folder.path("clone"), folder.path("elsewhere"));
    const NebscOutcome outcome = runNebsc({"replay", recording}, {.folder = "/"});
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.output << outcome.errors;
}

/// git treats the files of a submodule that is cloned but not checked out as deleted.
TEST_F(CloneRequest, TheSuggestedCommandGetsAllMissingSubmodules) {
    const TestRepository inner;
    inner.commitFile("i", "1\n");
    inner.git({"clone", "--quiet", ".", folder.path("away")});
    addSubmodule(repository, "there", inner.path());
    addSubmodule(repository, "sub", folder.path("away"));
    fs::rename(folder.path("away"), folder.path("hidden"));
    const NebscOutcome outcome = runRequest(requestTo(folder.path("clone"), repository.path()),
                                            {.variables = allowingFiles()});
    fs::rename(folder.path("hidden"), folder.path("away"));
    const std::string git = "git ";
    const std::size_t start = outcome.errors.find(git + "submodule");
    ASSERT_NE(start, std::string::npos) << outcome.errors;
    std::istringstream advice(outcome.errors.substr(
        start + git.size(), outcome.errors.find('\'', start) - start - git.size()));
    std::vector<std::string> arguments{"-C", folder.path("clone"), "-c",
                                       "protocol.file.allow=always"};
    arguments.insert(arguments.end(), std::istream_iterator<std::string>(advice), {});
    repository.git(arguments);
    EXPECT_EQ(folder.read("clone/there/i"), "1\n");
    EXPECT_EQ(folder.read("clone/sub/i"), "1\n");
}

TEST_F(CloneRequest, RemovesACloneThatLacksMoreThanSubmodules) {
    addSubmodule(repository, "sub", folder.path("nosuch"));
    repository.write(".gitattributes", "a.c filter=broken\n");
    repository.git({"add", ".gitattributes"});
    repository.git({"commit", "--quiet", "-m", "with a filter"});
    const std::vector<std::pair<std::string, std::optional<std::string>>> brokenFilter{
        {"GIT_CONFIG_COUNT", "2"},
        {"GIT_CONFIG_KEY_0", "filter.broken.smudge"},
        {"GIT_CONFIG_VALUE_0", "false"},
        {"GIT_CONFIG_KEY_1", "filter.broken.required"},
        {"GIT_CONFIG_VALUE_1", "true"}};
    EXPECT_EQ(
        runRequest(requestTo(folder.path("clone"), repository.path()), {.variables = brokenFilter})
            .exitStatus,
        1);
    EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST_F(CloneRequest, RemovesTheCreatedFoldersIfGitFailsSilently) {
    const StandInGit git("", "echo half > done; exit 3");
    const NebscOutcome outcome = runRequest(requestTo(folder.path("a/clone"), repository.path()),
                                            {.variables = {git.path()}});
    EXPECT_EQ(outcome.json()["error"]["localizedDescription"],
              "git exited with status 3 and printed nothing.");
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST_F(CloneRequest, EmptiesAnExistingEmptyFolderAfterAFailure) {
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

TEST_F(CloneRequest, ReportsAFolderThatCannotBeCreated) {
    folder.write("file", "");
    const NebscOutcome outcome =
        runRequest(requestTo(folder.path("file/clone"), repository.path()));
    const JSON json = outcome.json();
    EXPECT_EQ(json["operation"], "GitCloneOperation");
    EXPECT_EQ(json["commands"], JSON::array());
    EXPECT_EQ(json["error"]["domain"], "NEBPOSIXErrorDomain");
    EXPECT_EQ(json["error"]["localizedDescription"],
              "The folder '" + folder.path("file/clone") + "' could not be made: Not a directory.");
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST_F(CloneRequest, CreatesNothingIfNothingRuns) {
    const std::string request = requestTo(folder.path("clone"), repository.path());
    EXPECT_EQ(runNebsc({"request", "--dry-run"}, {.input = request}).exitStatus, 0);
    JSON unreachable = JSON::parse(request);
    unreachable.erase("repositoryToAuthenticate");
    EXPECT_EQ(runRequest(unreachable.dump()).exitStatus, 1);
    EXPECT_EQ(runRequest(requestTo(folder.path("clone"), "--upload-pack=x:y")).exitStatus, 2);
    EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST_F(CloneRequest, RefusesADestinationThatIsNotAbsolute) {
    for (const char* destination : {"\"clone\"", "\"~/clone\"", "\"\"", "\"./clone\"", "7"}) {
        const NebscOutcome outcome =
            runRequest(std::string(R"({"destination": )") + destination +
                           R"(, "type": 29, "sourceTree": {"location": "/x"}})",
                       {.folder = folder.path()});
        EXPECT_EQ(outcome.output, "");
        EXPECT_THAT(outcome.errors,
                    testing::StartsWith("nebsc: the request's member 'destination' is '"));
        EXPECT_THAT(outcome.errors, HasSubstr("expected an absolute path for a clone"));
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
