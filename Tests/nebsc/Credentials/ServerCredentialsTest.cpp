// "sourceControl/credentials": the server asks its client for what git and ssh need.

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/InstalledGit.h"
#include "Support/TestRepository.h"
#include "nebsc/Credentials/AuthenticatingServers.h"
#include "nebsc/NebscRun.h"
#include "nebsc/Server/SlowGit.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// A server whose sockets are in a folder of the test.
class AskingServer {
public:
    using JSON = ServerClient::JSON;

    explicit AskingServer(VariableChanges variables = {}, bool canAsk = true)
        : client(withFolder(std::move(variables), sockets.path())) {
        client.send("initialize", "initialize", {{"capabilities", {{"credentials", canAsk}}}});
        EXPECT_EQ(client.answerTo("initialize")["result"]["capabilities"]["credentials"], true);
    }

    /// Sends a request for the branches of the remote repository.
    void ask(const JSON& id, const std::string& url, bool isBackground = false) {
        JSON request = branchesOf(url);
        request["background"] = isBackground;
        client.send(id, "sourceControl/perform", request);
    }
    /// Returns that request.
    [[nodiscard]] JSON branchesOf(const std::string& url) const {
        JSON request = requestAbout(NEBSourceControlRequestListRemoteBranches, sockets.path());
        request["files"] = {url};
        return request;
    }
    /// Returns the next message, which must be a question of this kind. git 2.55 and newer ask for
    /// the name before the password even if the URL has it.
    JSON question(std::string_view kind) {
        JSON message = client.receive();
        if (kind == "password" && message["params"]["kind"] == "name" && isGitSince(55)) {
            answer(message, {{"value", "ann"}});
            message = client.receive();
        }
        EXPECT_EQ(message["method"], "sourceControl/credentials");
        EXPECT_EQ(message["params"]["kind"], kind);
        return message;
    }
    void answer(const JSON& question, const JSON& result) {
        client.sendMessage(
            JSON{{"jsonrpc", "2.0"}, {"id", question["id"]}, {"result", result}}.dump());
    }
    void answerNext(std::string_view kind, const std::string& value) {
        answer(question(kind), {{"value", value}});
    }
    /// Returns the class of the error in the response to the request.
    JSON errorClass(const JSON& id) { return client.answerTo(id)["result"]["error"]["class"]; }
    /// Returns the message that withdraws a question, which arrives before or after the response.
    JSON withdrawal() {
        JSON message = client.others().empty() ? client.receive() : client.others().back();
        EXPECT_EQ(message["method"], "$/cancelRequest");
        return message;
    }
    void expectSuccess(const JSON& id) {
        const JSON outcome = client.answerTo(id)["result"];
        EXPECT_EQ(outcome["error"], nullptr) << outcome;
        EXPECT_THAT(outcome["result"].dump(), HasSubstr("\"main\""));
        EXPECT_THAT(outcome.dump(), Not(HasSubstr(HTTPServer::password)));
    }
    /// The private folder of the server; empty before the first request that may need it.
    [[nodiscard]] std::string folder() const {
        for (const auto& entry : std::filesystem::directory_iterator(sockets.path())) {
            return entry.path();
        }
        return {};
    }

private:
    static VariableChanges withFolder(VariableChanges variables, const std::string& folder) {
        variables.emplace_back("XDG_RUNTIME_DIR", folder);
        return variables;
    }

public:
    const TemporaryFolder sockets;
    ServerClient client;
};

using JSON = AskingServer::JSON;

// ---- HTTP -------------------------------------------------------------------------------------

TEST(ServerCredentials, AreAskedOfTheClient) {
    const HTTPServer http;
    AskingServer server;
    server.ask(7, http.url());
    const JSON name = server.question("name");
    EXPECT_EQ(name["params"], JSON({{"kind", "name"},
                                    {"prompt", "Username for '" + http.host() + "': "},
                                    {"url", http.host()},
                                    {"user", nullptr},
                                    {"request", 7}}));
    server.answer(name, {{"value", "ann"}});
    const JSON password = server.question("password");
    EXPECT_EQ(password["params"]["url"], http.host());
    EXPECT_EQ(password["params"]["user"], "ann");
    server.answer(password, {{"value", HTTPServer::password}});
    server.expectSuccess(7);
}

TEST(ServerCredentials, LeaveOutWhatTheURLHas) {
    const HTTPServer http;
    AskingServer server;
    server.ask(1, http.url("ann@"));
    server.answerNext("password", HTTPServer::password);
    server.expectSuccess(1);
}

TEST(ServerCredentials, AreAskedForPagesToo) {
    const HTTPServer http;
    AskingServer server;
    server.client.send("p", "sourceControl/open",
                       {{"request", server.branchesOf(http.url("ann@"))}, {"pageSize", 10}});
    const JSON question = server.question("password");
    EXPECT_EQ(question["params"]["request"], "p");
    server.answer(question, {{"value", HTTPServer::password}});
    EXPECT_THAT(server.client.answerTo("p")["result"]["records"].dump(), HasSubstr("\"main\""));
}

