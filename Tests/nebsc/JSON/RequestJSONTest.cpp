// Requests from JSON: all members and all kinds of values.

#include "JSON/RequestJSON.h"

#include <gmock/gmock.h>

#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb::nebsc {
namespace {

std::shared_ptr<NEBSourceControlRequest> accepted(std::string_view json) {
    RequestReading reading = requestFromJSON(json);
    EXPECT_EQ(reading.refusal, "") << json;
    return reading.request ? reading.request : std::make_shared<NEBSourceControlRequest>();
}

void expectOnlyAType(const NEBSourceControlRequest& request, std::int32_t type) {
    EXPECT_EQ(request.type, type);
    EXPECT_EQ(request.sourceTree, nullptr);
    EXPECT_EQ(request.repositoryToAuthenticate, nullptr);
    EXPECT_EQ(request.remote, nullptr);
    EXPECT_FALSE(request.destination.isPresent());
    EXPECT_FALSE(request.startingRevision.isPresent());
    EXPECT_FALSE(request.endingRevision.isPresent());
    EXPECT_FALSE(request.files.has_value());
    EXPECT_FALSE(request.options.has_value());
}

TEST(RequestJSON, RequiresOnlyAType) {
    expectOnlyAType(*accepted(R"({"type": 15})"), 15);
}

TEST(RequestJSON, TreatsNullAsAbsent) {
    const auto request = accepted(
        R"({"type": -1, "sourceTree": null, "repositoryToAuthenticate": null, "remote": null,
            "destination": null, "startingRevision": null, "endingRevision": null, "files": null,
            "options": null})");
    expectOnlyAType(*request, -1);
}

TEST(RequestJSON, ReadsTheLimitsOfTheOperation) {
    const NEBSourceControlLimits limits =
        requestFromJSON(R"({"type": 18, "limits": {"silenceMilliseconds": 1500,
                            "totalMilliseconds": 60000, "outputBytes": 100,
                            "lockWaitMilliseconds": 0}})")
            .settings.limits;
    EXPECT_EQ(limits.silence, std::chrono::milliseconds(1500));
    EXPECT_EQ(limits.total, std::chrono::minutes(1));
    EXPECT_EQ(limits.outputBytes, 100U);
    EXPECT_EQ(limits.lockWait, std::chrono::milliseconds(0));
    for (const char* json :
         {R"({"type": 18})", R"({"type": 18, "limits": null})",
          R"({"type": 18, "limits": {"outputBytes": null, "lockWaitMilliseconds": null}})"}) {
        const RequestReading reading = requestFromJSON(json);
        EXPECT_EQ(reading.refusal, "");
        const NEBSourceControlLimits& none = reading.settings.limits;
        EXPECT_FALSE(none.silence || none.total || none.outputBytes);
        EXPECT_EQ(none.lockWait, std::chrono::seconds(2));
    }
}

TEST(RequestJSON, ReadsWhetherNoUserWaits) {
    const auto isBackground = [](const std::string& json) {
        const RequestReading reading = requestFromJSON(json);
        EXPECT_EQ(reading.refusal, "");
        return reading.settings.isBackgroundWork;
    };
    EXPECT_TRUE(isBackground(R"({"type": 15, "background": true})"));
    EXPECT_FALSE(isBackground(R"({"type": 15, "background": false})"));
    EXPECT_FALSE(isBackground(R"({"type": 15, "background": null})"));
    EXPECT_FALSE(isBackground(R"({"type": 15})"));
    EXPECT_EQ(requestFromJSON(R"({"type": 15, "background": 1})").refusal,
              "The request's member 'background' is an integer; expected true or false.");
}

TEST(RequestJSON, RefusesLimitsThatAreNone) {
    const auto refusalOf = [](const std::string& limits) {
        return requestFromJSON(R"({"type": 18, "limits": )" + limits + "}").refusal;
    };
    const std::string member = "The request's member ";
    EXPECT_EQ(refusalOf("5"), member + "'limits' is an integer; expected an object.");
    EXPECT_EQ(refusalOf(R"({"outputBytes": 0})"),
              member + "'limits.outputBytes' is 0; expected an integer above 0.");
    EXPECT_EQ(refusalOf(R"({"totalMilliseconds": 0.5})"),
              member +
                  "'limits.totalMilliseconds' is a number that is not a 64-bit integer; expected "
                  "an integer "
                  "above 0.");
    EXPECT_EQ(
        refusalOf(R"({"time": 1})"),
        member +
            "'limits.time' is unknown; expected one of silenceMilliseconds, totalMilliseconds, "
            "outputBytes, lockWaitMilliseconds.");
    const std::string wait = member + "'limits.lockWaitMilliseconds' is ";
    const std::string expected = "; expected an integer from 0 to 2147483647.";
    EXPECT_EQ(refusalOf(R"({"lockWaitMilliseconds": -1})"), wait + "-1" + expected);
    EXPECT_EQ(refusalOf(R"({"lockWaitMilliseconds": 2147483648})"), wait + "2147483648" + expected);
    EXPECT_EQ(refusalOf(R"({"lockWaitMilliseconds": "1"})"), wait + "a string" + expected);
}

