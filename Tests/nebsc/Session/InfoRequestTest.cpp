// Requests that run several git commands in turn, with a stand-in for git.

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

TEST(TrackingBranchRequest, ReportsTheErrorOfTheSecondCommand) {
    const NebscOutcome outcome = requestWith(
        NEBSourceControlRequestTrackingBranchName,
        "case \"$*\" in *merge) echo 'fatal: bad config line 3 in file x' >&2; exit 128;; esac\n"
        "echo origin",
        {{"NEBSourceControlRequestOptionBranch", "topic"}});
    const JSON json = outcome.json();
    EXPECT_EQ(json["error"]["class"], "configuration-broken");
    EXPECT_TRUE(json["result"].is_null());
}

/// The URL of the Subversion repository is enough; a failure to get its name is ignored.
TEST(RemotesRequest, SucceedsWithoutTheNameOfTheSubversionRepository) {
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

/// If the second command fails, the outcome has an error and also an empty record. This is on
/// purpose: hosts rely on both.
TEST(InfoRequest, HasTheErrorOfTheSecondCommandAndAnEmptyRecord) {
    const NebscOutcome outcome = infoWith(
        "case \"$*\" in *svn*) echo 'fatal: bad config line 3 in file x' >&2; exit 128;; esac\n"
        "exit 1");
    const JSON json = outcome.json();
    EXPECT_EQ(json["commands"].size(), 2U);
    EXPECT_EQ(json["error"]["class"], "configuration-broken");
    EXPECT_EQ(json["result"], JSON::array({JSON::object()}));
    EXPECT_TRUE(json["command"].is_null()) << "it runs other operations";
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST(InfoRequest, HasTheErrorOfTheFirstCommandAndNoResult) {
    const JSON json = infoWith("echo 'fatal: bad config line 3 in file x' >&2; exit 128").json();
    EXPECT_EQ(json["commands"].size(), 1U);
    EXPECT_EQ(json["error"]["class"], "configuration-broken");
    EXPECT_TRUE(json["result"].is_null());
}

TEST(InfoRequest, UsesTheFirstOutput) {
    const JSON json = infoWith("echo https://example.org/p.git").json();
    EXPECT_EQ(json["commands"].size(), 1U);
    EXPECT_EQ(json["result"][0]["NEBSourceControlOperationRemoteOriginKey"],
              "https://example.org/p.git");
    EXPECT_TRUE(json["error"].is_null());
}

}  // namespace
}  // namespace neb::test
