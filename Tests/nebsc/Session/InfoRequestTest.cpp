// A request that runs one git after another, with a stand-in for git that answers each.

#include <gmock/gmock.h>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

using JSON = nlohmann::ordered_json;

NebscOutcome requestWith(int type, const std::string& script, const JSON& options = {}) {
    const TemporaryFolder folder;
    const StandInGit git(folder.path(), script);
    JSON request{{"type", type}, {"sourceTree", {{"location", folder.path()}}}};
    request["options"] = options;
    return runRequest(request.dump(), {.variables = {git.path()}});
}

NebscOutcome infoWith(const std::string& script) {
    return requestWith(NEBSourceControlRequestInfo, script);
}

TEST(TrackingBranchRequest, PassesTheSecondQuestionsErrorOn) {
    const NebscOutcome outcome = requestWith(
        NEBSourceControlRequestTrackingBranchName,
        "case \"$*\" in *merge) echo 'fatal: bad config line 3 in file x' >&2; exit 128;; esac\n"
        "echo origin",
        {{"NEBSourceControlRequestOptionBranch", "topic"}});
    const JSON json = outcome.json();
    EXPECT_EQ(json["error"]["class"], "configuration-broken");
    EXPECT_TRUE(json["result"].is_null());
}

/// The Subversion repository has a URL; that the question for its name fails is not looked at.
TEST(RemotesRequest, StandsThoughTheQuestionForTheNameFails) {
    const NebscOutcome outcome = requestWith(
        NEBSourceControlRequestListRemotes,
        "case \"$*\" in *.url) echo svn://h/p;; *.fetch) echo 'fatal: bad config line 3' >&2; "
        "exit 128;; esac");
    const JSON json = outcome.json();
    EXPECT_TRUE(json["error"].is_null());
    ASSERT_EQ(json["result"].size(), 1U);
    EXPECT_EQ(json["result"][0]["NEBSourceControlOperationRemoteOriginKey"], "svn://h/p");
    EXPECT_EQ(json["reports"][0]["line"], 1405);
}

/// A failed second question has an error and, beside it, the record that holds nothing: the pairing
/// is on purpose, hosts have always found both.
TEST(InfoRequest, HasTheSecondQuestionsErrorBesideAnEmptyRecord) {
    const NebscOutcome outcome = infoWith(
        "case \"$*\" in *svn*) echo 'fatal: bad config line 3 in file x' >&2; exit 128;; esac\n"
        "exit 1");
    const JSON json = outcome.json();
    EXPECT_EQ(json["commands"].size(), 2U);
    EXPECT_EQ(json["error"]["class"], "configuration-broken");
    EXPECT_EQ(json["result"], JSON::array({JSON::object()}));
    EXPECT_TRUE(json["command"].is_null()) << "it runs others";
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST(InfoRequest, HasTheFirstQuestionsErrorAndNoResult) {
    const JSON json = infoWith("echo 'fatal: bad config line 3 in file x' >&2; exit 128").json();
    EXPECT_EQ(json["commands"].size(), 1U);
    EXPECT_EQ(json["error"]["class"], "configuration-broken");
    EXPECT_TRUE(json["result"].is_null());
}

TEST(InfoRequest, TakesTheFirstAnswer) {
    const JSON json = infoWith("echo https://example.org/p.git").json();
    EXPECT_EQ(json["commands"].size(), 1U);
    EXPECT_EQ(json["result"][0]["NEBSourceControlOperationRemoteOriginKey"],
              "https://example.org/p.git");
    EXPECT_TRUE(json["error"].is_null());
}

}  // namespace
}  // namespace neb::test
