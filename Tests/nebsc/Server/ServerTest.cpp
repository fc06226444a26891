// `nebsc serve`, run as a program.

#include <gmock/gmock.h>

#include "NEBFoundation/NEBSourceControlPlugIn.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/TestRepository.h"
#include "nebsc/NebscRun.h"
#include "nebsc/Server/ServerClient.h"
#include "nebsc/Server/SlowGit.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using JSON = ServerClient::JSON;

JSON commitOf(const TestRepository& repository, const std::string& file) {
    JSON request = requestAbout(NEBSourceControlRequestCommit, repository.path());
    request["files"] = {repository.path(file)};
    request["options"] = {{"NEBSourceControlRequestOptionMessage", file}};
    return request;
}

// ---- responses --------------------------------------------------------------------------------

TEST(Server, DescribesItself) {
    ServerClient client;
    const JSON result = client.initialize()["result"];
    EXPECT_EQ(result["serverInfo"]["name"], "nebsc");
    EXPECT_NE(result["serverInfo"]["version"], "");
    EXPECT_EQ(result["capabilities"], JSON({{"partialResults", true},
                                            {"background", true},
                                            {"credentials", true},
                                            {"describe", true},
                                            {"record", true},
                                            {"trust", {"trusted", "inspect"}},
                                            {"cursors", {{"max", 64}}},
                                            {"watch", {{"max", 64}}}}));
    EXPECT_EQ(result["contractVersion"], NEBSourceControlContractVersion);
    EXPECT_THAT(result["gitVersion"].get<std::string>(), testing::StartsWith("git version "));
    EXPECT_EQ(result["requestTypes"].size(), NEBSourceControlAllRequestTypes().size());
    EXPECT_EQ(result["requestTypes"][18],
              JSON({{"type", NEBSourceControlRequestLog}, {"name", "log"}}));
    client.send(1, "shutdown");
    EXPECT_EQ(client.receive(), JSON({{"jsonrpc", "2.0"}, {"id", 1}, {"result", nullptr}}));
    client.send(2, "sourceControl/plan", requestAbout(NEBSourceControlRequestLog, "/"));
    EXPECT_EQ(client.answerTo(2)["error"]["code"], -32600);
    client.send({}, "exit");
    EXPECT_EQ(client.exitStatus(), 0);
}

TEST(Server, RespondsLikeTheRequestCommand) {
    const TestRepository repository;
    repository.commitFile("grüße.c", "1\n", "First");
    ServerClient client;
    client.initialize();
    const std::int32_t unsupported = 12;
    const std::int32_t unknown = 40;
    const std::int32_t types[] = {NEBSourceControlRequestStatus,
                                  NEBSourceControlRequestLog,
                                  NEBSourceControlRequestCurrentBranch,
                                  unsupported,
                                  unknown,
                                  NEBSourceControlRequestAddRemote};
    for (const std::int32_t type : types) {
        const JSON request = requestAbout(type, repository.path());
        client.send(type, "sourceControl/perform", request);
        JSON answer = client.answerTo(type)["result"];
        JSON expected = runRequest(request.dump(), {}).json();
        for (JSON* outcome : {&answer, &expected}) {
            for (JSON& command : (*outcome)["commands"]) {
                command["milliseconds"] = 0;
            }
        }
        EXPECT_EQ(answer, expected) << type;
    }
}

TEST(Server, PlansWithoutRunning) {
    const TestRepository repository;
    ServerClient client;
    client.initialize();
    client.send("p", "sourceControl/plan",
                requestAbout(NEBSourceControlRequestLog, repository.path()));
    const JSON outcome = client.answerTo("p")["result"];
    EXPECT_EQ(outcome["operation"], "GitLogOperation");
    EXPECT_THAT(outcome["command"]["arguments"].dump(), HasSubstr("--abbrev=12"));
    EXPECT_EQ(outcome["commands"], JSON::array());
}

TEST(Server, KeepsTheReportsOfEachRequestApart) {
    ServerClient client;
    client.initialize();
    for (int i = 0; i < 20; ++i) {
        client.send(i, "sourceControl/plan", requestAbout(i % 2 == 0 ? 14 : 15, "/"));
    }
    for (int i = 0; i < 20; ++i) {
        const JSON answer = client.receive();
        EXPECT_EQ(answer["result"]["reports"].size(), answer["id"].get<int>() % 2 == 0 ? 1U : 0U);
    }
}

// ---- errors -----------------------------------------------------------------------------------

