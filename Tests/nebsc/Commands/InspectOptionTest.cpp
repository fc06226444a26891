// The option --inspect, and the trust of requests and of the server.

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"
#include "nebsc/Server/ServerClient.h"
#include "nebsc/Server/SlowGit.h"

namespace neb::test {
namespace {

using testing::Contains;
using testing::HasSubstr;
using JSON = nlohmann::ordered_json;

/// A repository whose filter and hook append their names to the file "fired" in its git directory.
class InspectOption : public CommandTest {
protected:
    void SetUp() override {
        repository.commitFile("a", "1\n");
        repository.write(".git/info/attributes", "* filter=evil diff=evil\n");
        const std::string program = "echo filter >>'" + repository.path(".git/fired") + "'; cat";
        repository.git({"config", "filter.evil.clean", program});
        repository.git({"config", "diff.evil.textconv", program + " <"});
        repository.git({"config", "core.pager", program});
        repository.write("a", "2\n");
    }
    /// Returns whether a program of the repository ran since the last call.
    [[nodiscard]] bool hasFired() const {
        return std::filesystem::remove(repository.path(".git/fired"));
    }
    [[nodiscard]] JSON requestFor(std::int32_t type) const {
        return requestAbout(type, repository.path());
    }
};

TEST_F(InspectOption, RunsNoProgramOfTheRepository) {
    const std::vector<std::vector<std::string>> commands{{"status"},         {"status", "--short"},
                                                         {"diff"},           {"diff", "--stat"},
                                                         {"diff", "HEAD"},   {"log"},
                                                         {"show"},           {"ls"},
                                                         {"branch", "list"}, {"blame", "a"},
                                                         {"tag", "list"},    {"stash"},
                                                         {"info"},           {"remote"},
                                                         {"cat", "HEAD:a"},  {"worktree"},
                                                         {"submodule"},      {"config"}};
    for (std::vector<std::string> command : commands) {
        const NebscOutcome trusted = nebsc(command);
        static_cast<void>(hasFired());
        command.emplace_back("--inspect");
        const NebscOutcome inspected = nebsc(command);
        EXPECT_FALSE(hasFired()) << command[0];
        EXPECT_EQ(inspected.output, trusted.output) << command[0];
        EXPECT_EQ(inspected.exitStatus, trusted.exitStatus) << inspected.errors;
    }
    EXPECT_EQ(nebsc({"diff"}).exitStatus, 0);
    EXPECT_TRUE(hasFired());
}

TEST_F(InspectOption, SaysWhatItSwitchedOff) {
    EXPECT_EQ(nebsc({"status", "--inspect"}).errors,
              "nebsc: not trusted, and switched off: core.pager, filter.evil.clean, "
              "diff.evil.textconv\n");
    const JSON outcome = nebsc({"status", "--inspect", "--json"}).json();
    EXPECT_EQ(outcome["switchedOff"],
              JSON({"core.pager", "filter.evil.clean", "diff.evil.textconv", "submodules"}));
    EXPECT_FALSE(nebsc({"status", "--json"}).json().contains("switchedOff"));
}

TEST_F(InspectOption, RefusesCommandsThatChangeTheRepository) {
    const std::vector<std::vector<std::string>> commands{
        {"add", "a"}, {"commit", "-m", "x"},     {"rm", "a"},       {"stage", "--all"},
        {"fetch"},    {"branch", "create", "b"}, {"stash", "push"}, {"doctor"},
        {"tune"},     {"config", "a.b", "c"}};
    const std::string before = state();
    static_cast<void>(hasFired());
    for (std::vector<std::string> command : commands) {
        command.insert(command.begin(), "--inspect");
        const NebscOutcome refused = nebsc(command);
        EXPECT_EQ(refused.exitStatus, 1) << command[1];
        EXPECT_THAT(refused.errors, testing::StartsWith("nebsc: ")) << command[1];
        EXPECT_FALSE(hasFired()) << command[1];
    }
    EXPECT_EQ(nebsc({"add", "a", "--inspect"}).errors,
              "nebsc: 'add' may change the repository or run its programs; it does not work with "
              "'--inspect'\n");
    EXPECT_EQ(state(), before);
}

TEST_F(InspectOption, HoldsForRequestsWhateverTheySay) {
    JSON request = requestFor(NEBSourceControlRequestDiff);
    request["trust"] = "trusted";
    const JSON outcome = runNebsc({"request", "--inspect"}, {.input = request.dump()}).json();
    EXPECT_EQ(outcome["error"], nullptr);
    EXPECT_THAT(outcome["switchedOff"], Contains("filter.evil.clean"));
    EXPECT_FALSE(hasFired());
}

TEST_F(InspectOption, IsAMemberOfARequest) {
    JSON request = requestFor(NEBSourceControlRequestDiff);
    request["trust"] = "inspect";
    EXPECT_THAT(runRequest(request.dump()).json()["switchedOff"], Contains("filter.evil.clean"));
    EXPECT_FALSE(hasFired());
    request["type"] = NEBSourceControlRequestAdd;
    const JSON refused = runRequest(request.dump()).json();
    EXPECT_EQ(refused["error"]["class"], "not-trusted");
    EXPECT_EQ(refused["commands"], JSON::array());
    request["trust"] = "maybe";
    EXPECT_THAT(runRequest(request.dump()).errors, HasSubstr("'trusted' or 'inspect'"));
}

TEST_F(InspectOption, IsTheDefaultOfAServerThatWasInitializedSo) {
    ServerClient client;
    client.send(0, "initialize", {{"trust", "inspect"}});
    EXPECT_TRUE(client.answerTo(0).contains("result"));
    JSON request = requestFor(NEBSourceControlRequestDiff);
    client.send(1, "sourceControl/perform", request);
    EXPECT_THAT(client.answerTo(1)["result"]["switchedOff"], Contains("filter.evil.clean"));
    client.send(2, "sourceControl/open", {{"request", request}, {"pageSize", 10}});
    EXPECT_THAT(client.answerTo(2)["result"]["outcome"]["switchedOff"],
                Contains("filter.evil.clean"));
    EXPECT_FALSE(hasFired());
    request["trust"] = "trusted";
    client.send(3, "sourceControl/perform", request);
    EXPECT_FALSE(client.answerTo(3)["result"].contains("switchedOff"));
    EXPECT_TRUE(hasFired());
}

TEST_F(InspectOption, MustBeNamedCorrectlyForAServer) {
    ServerClient client;
    client.send(0, "initialize", {{"trust", "some"}});
    EXPECT_EQ(client.answerTo(0)["error"]["code"], -32602);
    client.send(1, "initialize", {{"trust", "trusted"}});
    EXPECT_TRUE(client.answerTo(1).contains("result"));
}

}  // namespace
}  // namespace neb::test
