// Requests in JSON that are refused, with the messages.

#include <gmock/gmock.h>

#include "JSON/RequestJSON.h"
#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb::nebsc {
namespace {

using testing::HasSubstr;

std::string refusalOf(std::string_view json) {
    const RequestReading reading = requestFromJSON(json);
    EXPECT_EQ(reading.request, nullptr) << json;
    return reading.refusal;
}

struct RefusalRow {
    const char* json;
    const char* refusal;
};

class RefusedRequest : public testing::TestWithParam<RefusalRow> {};

TEST_P(RefusedRequest, NamesTheMemberAndTheExpectedValue) {
    EXPECT_EQ(refusalOf(GetParam().json), GetParam().refusal);
}

constexpr const char* expectedType = "; expected an integer from -2147483648 to 2147483647.";

INSTANTIATE_TEST_SUITE_P(
    Whole, RefusedRequest,
    testing::Values(RefusalRow{"", "The request is empty; expected a JSON object."},
                    RefusalRow{" \n\t", "The request is empty; expected a JSON object."},
                    RefusalRow{"null", "The request is null; expected an object."},
                    RefusalRow{"true", "The request is a boolean; expected an object."},
                    RefusalRow{"15", "The request is an integer; expected an object."},
                    RefusalRow{"\"15\"", "The request is a string; expected an object."},
                    RefusalRow{"[]", "The request is an array; expected an object."},
                    RefusalRow{"{}",
                               "The request's member 'type' is missing; expected an integer."},
                    RefusalRow{"1e999", "The request is a number that is too large."}));

TEST(RequestJSON, ShowsNoPasswordOfAURL) {
    const std::string password(400, 's');
    const std::string url = "http://ann:" + password + "@host";
    EXPECT_EQ(refusalOf(R"({"type": 29, "destination": ")" + url + "\"}"),
              "The request's member 'destination' is 'http://ann:<redacted>@host'; expected "
              "an absolute path for a clone.");
    const RequestReading reading =
        requestFromJSON(R"({"type": 29, "sourceTree": {"location": ")" + url + "\"}}");
    ASSERT_NE(reading.request, nullptr) << reading.refusal;
    EXPECT_EQ(reading.request->sourceTree->location, url);
    EXPECT_EQ(reading.request->sourceTree->name, "ann:<redacted>@host");
}

TEST(RequestJSON, ExplainsWhyATypeIsInvalid) {
    const std::string start = "The request's member 'type' is ";
    EXPECT_EQ(refusalOf(R"({"type": null})"), start + "null" + expectedType);
    EXPECT_EQ(refusalOf(R"({"type": "15"})"), start + "a string" + expectedType);
    EXPECT_EQ(refusalOf(R"({"type": true})"), start + "a boolean" + expectedType);
    EXPECT_EQ(refusalOf(R"({"type": [15]})"), start + "an array" + expectedType);
    EXPECT_EQ(refusalOf(R"({"type": {}})"), start + "an object" + expectedType);
    EXPECT_EQ(refusalOf(R"({"type": 2147483648})"), start + "2147483648" + expectedType);
    EXPECT_EQ(refusalOf(R"({"type": -2147483649})"), start + "-2147483649" + expectedType);
    for (const char* number : {"15.0", "1e1", "18446744073709551615", "99999999999999999999"}) {
        EXPECT_EQ(refusalOf(std::string(R"({"type": )") + number + "}"),
                  start + "a number that is not a 64-bit integer" + expectedType);
    }
    EXPECT_EQ(refusalOf(R"({"type": 1e999})"), start + "a number that is too large.");
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, RefusedRequest,
    testing::Values(
        RefusalRow{R"({"type": 0, "sourceTree": "/w"})",
                   "The request's member 'sourceTree' is a string; expected an object."},
        RefusalRow{R"({"type": 0, "repositoryToAuthenticate": [1]})",
                   "The request's member 'repositoryToAuthenticate' is an array; expected an "
                   "object."},
        RefusalRow{R"({"type": 0, "sourceTree": {"location": 1}})",
                   "The request's member 'sourceTree.location' is an integer; expected a "
                   "string."},
        RefusalRow{R"({"type": 0, "sourceTree": {"name": false}})",
                   "The request's member 'sourceTree.name' is a boolean; expected a "
                   "string."},
        RefusalRow{R"({"type": 0, "sourceTree": {"class": 1.5}})",
                   "The request's member 'sourceTree.class' is a number that is not a "
                   "64-bit integer; expected a string."},
        RefusalRow{
            R"({"type": 0, "sourceTree": {"reachable": 1}})",
            "The request's member 'sourceTree.reachable' is an integer; expected true or false."},
        RefusalRow{
            R"({"type": 0, "repositoryToAuthenticate": {"isValid": "yes"}})",
            "The request's member 'repositoryToAuthenticate.isValid' is a string; expected true "
            "or false."},
        RefusalRow{R"({"type": 0, "sourceTree": {"isRemoteDistributedRepository": 0}})",
                   "The request's member 'sourceTree.isRemoteDistributedRepository' is an "
                   "integer; expected true or false."},
        RefusalRow{R"({"type": 0, "remote": true})",
                   "The request's member 'remote' is a boolean; expected an object."},
        RefusalRow{
            R"({"type": 0, "remote": {"representsGitSVNBridge": 1}})",
            "The request's member 'remote.representsGitSVNBridge' is an integer; expected true or "
            "false."},
        RefusalRow{
            R"({"type": 0, "destination": []})",
            "The request's member 'destination' is an array; expected a string, a number or a "
            "boolean."},
        RefusalRow{
            R"({"type": 0, "startingRevision": {}})",
            "The request's member 'startingRevision' is an object; expected a string, a number or "
            "a boolean."},
        RefusalRow{
            R"({"type": 0, "endingRevision": [[1]]})",
            "The request's member 'endingRevision' is an array; expected a string, a number or a "
            "boolean."},
        RefusalRow{R"({"type": 0, "files": "/a"})",
                   "The request's member 'files' is a string; expected an array."},
        RefusalRow{R"({"type": 0, "files": ["/a", "/b", ["/c"]]})",
                   "The request's member 'files[2]' is an array; expected a string, a number or a "
                   "boolean."},
        RefusalRow{R"({"type": 0, "options": [1]})",
                   "The request's member 'options' is an array; expected an object."},
        RefusalRow{R"({"type": 0, "options": {"NEBSourceControlRequestOptionBranch": {}}})",
                   "The request's member 'options.NEBSourceControlRequestOptionBranch' is an "
                   "object; expected a string, a number or a boolean."}));

