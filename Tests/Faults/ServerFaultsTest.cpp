// Sends hostile messages to the server, and lets it run out of memory: it continues or exits
// orderly, and leaves no process running.

#include <gmock/gmock.h>

#include <chrono>
#include <sstream>
#include <thread>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/Sanitizers.h"
#include "Support/TemporaryFolder.h"
#include "nebsc/Server/ServerClient.h"

namespace neb::test {
namespace {

using JSON = ServerClient::JSON;

constexpr std::size_t million = 1000000;

class ServerFaults : public HygienicTest {
protected:
    static std::vector<std::string> withAddressSpaceOf(std::size_t bytes) {
        return {"/usr/bin/prlimit", "--as=" + std::to_string(bytes)};
    }

    static std::string planWith(const std::string& start, const std::string& files,
                                const std::string& end) {
        return start + R"(,"method":"sourceControl/plan","params":{"type":15,"files":)" + files +
               "}" + end + "}";
    }
};

/// Returns 6 MB of JSON that would take 600 MB when parsed into values.
std::string manyZeros() {
    constexpr std::size_t count = 3 * million;
    std::string text = "[0";
    text.reserve(2 * count + 2);
    for (std::size_t i = 0; i < count; ++i) {
        text += ",0";
    }
    return text + "]";
}

TEST_F(ServerFaults, AMessageOfManySmallValuesTakesBoundedMemory) {
    if (hasSanitizer) {
        GTEST_SKIP() << "a sanitizer needs more address space than the limit";
    }
    ServerClient client({{"MALLOC_ARENA_MAX", "1"}}, withAddressSpaceOf(400 * million));
    client.initialize();
    const std::string zeros = manyZeros();
    client.sendMessage(planWith(R"({"jsonrpc":"2.0","id":1)", zeros, ""));
    client.sendMessage(planWith(R"({"jsonrpc":"2.0")", zeros, R"(,"id":"behind")"));
    for (const JSON& id : {JSON(1), JSON("behind")}) {
        const JSON error = client.answerTo(id)["error"];
        EXPECT_EQ(error["code"], -32600);
        EXPECT_EQ(error["message"], "The request has more than 250000 values.");
    }
    client.send(2, "sourceControl/plan", {{"type", NEBSourceControlRequestStatus}});
    EXPECT_EQ(client.answerTo(2)["result"]["valid"], true);
}

/// A git that writes its process id and runs for an hour.
class LongWork {
public:
    LongWork() {
        _folder.writeProgram("git", "#!/bin/sh\n[ \"$1\" = --version ] && exit 0\necho $$ > '" +
                                        _folder.path("started") + "'\nexec sleep 3600\n");
    }
    [[nodiscard]] std::pair<std::string, std::optional<std::string>> path() const {
        return {"PATH", _folder.path() + ":/usr/bin:/bin"};
    }
    [[nodiscard]] JSON request() const {
        return {{"type", NEBSourceControlRequestAdd},
                {"sourceTree", {{"location", _folder.path()}}}};
    }
    [[nodiscard]] pid_t process() const {
        pid_t process = 0;
        for (int i = 0; i < 6000 && process == 0; ++i) {
            std::istringstream(_folder.read("started")) >> process;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return process;
    }

private:
    TemporaryFolder _folder;
};

/// Each limit is reached at another step: while the message is received, parsed or answered.
TEST_F(ServerFaults, WithoutMemoryForAMessageItGoesOnOrEndsAndLeavesNothingRunning) {
    if (hasSanitizer) {
        GTEST_SKIP() << "a sanitizer needs more address space than the limit";
    }
    const std::string message =
        R"({"jsonrpc":"2.0","id":7,"method":"sourceControl/plan","params":{"type":15,"destination":")" +
        std::string(16 * million, 'x') + "\"}}";
    bool wentOn = false;
    bool ended = false;
    for (const std::size_t megabytes : {65U, 75U, 100U, 120U}) {
        SCOPED_TRACE(megabytes);
        const LongWork work;
        ServerClient client({work.path(), {"MALLOC_ARENA_MAX", "1"}},
                            withAddressSpaceOf(megabytes * million));
        client.initialize();
        client.send("running", "sourceControl/perform", work.request());
        client.send("waiting", "sourceControl/perform", work.request());
        const pid_t process = work.process();
        ASSERT_GT(process, 0);
        client.sendMessage(message);
        client.send("next", "sourceControl/plan", {{"type", NEBSourceControlRequestStatus}});
        const JSON answer = client.answerTo("next");
        if (!answer.is_null()) {
            wentOn = true;
            EXPECT_THAT(client.others(), testing::SizeIs(1));
            EXPECT_EQ(client.others().front()["id"], 7);
            EXPECT_EQ(client.others().front()["error"]["code"], -32603);
            EXPECT_EQ(answer["result"]["valid"], true);
            client.send({}, "exit");
        } else {
            ended = true;
        }
        EXPECT_EQ(client.exitStatus(), 1) << "terminated by a signal";
        EXPECT_FALSE(isLiveProcess(process));
    }
    EXPECT_TRUE(wentOn);
    EXPECT_TRUE(ended);
}

/// Each limit is reached at another record. With less, the server itself may have too little.
TEST_F(ServerFaults, WithoutMemoryForARecordTheRequestFailsAndTheServerGoesOn) {
    if (hasSanitizer) {
        GTEST_SKIP() << "a sanitizer needs more address space than the limit";
    }
    const TemporaryFolder folder;
    folder.writeProgram(
        "git",
        "#!/bin/sh\n[ \"$1\" = --version ] && exit 0\n"
        "yes '%0123456789ab@Ann@ann.example@1500000000@A message^' | head -n 20000 | "
        "tr -d '\\n' | tr '%@^' '\\000\\n\\001'"
        "\n");
    bool hasFailedForMemory = false;
    for (const std::size_t megabytes : {32U, 36U, 40U}) {
        SCOPED_TRACE(megabytes);
        ServerClient client({{"PATH", folder.path() + ":/usr/bin:/bin"}, {"MALLOC_ARENA_MAX", "1"}},
                            withAddressSpaceOf(megabytes * million));
        client.initialize();
        client.send(
            1, "sourceControl/perform",
            {{"type", NEBSourceControlRequestLog}, {"sourceTree", {{"location", folder.path()}}}});
        const JSON answer = client.answerTo(1);
        ASSERT_FALSE(answer.is_null());
        if (answer.contains("result") && !answer["result"]["error"].is_null()) {
            EXPECT_EQ(answer["result"]["error"]["class"], "out-of-memory");
            hasFailedForMemory = true;
        }
        client.send(2, "sourceControl/plan", {{"type", NEBSourceControlRequestStatus}});
        EXPECT_EQ(client.answerTo(2)["result"]["valid"], true);
        client.send({}, "exit");
        EXPECT_EQ(client.exitStatus(), 1) << "terminated by a signal";
    }
    EXPECT_TRUE(hasFailedForMemory);
}

}  // namespace
}  // namespace neb::test