TEST(RequestJSON, AcceptsTheLimitsOfTheType) {
    EXPECT_EQ(accepted(R"({"type": 2147483647})")->type, INT32_MAX);
    EXPECT_EQ(accepted(R"({"type": -2147483648})")->type, INT32_MIN);
}

TEST(RequestJSON, UsesAWorkingTreeAsTheDefaultClass) {
    const auto tree =
        accepted(R"({"type": 0, "sourceTree": {"location": "/w/demo/"}})")->sourceTree;
    ASSERT_NE(tree, nullptr);
    EXPECT_EQ(tree->className(), "NEBSourceControlWorkingTree");
    EXPECT_EQ(tree->location, "/w/demo/");
    EXPECT_EQ(tree->name, "demo");
    EXPECT_TRUE(tree->reachable);
    EXPECT_TRUE(tree->isValid);
}

TEST(RequestJSON, GivesASourceTreeWithoutLocationAnEmptyName) {
    for (const char* json : {R"({"type": 0, "sourceTree": {}})",
                             R"({"type": 0, "sourceTree": {"class": null, "location": null,
                                 "name": null, "reachable": null, "isValid": null,
                                 "isRemoteDistributedRepository": null}})"}) {
        const auto tree = accepted(json)->sourceTree;
        ASSERT_NE(tree, nullptr);
        EXPECT_EQ(tree->className(), "NEBSourceControlWorkingTree");
        EXPECT_EQ(tree->location, std::nullopt);
        EXPECT_EQ(tree->name, "");
        EXPECT_TRUE(tree->reachable);
        EXPECT_TRUE(tree->isValid);
    }
}

TEST(RequestJSON, ReadsALocationThatIsNotUTF8) {
    const auto tree =
        accepted(R"({"type": 0, "sourceTree": {"location": {"base64": "L3cvY2Fm6Q=="}}})")
            ->sourceTree;
    EXPECT_EQ(tree->location, "/w/caf\xE9");
    EXPECT_EQ(tree->name, "caf\xE9");
    EXPECT_EQ(
        requestFromJSON(R"({"type": 0, "sourceTree": {"location": {"base64": "?"}}})").refusal,
        "The request's member 'sourceTree.location.base64' is not base64 with padding.");
}

TEST(RequestJSON, ReadsAllMembersOfASourceTree) {
    const auto tree =
        accepted(
            R"({"type": 0, "sourceTree": {"class": "NEBSourceControlRepository", "location": "/w",
            "name": "", "reachable": false, "isValid": false,
            "isRemoteDistributedRepository": true}})")
            ->sourceTree;
    ASSERT_NE(tree, nullptr);
    EXPECT_EQ(tree->className(), "NEBSourceControlRepository");
    EXPECT_EQ(tree->location, "/w");
    EXPECT_EQ(tree->name, "");
    EXPECT_FALSE(tree->reachable);
    EXPECT_FALSE(tree->isValid);
    const auto* repository = dynamic_cast<const NEBSourceControlRepository*>(tree.get());
    ASSERT_NE(repository, nullptr);
    EXPECT_TRUE(repository->isRemoteDistributedRepository);
}

TEST(RequestJSON, AcceptsPathsURLsAndAddressesAsLocations) {
    const auto with = [](const std::string& location) {
        return R"({"type": 29, "sourceTree": {"location": ")" + location + "\"}}";
    };
    for (const char* location : {"/w", "~/w", "file:///w", "https://h/r.git", "git@h:r.git"}) {
        EXPECT_EQ(accepted(with(location))->sourceTree->location, location);
    }
}

TEST(RequestJSON, PrefersTheNameToTheLocation) {
    const auto request =
        accepted(R"({"type": 0, "sourceTree": {"location": "/w/a", "name": "project"}})");
    EXPECT_EQ(request->sourceTree->name, "project");
}

TEST(RequestJSON, ReadsTheRepositoryToAuthenticate) {
    const auto request = accepted(
        R"({"type": 0, "repositoryToAuthenticate": {"class": "NEBSourceControlRepository",
            "reachable": false, "location": "https://example.org/a.git"}})");
    ASSERT_NE(request->repositoryToAuthenticate, nullptr);
    EXPECT_EQ(request->repositoryToAuthenticate->className(), "NEBSourceControlRepository");
    EXPECT_EQ(request->repositoryToAuthenticate->name, "a.git");
    EXPECT_FALSE(request->repositoryToAuthenticate->reachable);
    EXPECT_EQ(request->sourceTree, nullptr);
}