TEST(ServerCredentials, MayBeWrong) {
    const HTTPServer http;
    AskingServer server;
    server.ask(1, http.url());
    server.answerNext("name", "ann");
    server.answerNext("password", "wrong");
    EXPECT_EQ(server.errorClass(1), "credentials-refused");
}

TEST(ServerCredentials, MayBeDeclined) {
    const HTTPServer http;
    AskingServer server;
    int id = 0;
    for (const JSON& result :
         {JSON(nullptr), JSON::object(), JSON({{"value", nullptr}}), JSON({{"value", 5}}),
          JSON({{"value", "two\nlines"}}), JSON({{"value", std::string("a\0b", 3)}})}) {
        server.ask(++id, http.url("ann@"));
        server.answer(server.question("password"), result);
        EXPECT_EQ(server.errorClass(id), "credentials-needed") << result;
    }
    server.ask("last", http.url("ann@"));
    server.client.sendMessage(JSON{{"jsonrpc", "2.0"},
                                   {"id", server.question("password")["id"]},
                                   {"error", {{"code", -32601}, {"message", "unknown"}}}}
                                  .dump());
    EXPECT_EQ(server.errorClass("last"), "credentials-needed");
}

TEST(ServerCredentials, AreWithdrawnWithTheirRequest) {
    const HTTPServer http;
    AskingServer server;
    server.ask(1, http.url());
    const JSON question = server.question("name");
    server.client.send({}, "$/cancelRequest", {{"id", 1}});
    EXPECT_EQ(server.client.answerTo(1)["error"]["code"], -32800);
    EXPECT_EQ(server.withdrawal()["params"]["id"], question["id"]);
    server.answer(question, {{"value", "late"}});
    server.ask(2, http.url("ann@"));
    server.answerNext("password", HTTPServer::password);
    server.expectSuccess(2);
}

TEST(ServerCredentials, OfTwoRequestsAreKeptApart) {
    const HTTPServer http;
    AskingServer server;
    server.ask("first", http.url("ann@"));
    const JSON first = server.question("password");
    server.ask("second", http.url("ann@"));
    const JSON second = server.question("password");
    EXPECT_EQ(first["params"]["request"], "first");
    EXPECT_EQ(second["params"]["request"], "second");
    server.answer(second, {{"value", HTTPServer::password}});
    server.expectSuccess("second");
    server.answer(first, {{"value", "wrong"}});
    EXPECT_EQ(server.errorClass("first"), "credentials-refused");
}

TEST(ServerCredentials, ComeFromTheUsersHelpersFirst) {
    const HTTPServer http;
    AskingServer server(
        {{"GIT_CONFIG_COUNT", "1"},
         {"GIT_CONFIG_KEY_0", "credential.helper"},
         {"GIT_CONFIG_VALUE_0",
          "!printf 'username=ann\\npassword=" + std::string(HTTPServer::password) + "\\n'; true"}});
    server.ask(1, http.url());
    server.expectSuccess(1);
    EXPECT_THAT(server.client.others(), IsEmpty());
}

TEST(ServerCredentials, AreNotAskedWithoutAUser) {
    const HTTPServer http;
    AskingServer mute({}, false);
    mute.ask(1, http.url());
    EXPECT_EQ(mute.errorClass(1), "credentials-needed");
    AskingServer server;
    server.ask(1, http.url(), true);
    EXPECT_EQ(server.errorClass(1), "credentials-needed");
    EXPECT_THAT(mute.client.others(), IsEmpty());
    EXPECT_THAT(server.client.others(), IsEmpty());
}

TEST(ServerCredentials, IgnoreAnswersToNoQuestion) {
    const HTTPServer http;
    AskingServer server;
    const JSON ids[] = {"credentials-1", "credentials-99", 5, nullptr};
    for (const JSON& id : ids) {
        server.answer({{"id", id}}, {{"value", "x"}});
    }
    server.ask(1, http.url("ann@"));
    const JSON question = server.question("password");
    server.answer(question, {{"value", HTTPServer::password}});
    server.answer(question, {{"value", "again"}});
    server.expectSuccess(1);
}

// ---- protection -------------------------------------------------------------------------------