TEST(Server, RefusesInvalidMessagesAndContinues) {
    ServerClient client;
    client.send(1, "sourceControl/perform", requestAbout(NEBSourceControlRequestStatus, "/"));
    EXPECT_EQ(client.answerTo(1)["error"]["code"], -32002);
    client.initialize();
    client.send(2, "initialize", JSON::object());
    EXPECT_EQ(client.answerTo(2)["error"]["code"], -32600);
    client.send(3, "sourceControl/nothing");
    EXPECT_EQ(client.answerTo(3)["error"]["code"], -32601);
    client.send(4, "$/cancelRequest", {{"id", 1}});
    EXPECT_EQ(client.answerTo(4)["error"]["code"], -32601);
    client.send(5, "sourceControl/perform",
                {{"type", NEBSourceControlRequestStatus}, {"sourcetree", 1}});
    const JSON unknown = client.answerTo(5)["error"];
    EXPECT_EQ(unknown["code"], -32602);
    EXPECT_THAT(unknown["message"].get<std::string>(), HasSubstr("'sourcetree' is unknown"));
    client.send(6, "sourceControl/perform");
    EXPECT_EQ(client.answerTo(6)["error"]["code"], -32602);
    JSON option = requestAbout(NEBSourceControlRequestLog, "/");
    option["startingRevision"] = "--output=x";
    client.send(7, "sourceControl/perform", option);
    const JSON refused = client.answerTo(7)["error"];
    EXPECT_EQ(refused["code"], -32602);
    EXPECT_THAT(refused["message"].get<std::string>(), HasSubstr("--output=x"));
    client.sendMessage("no JSON");
    EXPECT_EQ(client.answerTo(nullptr)["error"]["code"], -32700);
    client.sendMessage(R"([{"jsonrpc":"2.0","id":1,"method":"shutdown"}])");
    EXPECT_EQ(client.answerTo(nullptr)["error"]["code"], -32600);
    client.send({}, "sourceControl/perform", requestAbout(NEBSourceControlRequestStatus, "/"));
    client.send({}, "$/cancelRequest", {{"id", "unknown"}});
    client.send({}, "$/cancelRequest");
    client.send({}, "initialized", JSON::object());
    client.send(8, "sourceControl/plan", requestAbout(NEBSourceControlRequestStatus, "/"));
    EXPECT_EQ(client.answerTo(8)["result"]["operation"], "GitStatusOperation");
    EXPECT_THAT(client.others(), testing::IsEmpty());
}

TEST(Server, ReportsATypeWithoutOperationAsTheOutcomesError) {
    ServerClient client;
    client.initialize();
    int id = 0;
    for (const char* method : {"sourceControl/perform", "sourceControl/plan"}) {
        for (const std::int32_t type : {12, 99}) {
            client.send(++id, method, requestAbout(type, "/"));
            const JSON outcome = client.answerTo(id)["result"];
            EXPECT_EQ(outcome["operation"], nullptr);
            EXPECT_EQ(outcome["error"]["class"], "request-invalid") << method << type;
        }
    }
}

TEST(Server, SkipsAMessageThatIsTooLong) {
    ServerClient client;
    client.initialize();
    client.sendMessage(std::string(100'000'000, ' '));
    const JSON error = client.answerTo(nullptr)["error"];
    EXPECT_EQ(error["code"], -32600);
    EXPECT_THAT(error["message"].get<std::string>(), HasSubstr("100000000 bytes"));
    client.send(1, "sourceControl/plan", requestAbout(NEBSourceControlRequestStatus, "/"));
    EXPECT_EQ(client.answerTo(1)["result"]["valid"], true);
}

TEST(Server, RefusesTheIdOfARunningRequest) {
    const SlowGit git;
    ServerClient client({git.path()});
    client.initialize();
    client.send(1, "sourceControl/perform",
                requestAbout(NEBSourceControlRequestStatus, git.location()));
    const pid_t process = git.process();
    client.send(1, "sourceControl/plan",
                requestAbout(NEBSourceControlRequestStatus, git.location()));
    EXPECT_EQ(client.answerTo(1)["error"]["code"], -32600);
    client.send({}, "$/cancelRequest", {{"id", 1}});
    EXPECT_EQ(client.answerTo(1)["error"]["code"], -32800);
    EXPECT_FALSE(isLiveProcess(process));
}

// ---- parallel requests ------------------------------------------------------------------------

