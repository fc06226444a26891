// A request that runs one git after another, with a stand-in for git that answers each.

#include <gmock/gmock.h>

#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

using JSON = nlohmann::ordered_json;

NebscOutcome infoWith(const std::string& script) {
    const TemporaryFolder folder;
    const StandInGit git(folder.path(), script);
    return runRequest(JSON{{"type", 19}, {"sourceTree", {{"location", folder.path()}}}}.dump(),
                      {.variables = {git.path()}});
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
