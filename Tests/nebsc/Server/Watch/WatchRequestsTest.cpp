// "sourceControl/watch" and "sourceControl/unwatch": their beginning, their end and their errors.

#include <filesystem>

#include "Support/HygienicTest.h"
#include "nebsc/Server/SlowGit.h"
#include "nebsc/Server/Watch/WatchTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;

/// Also looks at the process of the server.
class WatchRequestsTest : public WatchTest {
protected:
    /// The number of open descriptors with "inotify" in their target.
    [[nodiscard]] long watchers() const {
        long count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(
                 "/proc/" + std::to_string(client.process()) + "/fd")) {
            std::error_code closedMeanwhile;
            const auto target = std::filesystem::read_symlink(entry.path(), closedMeanwhile);
            count += target.string().find("inotify") != std::string::npos ? 1 : 0;
        }
        return count;
    }
    JSON refusalOf(JSON params) { return call("sourceControl/watch", std::move(params))["error"]; }
    JSON refusalOf(const std::string& location, bool workingTree = false) {
        return refusalOf({{"sourceTree", {{"location", location}}}, {"workingTree", workingTree}});
    }
};

TEST_F(WatchRequestsTest, LeaveNothingBehind) {
    const std::string first = watch(repository.path());
    const std::string second = watch(repository.path(), true);
    EXPECT_NE(first, second);
    EXPECT_EQ(watchers(), 2);
    EXPECT_EQ(unwatch(first)["result"], nullptr);
    EXPECT_EQ(watchers(), 1);
    repository.git({"tag", "v1"});
    EXPECT_EQ(client.receive()["params"]["watch"], second);
    EXPECT_EQ(unwatch(second)["result"], nullptr);
    EXPECT_EQ(watchers(), 0);
    repository.git({"tag", "v2"});
    client.send("end", "shutdown");
    EXPECT_EQ(client.answerTo("end")["result"], nullptr);
    EXPECT_THAT(client.others(), testing::IsEmpty());
}

TEST_F(WatchRequestsTest, EndWithTheClient) {
    watch(repository.path(), true);
    client.send("end", "shutdown");
    client.answerTo("end");
    client.send({}, "exit");
    EXPECT_EQ(client.exitStatus(), 0);
}

TEST_F(WatchRequestsTest, EndWithTheRepository) {
    for (const bool isMoved : {true, false}) {
        const TestRepository other;
        const std::string name = watch(other.path());
        if (isMoved) {
            std::filesystem::rename(other.path(), other.path() + ".moved");
        } else {
            std::filesystem::remove_all(other.path());
        }
        JSON message = client.receive();
        while (message["method"] == "sourceControl/didChange") {
            message = client.receive();
        }
        EXPECT_EQ(message["method"], "sourceControl/watchEnded");
        EXPECT_EQ(message["params"]["watch"], name);
        EXPECT_EQ(message["params"]["location"], other.path());
        EXPECT_EQ(message["params"]["class"], "not-a-repository");
        EXPECT_THAT(message["params"]["message"].get<std::string>(),
                    HasSubstr("was removed or moved."));
        EXPECT_EQ(watchers(), 0);
    }
}

TEST_F(WatchRequestsTest, NeedAnExistingRepository) {
    const TemporaryFolder folder;
    folder.write("file", "1");
    const JSON error = refusalOf(folder.path());
    EXPECT_EQ(error["code"], -32803);
    EXPECT_EQ(error["data"]["class"], "not-a-repository");
    EXPECT_THAT(error["message"].get<std::string>(),
                HasSubstr("'" + folder.path() + "' cannot be watched: not a git repository"));
    for (const char* name : {"file", "missing"}) {
        const JSON refusal = refusalOf(folder.path(name));
        EXPECT_EQ(refusal["code"], -32803) << name;
        EXPECT_EQ(refusal["data"]["class"], "not-started") << name;
    }
    repository.git({"init", "-q", "--bare", folder.path("bare.git")});
    const JSON bare = refusalOf(folder.path("bare.git"), true);
    EXPECT_EQ(bare["code"], -32803);
    EXPECT_EQ(bare["data"]["class"], "no-work-tree");
    EXPECT_EQ(watchers(), 0);
}

TEST_F(WatchRequestsTest, RefuseInvalidParams) {
    const std::string path = repository.path();
    const std::pair<JSON, std::string> rows[] = {
        {nullptr, "requires the member 'sourceTree'"},
        {JSON::object(), "requires the member 'sourceTree'"},
        {{{"sourceTree", JSON::object()}}, "requires the member 'sourceTree'"},
        {{{"sourceTree", {{"location", "relative"}}}}, "expected an absolute path"},
        {{{"sourceTree", {{"location", "https://host/r.git"}}}}, "expected the absolute path"},
        {{{"sourceTree", {{"location", path}}}, {"workingTree", 1}}, "expected true or false"},
        {{{"sourceTree", {{"location", path}}}, {"files", {"a"}}}, "'files' is unknown"},
    };
    for (const auto& [params, expected] : rows) {
        const JSON error = refusalOf(params);
        EXPECT_EQ(error["code"], -32602) << params;
        EXPECT_THAT(error["message"].get<std::string>(), HasSubstr(expected));
    }
}

TEST_F(WatchRequestsTest, EndOnlyOnce) {
    const std::string name = watch(repository.path());
    EXPECT_EQ(unwatch(name)["result"], nullptr);
    EXPECT_EQ(unwatch(name)["error"]["code"], -32602);
    EXPECT_EQ(unwatch("unknown")["error"]["message"],
              "The watch 'unknown' is unknown or has ended.");
    EXPECT_EQ(call("sourceControl/unwatch", {{"watch", 1}})["error"]["code"], -32602);
    EXPECT_EQ(call("sourceControl/unwatch", JSON::object())["error"]["code"], -32602);
}

TEST_F(WatchRequestsTest, AreLimitedInNumber) {
    for (int i = 0; i < 64; ++i) {
        watch(repository.path());
    }
    EXPECT_EQ(refusalOf(repository.path())["code"], -32600);
    unwatch("1");
    EXPECT_EQ(watch(repository.path()), "66");
}

TEST_F(WatchRequestsTest, CanBeCancelledWhileTheyBegin) {
    const SlowGit git;
    ServerClient slow({git.path()});
    slow.initialize();
    slow.send(1, "sourceControl/watch", {{"sourceTree", {{"location", git.location()}}}});
    const pid_t process = git.process();
    slow.send({}, "$/cancelRequest", {{"id", 1}});
    EXPECT_EQ(slow.answerTo(1)["error"]["code"], -32800);
    EXPECT_FALSE(isLiveProcess(process));
    slow.send(2, "sourceControl/unwatch", {{"watch", "1"}});
    EXPECT_EQ(slow.answerTo(2)["error"]["code"], -32602);
}

}  // namespace
}  // namespace neb::test
