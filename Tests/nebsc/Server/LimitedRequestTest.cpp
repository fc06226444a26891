// The member "limits" of requests to `nebsc serve`.

#include "nebsc/Server/PagingServerTest.h"

namespace neb::test {
namespace {

using JSON = ServerClient::JSON;

class LimitedRequest : public PagingServerTest {
protected:
    [[nodiscard]] JSON limitedLog() const {
        JSON request = log();
        request["limits"] = {{"outputBytes", 100'000}};
        return request;
    }
};

TEST_F(LimitedRequest, EndsWithAnErrorThatNamesTheLimit) {
    const JSON outcome = call("sourceControl/perform", limitedLog())["result"];
    EXPECT_EQ(outcome["error"]["class"], "output-too-large");
    EXPECT_EQ(outcome["result"], nullptr);
}

TEST_F(LimitedRequest, AppliesToTheGitOfACursor) {
    JSON page = call("sourceControl/open", {{"request", limitedLog()}, {"pageSize", 10}})["result"];
    while (!page["cursor"].is_null()) {
        page = call("sourceControl/next", {{"cursor", page["cursor"]}})["result"];
    }
    EXPECT_EQ(page["outcome"]["error"]["class"], "output-too-large");
}

TEST_F(LimitedRequest, WaitsForLocksNoLongerThanItSays) {
    repository.write("new", "1\n");
    repository.write(".git/index.lock", "");
    JSON request = requestAbout(NEBSourceControlRequestAdd, repository.path());
    request["limits"] = {{"lockWaitMilliseconds", 0}};
    const JSON outcome = call("sourceControl/perform", request)["result"];
    EXPECT_EQ(outcome["error"]["class"], "index-locked");
    EXPECT_EQ(outcome["commands"].size(), 1U) << "git was started again";
}

TEST_F(LimitedRequest, IsPlannedLikeAnyOther) {
    EXPECT_EQ(call("sourceControl/plan", limitedLog())["result"]["error"], nullptr);
}

}  // namespace
}  // namespace neb::test
