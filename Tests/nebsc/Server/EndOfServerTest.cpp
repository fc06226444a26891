// How `nebsc serve` ends.

#include <gmock/gmock.h>
#include <signal.h>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Server/MessageDecoder.h"
#include "Support/HygienicTest.h"
#include "nebsc/NebscRun.h"
#include "nebsc/Server/ServerClient.h"
#include "nebsc/Server/SlowGit.h"

namespace neb::test {
namespace {

using nebsc::MessageDecoder;
using testing::HasSubstr;
using JSON = ServerClient::JSON;

std::string firstMessage() {
    return MessageDecoder::framed(
        JSON{{"jsonrpc", "2.0"}, {"id", 1}, {"method", "initialize"}}.dump());
}

/// The version of git in the response to "initialize" when these messages follow in the same write
/// and the client then closes its stream.
JSON gitVersionBefore(
    const std::vector<std::string>& methods,
    const std::vector<std::pair<std::string, std::optional<std::string>>>& variables = {}) {
    ServerClient client(variables);
    std::string bytes = firstMessage();
    for (const std::string& method : methods) {
        JSON message{{"jsonrpc", "2.0"}, {"method", method}};
        if (method == "shutdown") {
            message["id"] = 2;
        }
        bytes += MessageDecoder::framed(message.dump());
    }
    client.sendBytes(bytes);
    client.close();
    JSON response = client.answerTo(1);
    EXPECT_EQ(client.exitStatus(), methods.size() == 2 ? 0 : 1);
    return response["result"]["gitVersion"];
}

TEST(Server, CompletesTheResponseToInitializeBeforeItEnds) {
    const StandInGit slow("", "sleep 0.1; echo 'git version 9.9'");
    for (const auto& methods : {std::vector<std::string>{"shutdown", "exit"}, {"exit"}, {}}) {
        EXPECT_EQ(gitVersionBefore(methods, {slow.path()}), "git version 9.9");
        for (int i = 0; i < 10; ++i) {
            EXPECT_THAT(gitVersionBefore(methods).dump(), HasSubstr("git version "));
        }
    }
}

TEST(Server, StopsWaitingForTheVersionIfASignalArrives) {
    const TemporaryFolder folder;
    const StandInGit stuck("", "echo $$ > '" + folder.path("started") + "'; exec sleep 3600");
    ServerClient client({stuck.path()});
    client.sendBytes(firstMessage());
    client.close();
    const pid_t process = std::stoi(awaitedLine(folder, "started"));
    EXPECT_TRUE(isLiveProcess(process));
    client.signal(SIGTERM);
    EXPECT_EQ(client.answerTo(1)["result"]["gitVersion"], nullptr);
    EXPECT_EQ(client.exitStatus(), 128 + SIGTERM);
    EXPECT_FALSE(isLiveProcess(process));
}

class EndOfServer : public testing::Test {
protected:
    EndOfServer() {
        client.initialize();
        client.send(1, "sourceControl/perform",
                    requestAbout(NEBSourceControlRequestStatus, git.location()));
        process = git.process();
    }
    void expectEnd(int exitStatus) {
        EXPECT_EQ(client.exitStatus(), exitStatus);
        EXPECT_FALSE(isLiveProcess(process));
    }

    const SlowGit git;
    ServerClient client{{git.path()}};
    pid_t process = 0;
};

TEST_F(EndOfServer, AfterExitEndsAllProcesses) {
    client.send({}, "exit");
    EXPECT_EQ(client.answerTo(1)["error"]["code"], -32800);
    expectEnd(1);
}

TEST_F(EndOfServer, AfterAClosedInputEndsAllProcesses) {
    client.close();
    expectEnd(1);
}

/// So many requests that the server has stopped reading.
TEST_F(EndOfServer, AfterAClosedInputWhileManyRequestsWait) {
    constexpr int moreThanMayWait = 4200;
    for (int i = 2; i < moreThanMayWait; ++i) {
        client.send(i, "sourceControl/perform",
                    requestAbout(NEBSourceControlRequestStatus, git.location()));
    }
    client.close();
    expectEnd(1);
}

TEST_F(EndOfServer, AfterAnIncompleteMessage) {
    client.sendBytes("Content-Length: 20\r\n\r\n{");
    client.close();
    expectEnd(1);
}

TEST_F(EndOfServer, AfterAClosedOutput) {
    client.stopReading();
    client.send(2, "nothing");
    expectEnd(1);
}

TEST_F(EndOfServer, AfterAnInvalidHeader) {
    client.sendBytes("{\"jsonrpc\": \"2.0\"}\r\n\r\n");
    EXPECT_EQ(client.answerTo(nullptr)["error"]["code"], -32700);
    expectEnd(1);
}

TEST_F(EndOfServer, AfterASignal) {
    client.signal(SIGTERM);
    expectEnd(128 + SIGTERM);
}

/// The responses fill the pipe.
TEST(Server, EndsIfItsResponsesAreNotRead) {
    ServerClient client;
    client.initialize();
    for (int i = 0; i < 2000; ++i) {
        client.send(i, "sourceControl/plan", requestAbout(NEBSourceControlRequestStatus, "/"));
    }
    client.close();
    EXPECT_EQ(client.exitStatus(), 1);
}

}  // namespace
}  // namespace neb::test