TEST(Server, QueuesRequestsThatWriteToOneWorkingCopy) {
    const TestRepository repository;
    repository.commitFile("first", "1");
    std::string files;
    constexpr int count = 12;
    for (int i = 0; i < count; ++i) {
        repository.write("file" + std::to_string(i), "1");
    }
    repository.git({"add", "."});
    ServerClient client;
    client.initialize();
    for (int i = 0; i < count; ++i) {
        client.send(i, "sourceControl/perform", commitOf(repository, "file" + std::to_string(i)));
    }
    for (int i = 0; i < count; ++i) {
        const JSON answer = client.receive();
        EXPECT_EQ(answer["result"]["error"], nullptr) << answer;
    }
    EXPECT_EQ(repository.git({"rev-list", "--count", "HEAD"}), std::to_string(count + 1) + "\n");
    std::string subjects;
    for (int i = 0; i < count; ++i) {
        subjects += "file" + std::to_string(i) + "\n";
    }
    EXPECT_EQ(
        repository.git({"log", "--reverse", "--format=%s", "HEAD~" + std::to_string(count) + ".."}),
        subjects);
}

TEST(Server, RunsReadsDuringAWriteAndCancelsWaitingRequests) {
    const SlowGit git;
    ServerClient client({git.path()});
    client.initialize();
    JSON add = requestAbout(NEBSourceControlRequestAdd, git.location());
    client.send("running", "sourceControl/perform", add);
    const pid_t process = git.process();
    client.send("waiting", "sourceControl/perform", add);
    client.send("reading", "sourceControl/perform",
                requestAbout(NEBSourceControlRequestStatus, git.quickLocation()));
    EXPECT_EQ(client.answerTo("reading")["result"]["type"], NEBSourceControlRequestStatus);
    client.send({}, "$/cancelRequest", {{"id", "waiting"}});
    EXPECT_EQ(client.answerTo("waiting")["error"]["code"], -32800);
    EXPECT_TRUE(isLiveProcess(process));
    client.send({}, "$/cancelRequest", {{"id", "running"}});
    const JSON error = client.answerTo("running")["error"];
    EXPECT_EQ(error["code"], -32800);
    EXPECT_EQ(error["data"]["error"]["class"], "cancelled");
    EXPECT_FALSE(isLiveProcess(process));
    EXPECT_THAT(client.others(), testing::IsEmpty());
}

TEST(Server, RefusesAProgressTokenOfAnotherKind) {
    ServerClient client;
    client.initialize();
    for (const auto& [token, kind] : {std::pair<JSON, std::string>{JSON::object(), "an object"},
                                      {1.5, "a number that is not a 64-bit integer"},
                                      {true, "a boolean"}}) {
        client.send(1, "sourceControl/plan",
                    {{"type", NEBSourceControlRequestStatus}, {"workDoneToken", token}});
        const JSON error = client.answerTo(1)["error"];
        EXPECT_EQ(error["code"], -32602);
        EXPECT_EQ(error["message"], "The request's member 'workDoneToken' is " + kind +
                                        "; expected a string or an integer.");
    }
    client.send(2, "sourceControl/plan",
                {{"type", NEBSourceControlRequestStatus}, {"workDoneToken", nullptr}});
    EXPECT_EQ(client.answerTo(2)["result"]["valid"], true);
}

TEST(Server, ReportsTheProgressOfSlowRequests) {
    const SlowGit git;
    ServerClient client({git.path()});
    client.initialize();
    JSON slow = requestAbout(NEBSourceControlRequestStatus, git.location());
    slow["workDoneToken"] = "t";
    JSON quick = requestAbout(NEBSourceControlRequestStatus, git.quickLocation());
    quick["workDoneToken"] = 5;
    client.send(1, "sourceControl/perform", quick);
    client.send(2, "sourceControl/perform", slow);
    const auto progress = [](const JSON& token, const JSON& value) {
        return JSON{{"jsonrpc", "2.0"},
                    {"method", "$/progress"},
                    {"params", {{"token", token}, {"value", value}}}};
    };
    EXPECT_EQ(client.answerTo(1)["result"]["type"], NEBSourceControlRequestStatus);
    EXPECT_EQ(client.receive(), progress("t", {{"kind", "begin"}, {"title", "status"}}));
    EXPECT_EQ(client.receive(), progress("t", {{"kind", "report"}, {"message", "1 s"}}));
    client.send({}, "$/cancelRequest", {{"id", 2}});
    EXPECT_EQ(client.answerTo(2)["error"]["code"], -32800);
    EXPECT_EQ(client.others().back(), progress("t", {{"kind", "end"}}));
}

}  // namespace
}  // namespace neb::test