TEST(RequestJSON, AcceptsFalseForAWorkingTree) {
    EXPECT_NE(accepted(R"({"type": 0, "sourceTree": {"isRemoteDistributedRepository": false}})")
                  ->sourceTree,
              nullptr);
}

TEST(RequestJSON, ReadsTheRemote) {
    EXPECT_FALSE(accepted(R"({"type": 0, "remote": {}})")->remote->representsGitSVNBridge);
    EXPECT_FALSE(accepted(R"({"type": 0, "remote": {"representsGitSVNBridge": null}})")
                     ->remote->representsGitSVNBridge);
    EXPECT_TRUE(accepted(R"({"type": 0, "remote": {"representsGitSVNBridge": true}})")
                    ->remote->representsGitSVNBridge);
}

TEST(RequestJSON, AcceptsAnyScalarAsDestinationOrRevision) {
    const auto request = accepted(
        R"({"type": 0, "destination": "topic", "startingRevision": true, "endingRevision": -7})");
    EXPECT_EQ(request->destination, NEBValue("topic"));
    EXPECT_EQ(request->startingRevision, NEBValue(true));
    EXPECT_EQ(request->endingRevision, NEBValue(-7));
}

TEST(RequestJSON, KeepsAllCharactersOfStrings) {
    const auto request =
        accepted(R"({"type": 0, "destination": "a\u0000\n\"\\ü\ud83d\ude00 [x]"})");
    EXPECT_EQ(request->destination,
              NEBValue(std::string("a\0\n\"\\\xC3\xBC\xF0\x9F\x98\x80 [x]", 15)));
}

TEST(RequestJSON, AcceptsTheLimitsOfIntegers) {
    EXPECT_EQ(accepted(R"({"type": 0, "destination": 9223372036854775807})")->destination,
              NEBValue(INT64_MAX));
    EXPECT_EQ(accepted(R"({"type": 0, "destination": -9223372036854775808})")->destination,
              NEBValue(INT64_MIN));
}

class NumberThatIsNoInteger : public testing::TestWithParam<std::string> {};

