// Runs nebsc where no thread can be started or a newer system call is missing: it still works.

#include <gmock/gmock.h>

#include <filesystem>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/Sanitizers.h"
#include "Support/TestRepository.h"
#include "nebsc/NebscRun.h"
#include "nebsc/Server/ServerClient.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using JSON = nlohmann::ordered_json;
using Variable = std::pair<std::string, std::optional<std::string>>;

class MissingServices : public HygienicTest {
protected:
    void SetUp() override {
        HygienicTest::SetUp();
        repository.commitFile("a.c", "1\n");
        repository.write("new.c", "1\n");
    }

    static Variable preloaded(const std::string& name) {
        const std::string path = std::string(NEB_TEST_MODULES) + "/" + name + ".so";
        EXPECT_TRUE(fs::exists(path));
        return {"LD_PRELOAD", path};
    }

    const TestRepository repository;
};

TEST_F(MissingServices, WithoutAThreadCommandsAndRequestsDoTheirWork) {
    if (hasSanitizer) {
        GTEST_SKIP() << "LD_PRELOAD does not work with a sanitizer";
    }
    const Variable noThreads = preloaded("NoThreads");
    const NebscOutcome status = runNebsc(
        {"status"},
        {.folder = repository.path(), .variables = {noThreads}, .hasTerminalForErrors = true});
    EXPECT_EQ(status.errors, "");
    EXPECT_THAT(status.output, testing::HasSubstr("new.c"));
    EXPECT_EQ(status.exitStatus, 0);
    const NebscOutcome completion =
        runNebsc({"complete", "--", "checkout", ""},
                 {.folder = repository.path(), .variables = {noThreads}});
    EXPECT_THAT(completion.output, testing::HasSubstr("main\t"));
    EXPECT_EQ(completion.exitStatus, 0) << completion.errors;
    for (const std::int32_t type :
         {NEBSourceControlRequestLog, NEBSourceControlRequestListRemotes}) {
        const JSON request{{"type", type}, {"sourceTree", {{"location", repository.path()}}}};
        const NebscOutcome outcome = runRequest(request.dump(), {.variables = {noThreads}});
        EXPECT_EQ(outcome.exitStatus, 0) << outcome.output << outcome.errors;
    }
}

TEST_F(MissingServices, WithoutAThreadTheServerAnswers) {
    if (hasSanitizer) {
        GTEST_SKIP() << "LD_PRELOAD does not work with a sanitizer";
    }
    ServerClient client({preloaded("NoThreads")});
    EXPECT_EQ(client.initialize()["result"]["serverInfo"]["name"], "nebsc");
    client.send(
        1, "sourceControl/perform",
        {{"type", NEBSourceControlRequestLog}, {"sourceTree", {{"location", repository.path()}}}});
    EXPECT_EQ(client.answerTo(1)["result"]["result"].size(), 1U);
    client.send(2, "shutdown");
    EXPECT_EQ(client.answerTo(2)["result"], nullptr);
    client.send({}, "exit");
    EXPECT_EQ(client.exitStatus(), 0);
}

/// A server that can watch few folders, or has no threads.
class WatchWithoutServices : public MissingServices {
protected:
    static JSON watch(ServerClient& client, const std::string& location) {
        client.initialize();
        client.send(1, "sourceControl/watch",
                    {{"sourceTree", {{"location", location}}}, {"workingTree", true}});
        return client.answerTo(1);
    }
    /// Returns the params of the notification with which a watch ends.
    static JSON endOfWatch(ServerClient& client) {
        JSON message = client.receive();
        while (message["method"] == "sourceControl/didChange") {
            message = client.receive();
        }
        EXPECT_EQ(message["method"], "sourceControl/watchEnded");
        return message["params"];
    }
    void makeManyFolders() const {
        for (int i = 0; i < 30; ++i) {
            repository.write("many/" + std::to_string(i) + "/file", "1");
        }
    }
};

TEST_F(WatchWithoutServices, BeyondTheLimitOfFoldersIsRefused) {
    if (hasSanitizer) {
        GTEST_SKIP() << "LD_PRELOAD does not work with a sanitizer";
    }
    makeManyFolders();
    ServerClient client({preloaded("FewWatches")});
    const JSON error = watch(client, repository.path())["error"];
    EXPECT_EQ(error["code"], -32803);
    EXPECT_EQ(error["data"]["class"], "system-limit");
    EXPECT_THAT(error["message"].get<std::string>(),
                testing::HasSubstr("fs.inotify.max_user_watches"));
}

TEST_F(WatchWithoutServices, EndsWhenItReachesTheLimitOfFolders) {
    if (hasSanitizer) {
        GTEST_SKIP() << "LD_PRELOAD does not work with a sanitizer";
    }
    ServerClient client({preloaded("FewWatches")});
    EXPECT_EQ(watch(client, repository.path())["result"]["watch"], "1");
    makeManyFolders();
    const JSON end = endOfWatch(client);
    EXPECT_EQ(end["class"], "system-limit");
    EXPECT_EQ(end["watch"], "1");
}

TEST_F(WatchWithoutServices, WithoutAThreadReportsItsEnd) {
    if (hasSanitizer) {
        GTEST_SKIP() << "LD_PRELOAD does not work with a sanitizer";
    }
    ServerClient client({preloaded("NoThreads")});
    EXPECT_EQ(watch(client, repository.path())["result"]["watch"], "1");
    EXPECT_EQ(endOfWatch(client)["class"], "system-limit");
}

TEST_F(MissingServices, WithoutRenameat2AnExportIsWholeAndOverwritesNothing) {
    if (hasSanitizer) {
        GTEST_SKIP() << "LD_PRELOAD does not work with a sanitizer";
    }
    const TemporaryFolder folder;
    NebscSurroundings surroundings{.folder = repository.path(),
                                   .variables = {preloaded("OldKernel")}};
    const NebscOutcome done =
        runNebsc({"export", "HEAD", "a.c", folder.path("copy.c")}, surroundings);
    EXPECT_EQ(done.exitStatus, 0) << done.errors;
    EXPECT_EQ(folder.read("copy.c"), "1\n");
    EXPECT_EQ(fs::hard_link_count(folder.path("copy.c")), 1U);
    surroundings.variables.emplace_back("NEB_TEST_LATE_FILE", "1");
    const NebscOutcome late =
        runNebsc({"export", "HEAD", "a.c", folder.path("late.c")}, surroundings);
    EXPECT_THAT(late.errors, testing::HasSubstr("could not be written: File exists"));
    EXPECT_EQ(late.exitStatus, 1);
    EXPECT_EQ(folder.read("late.c"), "");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 2);
}

}  // namespace
}  // namespace neb::test