TEST(ServerCredentials, AreGivenOnlyToProcessesWithTheToken) {
    const HTTPServer http;
    AskingServer server;
    server.ask(1, http.url("ann@"));
    const JSON question = server.question("password");
    const std::string folder = server.folder();
    struct stat status {};
    ASSERT_EQ(::stat(folder.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0700U);
    for (const std::optional<std::string>& token :
         {std::optional<std::string>(), std::optional<std::string>(""),
          std::optional<std::string>(std::string(64, '0'))}) {
        const NebscOutcome stranger =
            runProgram(folder + "/nebsc-askpass", {"Password for 'https://h': "},
                       {.variables = {{"NEBSC_ASKPASS_TOKEN", token}}});
        EXPECT_EQ(stranger.exitStatus, 1);
        EXPECT_EQ(stranger.output, "");
    }
    server.answer(question, {{"value", HTTPServer::password}});
    server.expectSuccess(1);
    EXPECT_THAT(server.client.others(), IsEmpty());
}

// The passwords are those of these tests alone, because others run at the same time.
TEST(ServerCredentials, AreNeitherArgumentsNorVariablesOfAProcess) {
    const std::string password = "hidden-word";
    const HTTPServer http(password);
    AskingServer server;
    server.ask(1, http.url("ann@"));
    server.answerNext("password", password);
    server.expectSuccess(1);
    EXPECT_EQ(http.placesOfPassword(), "");
}

TEST(ServerCredentials, WouldBeFoundInTheVariablesOfAProcess) {
    const std::string password = "visible-word";
    const HTTPServer http(password);
    AskingServer server({{"SECRET_OF_THE_TEST", password}});
    server.ask(1, http.url("ann@"));
    server.answerNext("password", password);
    server.expectSuccess(1);
    EXPECT_THAT(http.placesOfPassword(), HasSubstr("environ"));
}

TEST(ServerCredentials, LeaveNothingBehind) {
    const HTTPServer http;
    AskingServer server;
    EXPECT_EQ(server.folder(), "");
    server.ask(1, http.url("ann@"));
    server.question("password");
    EXPECT_NE(server.folder(), "");
    server.client.send("end", "shutdown");
    server.client.answerTo("end");
    server.client.send({}, "exit");
    EXPECT_EQ(server.client.exitStatus(), 0);
    EXPECT_EQ(server.folder(), "");
}

TEST(AskpassProgram, NeedsItsServer) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink(NEB_BUILD_FOLDER "/bin/nebsc", folder.path("nebsc-askpass"));
    const NebscOutcome outcome = runProgram(folder.path("nebsc-askpass"), {"Password: "},
                                            {.variables = {{"NEBSC_ASKPASS_TOKEN", "a"}}});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.output, "");
}

// ---- ssh --------------------------------------------------------------------------------------

TEST(ServerCredentials, UnlockTheKeyOfSSH) {
    if (!SSHServer::isInstalled()) {
        GTEST_SKIP() << "sshd is not installed";
    }
    const SSHServer ssh;
    AskingServer server({ssh.variable(true)});
    server.ask(1, ssh.url());
    const JSON question = server.question("passphrase");
    EXPECT_THAT(question["params"]["prompt"].get<std::string>(), HasSubstr(ssh.folder.path("key")));
    server.answer(question, {{"value", SSHServer::passphrase}});
    server.expectSuccess(1);
    server.ask(2, ssh.url());
    server.answer(server.question("passphrase"), nullptr);
    EXPECT_EQ(server.errorClass(2), "ssh-key-refused");
}

TEST(ServerCredentials, ConfirmTheKeyOfAHost) {
    if (!SSHServer::isInstalled()) {
        GTEST_SKIP() << "sshd is not installed";
    }
    const SSHServer ssh;
    AskingServer server({ssh.variable(false)});
    server.ask(1, ssh.url());
    server.answer(server.question("hostKey"), nullptr);
    EXPECT_EQ(server.errorClass(1), "ssh-host-key");
    server.ask(2, ssh.url());
    server.answerNext("hostKey", "yes");
    server.answerNext("passphrase", SSHServer::passphrase);
    server.expectSuccess(2);
    EXPECT_THAT(ssh.folder.read("new_known"), HasSubstr("[127.0.0.1]:"));
}

/// ssh(1) asks three times.
TEST(ServerCredentials, MayBeAWrongPassphrase) {
    if (!SSHServer::isInstalled()) {
        GTEST_SKIP() << "sshd is not installed";
    }
    const SSHServer ssh;
    AskingServer server({ssh.variable(true)});
    server.ask(1, ssh.url());
    server.answerNext("passphrase", "open parsley");
    server.answerNext("passphrase", SSHServer::passphrase);
    server.expectSuccess(1);
    server.ask(2, ssh.url());
    for (int attempt = 1; attempt <= 3; ++attempt) {
        server.answerNext("passphrase", "open parsley");
    }
    EXPECT_EQ(server.errorClass(2), "ssh-key-refused");
}

TEST(ServerCredentials, OfSSHAreWithdrawnWithTheirRequest) {
    if (!SSHServer::isInstalled()) {
        GTEST_SKIP() << "sshd is not installed";
    }
    const SSHServer ssh;
    for (const bool isKnown : {true, false}) {
        AskingServer server({ssh.variable(isKnown)});
        server.ask(1, ssh.url());
        const JSON question = server.question(isKnown ? "passphrase" : "hostKey");
        server.client.send({}, "$/cancelRequest", {{"id", 1}});
        EXPECT_EQ(server.client.answerTo(1)["error"]["code"], -32800);
        EXPECT_EQ(server.withdrawal()["params"]["id"], question["id"]);
    }
    EXPECT_FALSE(std::filesystem::exists(ssh.folder.path("new_known")));
}

}  // namespace
}  // namespace neb::test
