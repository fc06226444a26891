// Records that `nebsc serve` sends while a request runs.

#include "nebsc/Server/PagingServerTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using testing::Le;
using JSON = ServerClient::JSON;

class PartialResults : public PagingServerTest {
protected:
    [[nodiscard]] JSON streamedLog(const JSON& token) const { return streamed(log(), token); }
    static JSON streamed(JSON request, const JSON& token) {
        request["partialResultToken"] = token;
        return request;
    }
    /// Returns the records of the notifications before the last response.
    [[nodiscard]] JSON recordsFor(const JSON& token) const {
        JSON records = JSON::array();
        for (const JSON& message : client.others()) {
            EXPECT_EQ(message["method"], "$/progress");
            EXPECT_EQ(message["params"]["token"], token);
            const JSON& batch = message["params"]["value"]["records"];
            EXPECT_THAT(batch.size(), Le(512U));
            records.insert(records.end(), batch.begin(), batch.end());
        }
        return records;
    }
};

TEST_F(PartialResults, AreTheRecordsOfTheOutcome) {
    JSON whole = call("sourceControl/perform", shortLog())["result"];
    JSON outcome = call("sourceControl/perform", streamed(shortLog(), "t"))["result"];
    EXPECT_EQ(outcome["recordCount"], shortCount);
    EXPECT_EQ(recordsFor("t"), whole["result"]);
    outcome.erase("recordCount");
    whole["result"] = JSON::array();
    for (JSON* each : {&whole, &outcome}) {
        (*each)["commands"][0]["milliseconds"] = 0;
    }
    EXPECT_EQ(outcome, whole);
}

TEST_F(PartialResults, ExistForEveryType) {
    for (const std::int32_t type :
         {NEBSourceControlRequestCurrentBranch, NEBSourceControlRequestStatus}) {
        const JSON request = requestAbout(type, repository.path());
        repository.write("new", "");
        const JSON whole = call("sourceControl/perform", request)["result"];
        const std::size_t before = client.others().size();
        const JSON outcome = call("sourceControl/perform", streamed(request, 7))["result"];
        ASSERT_EQ(client.others().size(), before + 1) << outcome;
        EXPECT_EQ(client.others().back()["params"],
                  JSON({{"token", 7}, {"value", {{"records", whole["result"]}}}}));
        EXPECT_EQ(outcome["result"], JSON::array());
        EXPECT_EQ(outcome["recordCount"], whole["result"].size());
    }
}

TEST_F(PartialResults, NeedATokenThatIsAStringOrAnInteger) {
    const JSON error = call("sourceControl/perform", streamedLog(true))["error"];
    EXPECT_EQ(error["code"], -32602);
    EXPECT_THAT(error["message"].get<std::string>(), HasSubstr("'partialResultToken'"));
    const JSON plan = call("sourceControl/plan", streamedLog("t"))["result"];
    EXPECT_EQ(plan["result"], nullptr);
    EXPECT_FALSE(plan.contains("recordCount"));
}

TEST_F(PartialResults, ArePausedWhileTheClientDoesNotRead) {
    client.send("log", "sourceControl/perform", streamedLog("t"));
    const pid_t log = process();
    EXPECT_LT(waitUntilPaused(log), 5'000'000) << "of more than 6,000,000";
    EXPECT_TRUE(isLiveProcess(log));
    const JSON outcome = client.answerTo("log")["result"];
    EXPECT_EQ(outcome["error"], nullptr);
    EXPECT_EQ(recordsFor("t").size(), static_cast<std::size_t>(commits));
    EXPECT_EQ(outcome["recordCount"], commits);
}

TEST_F(PartialResults, EndAtOnceWhenTheRequestIsCancelled) {
    client.send("log", "sourceControl/perform", streamedLog("t"));
    const pid_t log = process();
    waitUntilPaused(log);
    client.send({}, "$/cancelRequest", {{"id", "log"}});
    waitUntilGone(log);  // although the client reads nothing
    const JSON error = client.answerTo("log")["error"];
    EXPECT_EQ(error["code"], -32800);
    EXPECT_EQ(error["data"]["error"]["class"], "cancelled");
    EXPECT_EQ(error["data"]["recordCount"], recordsFor("t").size());
}

TEST_F(PartialResults, LeaveNoProcessWhenTheClientIsGone) {
    client.send("log", "sourceControl/perform", streamedLog("t"));
    const pid_t log = process();
    waitUntilPaused(log);
    client.close();
    EXPECT_EQ(client.exitStatus(), 1);
    EXPECT_FALSE(isLiveProcess(log));
}

}  // namespace
}  // namespace neb::test