INSTANTIATE_TEST_SUITE_P(
    Values, RefusedRequest,
    testing::Values(
        RefusalRow{R"({"type": 0, "sourceTree": {"class": "NEBSourceControlTree"}})",
                   "The request's member 'sourceTree.class' is 'NEBSourceControlTree'; expected "
                   "NEBSourceControlWorkingTree or NEBSourceControlRepository."},
        RefusalRow{R"({"type": 0, "sourceTree": {"isRemoteDistributedRepository": true}})",
                   "The request's member 'sourceTree.isRemoteDistributedRepository' is true for "
                   "a NEBSourceControlWorkingTree; expected false, because only a "
                   "NEBSourceControlRepository can be one."},
        RefusalRow{R"({"type": 15, "destination": "a", "type": 15})",
                   "The request's member 'type' appears twice."},
        RefusalRow{R"({"type": 0, "sourceTree": {"name": "a", "name": "a"}})",
                   "The request's member 'sourceTree.name' appears twice."},
        RefusalRow{R"({"type": 0, "files": [1, {"a": 1, "a": 2}]})",
                   "The request's member 'files[1].a' appears twice."},
        RefusalRow{R"({"type": 0, "files": ["/a", 1e999]})",
                   "The request's member 'files[1]' is a number that is too large."}));

TEST(RequestJSON, NamesTheUnknownMember) {
    EXPECT_EQ(refusalOf(R"({"type": 0, "Destination": "topic"})"),
              "The request's member 'Destination' is unknown; expected one of type, sourceTree, "
              "repositoryToAuthenticate, destination, files, startingRevision, endingRevision, "
              "remote, options, limits, background, trust.");
    EXPECT_EQ(refusalOf(R"({"type": 0, "sourceTree": {"path": "/w"}})"),
              "The request's member 'sourceTree.path' is unknown; expected one of class, location, "
              "name, reachable, isValid, isRemoteDistributedRepository.");
    EXPECT_EQ(refusalOf(R"({"type": 0, "remote": {"name": "origin"}})"),
              "The request's member 'remote.name' is unknown; expected one of "
              "representsGitSVNBridge.");
}

TEST(RequestJSON, NamesTheUnknownOptionAndEveryKnownOne) {
    const std::string refusal = refusalOf(R"({"type": 0, "options": {"branch": "topic"}})");
    EXPECT_THAT(refusal, testing::StartsWith("The request's member 'options.branch' is unknown"));
    for (const NEBConstant key : NEBSourceControlAllRequestOptions) {
        EXPECT_THAT(refusal, HasSubstr(key.text()));
    }
}

class InvalidJSON : public testing::TestWithParam<std::string> {};

TEST_P(InvalidJSON, IsReportedWithLineAndColumn) {
    EXPECT_THAT(refusalOf(GetParam()),
                testing::MatchesRegex("The request is not valid JSON: line 1, column [0-9]+: .*"));
}