TEST_P(NumberThatIsNoInteger, BecomesAnObjectThatKeepsTheText) {
    const auto request = accepted(R"({"type": 0, "destination": )" + GetParam() + "}");
    ASSERT_NE(request->destination.object(), nullptr);
    EXPECT_EQ(request->destination.descriptionForAssertionMessage(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(RequestJSON, NumberThatIsNoInteger,
                         testing::Values("1.5", "15.0", "1e1", "1e300", "-0.50",
                                         "9223372036854775808", "18446744073709551615",
                                         "18446744073709551616", "-9223372036854775809"));

TEST(RequestJSON, AcceptsAnyScalarsAsFiles) {
    const auto request = accepted(R"({"type": 0, "files": ["/a", null, 3, false, 1.5, "/b"]})");
    ASSERT_EQ(request->fileCount(), 6U);
    EXPECT_EQ((*request->files)[0], NEBValue("/a"));
    EXPECT_FALSE((*request->files)[1].isPresent());
    EXPECT_EQ((*request->files)[2], NEBValue(3));
    EXPECT_EQ((*request->files)[3], NEBValue(false));
    EXPECT_NE((*request->files)[4].object(), nullptr);
    EXPECT_EQ((*request->files)[5], NEBValue("/b"));
}

TEST(RequestJSON, KeepsAnEmptyListOfFiles) {
    const auto request = accepted(R"({"type": 0, "files": []})");
    EXPECT_TRUE(request->files.has_value());
    EXPECT_EQ(request->fileCount(), 0U);
}

/// Encoders for languages with a single type for both write them so.
TEST(RequestJSON, AcceptsAnEmptyArrayAsObjectAndViceVersa) {
    const RequestReading reading = requestFromJSON(
        R"({"type": 15, "sourceTree": [], "repositoryToAuthenticate": [], "files": {},
            "remote": [], "options": []})");
    ASSERT_NE(reading.request, nullptr) << reading.refusal;
    const NEBSourceControlRequest& request = *reading.request;
    EXPECT_TRUE(request.sourceTree && request.sourceTree->reachable);
    EXPECT_TRUE(request.repositoryToAuthenticate && request.repositoryToAuthenticate->isValid);
    ASSERT_TRUE(request.files.has_value());
    EXPECT_TRUE(request.files->empty());
    EXPECT_TRUE(request.remote && !request.remote->representsGitSVNBridge);
    ASSERT_TRUE(request.options.has_value());
    EXPECT_EQ(request.options->size(), 0U);
}

TEST(RequestJSON, RefusesOtherArraysAsObjectsAndViceVersa) {
    EXPECT_EQ(requestFromJSON(R"({"type": 15, "options": [1]})").refusal,
              "The request's member 'options' is an array; expected an object.");
    EXPECT_EQ(requestFromJSON(R"({"type": 15, "files": {"a": 1}})").refusal,
              "The request's member 'files' is an object; expected an array.");
    EXPECT_NE(requestFromJSON(R"({"type": 15, "destination": []})").refusal, "");
}

TEST(RequestJSON, KnowsAllOptionKeys) {
    for (const NEBConstant key : NEBSourceControlAllRequestOptions) {
        const auto request =
            accepted(R"({"type": 0, "options": {")" + std::string(key.text()) + R"(": 50}})");
        EXPECT_EQ(request->option(key), NEBValue(50)) << key.text();
    }
}

TEST(RequestJSON, ReadsBytesThatAreNotUTF8) {
    const auto request = accepted(R"({"type": 0, "files": [{"base64": "YuRy"}],
        "destination": {"base64": ""},
        "options": {"NEBSourceControlRequestOptionMessage": ["a", {"base64": "/w=="}, 2]}})");
    EXPECT_EQ(request->files->front(), NEBValue("b\xe4r"));
    EXPECT_EQ(request->destination, NEBValue(""));
    EXPECT_EQ(request->option(NEBSourceControlRequestOptionMessage),
              NEBValue(std::vector<NEBValue>{"a", "\xff", 2}));
}

TEST(RequestJSON, RefusesWhatIsNotBase64) {
    for (const char* text : {"\"QUJ\"", "\"QUJ*\"", "\"/x==\"", "\"=\"", "\"====\"", "null"}) {
        EXPECT_EQ(
            requestFromJSON(R"({"type": 0, "files": [{"base64": )" + std::string(text) + "}]}")
                .refusal,
            "The request's member 'files[0].base64' is not base64 with padding.")
            << text;
    }
    EXPECT_EQ(requestFromJSON(R"({"type": 0, "files": [{"base64": 5}]})").refusal,
              "The request's member 'files[0].base64' is an integer; expected a string.");
    EXPECT_NE(requestFromJSON(R"({"type": 0, "files": [{"base64": "", "x": 1}]})").refusal, "");
    EXPECT_NE(requestFromJSON(R"({"type": 0, "files": [["a"]]})").refusal, "");
    EXPECT_NE(
        requestFromJSON(R"({"type": 0, "options": {"NEBSourceControlRequestOptionForce": [[1]]}})")
            .refusal,
        "");
}

TEST(RequestJSON, RefusesToGuessTheTruthOfAValue) {
    const auto with = [](const std::string& value) {
        return requestFromJSON(
            R"({"type": 1007, "options": {"NEBSourceControlRequestOptionDryRun": )" + value + "}}");
    };
    for (const char* value :
         {"\"x\"", "\"true\"", "1.5", "[]", "[true]", R"({"base64": "eA=="})"}) {
        EXPECT_THAT(with(value).refusal, testing::EndsWith("expected true or false.")) << value;
    }
    for (const char* value : {"true", "1"}) {
        EXPECT_TRUE(with(value).request->option(NEBSourceControlRequestOptionDryRun).boolValue());
    }
    EXPECT_FALSE(with("false").request->option(NEBSourceControlRequestOptionDryRun).boolValue());
    EXPECT_EQ(requestFromJSON(R"({"type": 1012, "options":
                                  {"NEBSourceControlRequestOptionForceWithLease": "main"}})")
                  .refusal,
              "");
}

TEST(RequestJSON, RefusesALocationInWhichGitCannotRun) {
    const auto with = [](int type, const std::string& location) {
        return requestFromJSON(R"({"type": )" + std::to_string(type) +
                               R"(, "sourceTree": {"location": ")" + location + "\"}}")
            .refusal;
    };
    for (const char* location :
         {"untitled:Untitled-1", "http://h/r", "h:r", "file:", "file:rel", "file:///tmp/a%00b"}) {
        for (const int type : {0, 15, 33, 999, 1000, 1007, 1013}) {
            EXPECT_EQ(with(type, location),
                      std::string("The request's member 'sourceTree.location' is '") + location +
                          "'; expected an absolute path, or a file URL with one.");
        }
        for (const int type : {25, 29, 31, 32}) {
            EXPECT_EQ(with(type, location), "") << location << type;
        }
    }
    EXPECT_EQ(with(1007, "file:///tmp/a"), "");
    EXPECT_EQ(with(1007, "/tmp/a"), "");
}

TEST(RequestJSON, TreatsANullOptionAsAbsent) {
    const auto request =
        accepted(R"({"type": 0, "options": {"NEBSourceControlRequestOptionForce": null}})");
    ASSERT_TRUE(request->options.has_value());
    EXPECT_TRUE(request->options->isEmpty());
}

}  // namespace
}  // namespace neb::nebsc
