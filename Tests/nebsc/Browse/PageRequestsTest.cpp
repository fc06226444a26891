#include "Browse/PageRequests.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

namespace neb::nebsc {
namespace {

using JSON = nlohmann::ordered_json;
using testing::HasSubstr;

const PageRequests requests("/w/demo");

PageMessage checked(std::string_view method, const JSON& params) {
    return requests.checked(
        JSON{{"jsonrpc", "2.0"}, {"id", 1}, {"method", method}, {"params", params}}.dump());
}

TEST(PageRequests, SetTheSourceTreeOfARequest) {
    const PageMessage message = checked(
        "sourceControl/perform",
        {{"type", 1001}, {"sourceTree", {{"location", "/home"}}}, {"partialResultToken", 7}});
    EXPECT_EQ(message.refusal, "");
    const JSON params = JSON::parse(message.text)["params"];
    EXPECT_EQ(params["sourceTree"]["location"], "/w/demo");
    EXPECT_EQ(params["partialResultToken"], 7);
}

TEST(PageRequests, SetTheSourceTreeOfACursor) {
    const PageMessage message =
        checked("sourceControl/open", {{"request", {{"type", 1001}}}, {"pageSize", 50}});
    EXPECT_EQ(message.refusal, "");
    const JSON params = JSON::parse(message.text)["params"];
    EXPECT_EQ(params["request"]["sourceTree"]["location"], "/w/demo");
    EXPECT_EQ(params["pageSize"], 50);
}

TEST(PageRequests, SetTheSourceTreeOfAWatch) {
    const PageMessage message = checked(
        "sourceControl/watch", {{"sourceTree", {{"location", "/home"}}}, {"workingTree", true}});
    EXPECT_EQ(JSON::parse(message.text)["params"],
              (JSON{{"sourceTree", {{"location", "/w/demo"}}}, {"workingTree", true}}));
}

/// The gateway decides whether programs of the repository may run.
TEST(PageRequests, DropTheTrustThatAPageDeclares) {
    const PageMessage message =
        checked("sourceControl/perform", {{"type", 1000}, {"trust", "trusted"}});
    EXPECT_EQ(message.refusal, "");
    EXPECT_FALSE(JSON::parse(message.text)["params"].contains("trust"));
}

TEST(PageRequests, RefuseWhatChangesTheRepository) {
    for (const int type : {1005, 1007, 1011, 1012, 1014, 1015, 1020}) {
        EXPECT_THAT(checked("sourceControl/perform", {{"type", type}}).refusal,
                    HasSubstr("requests that read"))
            << type;
        EXPECT_THAT(checked("sourceControl/open", {{"request", {{"type", type}}}}).refusal,
                    HasSubstr("requests that read"))
            << type;
    }
}

/// Their values can name files and servers anywhere.
TEST(PageRequests, RefuseTheTypesBelow1000) {
    EXPECT_NE(checked("sourceControl/perform", {{"type", 15}}).refusal, "");
    EXPECT_NE(checked("sourceControl/perform", {{"type", 25}}).refusal, "");
}

TEST(PageRequests, RefuseFilesOutsideTheRepository) {
    for (const char* file : {"/etc/passwd", "/w/demo/../other", "../other", "/w/demonstration",
                             "~/x", "file:///etc/passwd", "a/../../x"}) {
        EXPECT_THAT(
            checked("sourceControl/perform", {{"type", 1000}, {"files", JSON::array({file})}})
                .refusal,
            HasSubstr("is not in the repository"))
            << file;
    }
    EXPECT_NE(checked("sourceControl/perform",
                      {{"type", 1000}, {"files", JSON::array({{{"base64", "L2V0Yy/k"}}})}})
                  .refusal,
              "");
}

TEST(PageRequests, AcceptFilesInTheRepository) {
    for (const char* file : {"/w/demo/a", "/w/demo", "a/b", "a/../b", "..a"}) {
        EXPECT_EQ(checked("sourceControl/perform", {{"type", 1000}, {"files", JSON::array({file})}})
                      .refusal,
                  "")
            << file;
    }
}

TEST(PageRequests, RefuseOtherMethods) {
    for (const char* method : {"initialize", "shutdown", "exit", "sourceControl/plan", "", "x"}) {
        EXPECT_EQ(checked(method, JSON::object()).refusal, "A page cannot use this method.")
            << method;
    }
}

TEST(PageRequests, RefuseWhatIsNoMessage) {
    EXPECT_THAT(requests.checked("x").refusal, HasSubstr("not valid JSON"));
    EXPECT_NE(requests.checked("[]").refusal, "");
    EXPECT_NE(requests.checked("null").refusal, "");
    EXPECT_NE(requests.checked(R"({"method": 1})").refusal, "");
    EXPECT_NE(requests.checked(R"({"method": "sourceControl/next", "params": []})").refusal, "");
    EXPECT_NE(requests.checked(R"({"method": "sourceControl/open", "params": {}})").refusal, "");
    EXPECT_NE(
        requests.checked(R"({"method": "sourceControl/open", "params": {"request": 1}})").refusal,
        "");
}

/// Another parser might take the other one.
TEST(PageRequests, RefuseAMemberThatIsThereTwice) {
    EXPECT_NE(requests
                  .checked(R"({"jsonrpc": "2.0", "id": 1, "method": "sourceControl/perform",)"
                           R"( "params": {"type": 1000, "type": 1011}})")
                  .refusal,
              "");
}

}  // namespace
}  // namespace neb::nebsc