INSTANTIATE_TEST_SUITE_P(RequestJSON, InvalidJSON,
                         testing::Values("{", "{\"type\": 15", "{\"type\" 15}", "{type: 15}",
                                         "{\"type\": 15,}", "{\"type\": 15} x", "{\"type\": 15}{}",
                                         "{\"type\": 015}", "{\"type\": +1}", "{\"type\": NaN}",
                                         "{'type': 15}", "// a\n{\"type\": 15}",
                                         "{\"type\": 15, \"destination\": \"\xff\"}",
                                         "{\"type\": 15, \"destination\": \"\xc3\"}",
                                         "{\"\xff\": 15}",
                                         "{\"type\": 15, \"destination\": \"\\ud800\"}",
                                         "{\"type\": 15, \"destination\": \"a\tb\"}"));

TEST(RequestJSON, ReportsTheLineOfASyntaxError) {
    EXPECT_THAT(refusalOf("{\n  \"type\": 15,\n}"), HasSubstr("line 3, column 1"));
}

TEST(RequestJSON, RefusesDeepNesting) {
    const std::string deep(1000000, '[');
    EXPECT_EQ(refusalOf(deep), "The request is nested more than 32 levels deep.");
    EXPECT_EQ(refusalOf(R"({"type": 0, "destination": )" + deep + "}"),
              "The request is nested more than 32 levels deep.");
}

TEST(RequestJSON, LimitsValuesAndBytes) {
    std::string files = "[0";
    for (std::size_t i = 0; i < nebsc::mostJSONValues; ++i) {
        files += ",0";
    }
    EXPECT_EQ(refusalOf(R"({"type": 0, "files": )" + files + "]}"),
              "The request has more than 250000 values.");
    EXPECT_EQ(refusalOf(std::string(nebsc::longestJSONText, ' ') + "{}"),
              "The request has more than 67108864 bytes.");
}

TEST(RequestJSON, TruncatesTheMessageOfALongSyntaxError) {
    const std::string text = "{\"type\": \"" + std::string(1000000, 'x') + "\xff\"}";
    EXPECT_LT(refusalOf(text).size(), 400U);
}

TEST(RequestJSON, RefusesANULByte) {
    EXPECT_EQ(refusalOf(std::string("{\"type\": 1}\0{\"type\": 9,,,", 23)),
              "The request is not valid JSON: byte 12 is NUL.");
    EXPECT_EQ(refusalOf(std::string("{\"type\": 1\0}", 12)),
              "The request is not valid JSON: byte 11 is NUL.");
}

TEST(RequestJSON, RefusesARelativeLocation) {
    const auto with = [](const std::string& location) {
        return R"({"type": 0, "sourceTree": {"location": ")" + location + "\"}}";
    };
    for (const char* location : {"", ".", "relative", "../r"}) {
        EXPECT_EQ(refusalOf(with(location)),
                  std::string("The request's member 'sourceTree.location' is '") + location +
                      "'; expected an absolute path or a URL.");
    }
}

TEST(RequestJSON, ShowsAnEmptyName) {
    EXPECT_THAT(
        refusalOf(R"({"type": 15, "": 1})"),
        testing::StartsWith("The request's member '\"\"' is unknown; expected one of type,"));
}

TEST(RequestJSON, ShowsInputOnOneLine) {
    EXPECT_THAT(
        refusalOf(R"({"type": 1, "sourceTree": {"loc\nation": "/w"}})"),
        testing::StartsWith(
            R"(The request's member 'sourceTree.loc\nation' is unknown; expected one of class)"));
    EXPECT_EQ(refusalOf(R"({"type": 1, "sourceTree": {"class": "a\n\u001b[31mb\u202e"}})"),
              R"(The request's member 'sourceTree.class' is 'a\n\x1b[31mb\u202e'; expected )"
              "NEBSourceControlWorkingTree or NEBSourceControlRepository.");
    EXPECT_THAT(refusalOf(R"({"type": 1, "files": [{"\r": 1, "\r": 2}]})"),
                testing::HasSubstr(R"('files[0].\r' appears twice)"));
}

TEST(RequestJSON, TruncatesLongInput) {
    const std::string large(3000000, 'x');
    EXPECT_LT(refusalOf("{\"type\": 1, \"" + large + "\": 1}").size(), 1000U);
    EXPECT_LT(refusalOf(R"({"type": 1, "sourceTree": {"class": ")" + large + "\"}}").size(), 1000U);
    EXPECT_LT(refusalOf(R"({"type": 1, "sourceTree": {"location": ")" + large + "\"}}").size(),
              1000U);
}

}  // namespace
}  // namespace neb::nebsc
