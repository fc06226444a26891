// The exact JSON of outcomes.

#include "JSON/OutcomeJSON.h"

#include <gtest/gtest.h>
#include <signal.h>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlSourceTree.h"

namespace neb::nebsc {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

nlohmann::ordered_json jsonOf(const Outcome& outcome) {
    return nlohmann::ordered_json::parse(textOfOutcome(outcome));
}

TEST(OutcomeJSON, HasAllMembersOfAnEmptyOutcome) {
    EXPECT_EQ(textOfOutcome(Outcome()),
              R"({"type":null,"name":null,"authenticationRequired":false,"valid":false,)"
              R"("operation":null,"command":null,"commands":[],"reports":[],"result":null,)"
              R"("error":null})");
}

TEST(OutcomeJSON, ListsOmittedRevisions) {
    Outcome outcome;
    outcome.omittedRevisions = {"0123456789ab", "abc"};
    EXPECT_EQ(jsonOf(outcome)["omittedRevisions"].dump(), R"(["0123456789ab","abc"])");
}

TEST(OutcomeJSON, NamesTheType) {
    const auto nameOf = [](std::int32_t type) {
        Outcome outcome;
        outcome.type = type;
        return jsonOf(outcome)["name"].dump();
    };
    EXPECT_EQ(nameOf(18), "\"log\"");
    EXPECT_EQ(nameOf(12), "\"unsupported\"");
    EXPECT_EQ(nameOf(40), "null");
    EXPECT_EQ(nameOf(-1), "null");
}

TEST(OutcomeJSON, ContainsBothCommandsOfAPipeline) {
    Outcome outcome;
    outcome.command =
        NEBSourceControlCommand{.launchPath = "/usr/bin/git",
                                .arguments = {"archive", "HEAD"},
                                .currentDirectoryPath = "/w",
                                .pipeTo = std::make_shared<const NEBSourceControlCommand>(
                                    NEBSourceControlCommand{.launchPath = "/usr/bin/tar",
                                                            .arguments = {},
                                                            .currentDirectoryPath = std::nullopt,
                                                            .pipeTo = nullptr})};
    EXPECT_EQ(jsonOf(outcome)["command"].dump(),
              R"({"launchPath":"/usr/bin/git","arguments":["archive","HEAD"],)"
              R"("currentDirectoryPath":"/w","pipeTo":{"launchPath":"/usr/bin/tar","arguments":[],)"
              R"("currentDirectoryPath":null,"pipeTo":null}})");
}

TEST(OutcomeJSON, ReportsHowEachChildEnded) {
    Outcome outcome;
    outcome.commands = {{"/usr/bin/git", {"log"}, "/w", 128, 3141592ns},
                        {"/usr/bin/git", {}, std::nullopt, std::nullopt, std::nullopt}};
    EXPECT_EQ(jsonOf(outcome)["commands"].dump(),
              R"([{"launchPath":"/usr/bin/git","arguments":["log"],"currentDirectoryPath":"/w",)"
              R"("terminationStatus":128,"milliseconds":3.1},)"
              R"({"launchPath":"/usr/bin/git","arguments":[],"currentDirectoryPath":null,)"
              R"("terminationStatus":null,"milliseconds":null}])");
}

TEST(OutcomeJSON, RoundsMillisecondsToTenths) {
    const auto millisecondsOf = [](std::chrono::nanoseconds duration) {
        Outcome outcome;
        outcome.commands = {{"/g", {}, std::nullopt, 0, duration}};
        return jsonOf(outcome)["commands"][0]["milliseconds"].dump();
    };
    EXPECT_EQ(millisecondsOf(0ns), "0.0");
    EXPECT_EQ(millisecondsOf(49999ns), "0.0");
    EXPECT_EQ(millisecondsOf(50000ns), "0.1");
    EXPECT_EQ(millisecondsOf(2960000ns), "3.0");
    EXPECT_EQ(millisecondsOf(123456789ns), "123.5");
}

TEST(OutcomeJSON, ContainsReports) {
    Outcome outcome;
    outcome.reports = {{"-[C m:]", "Classes/C", 7, "Assertion failed: a", "a"}};
    EXPECT_EQ(jsonOf(outcome)["reports"].dump(),
              R"([{"function":"-[C m:]","file":"Classes/C","line":7,)"
              R"("message":"Assertion failed: a","condition":"a"}])");
}

TEST(OutcomeJSON, DistinguishesAbsentAndEmptyResults) {
    Outcome outcome;
    EXPECT_EQ(jsonOf(outcome)["result"].dump(), "null");
    outcome.result.emplace();
    EXPECT_EQ(jsonOf(outcome)["result"].dump(), "[]");
    outcome.result->emplace_back();
    EXPECT_EQ(jsonOf(outcome)["result"].dump(), "[{}]");
}

TEST(OutcomeJSON, ContainsEachKindOfValue) {
    NEBDictionary files;
    files.set("/w/b"s, 4);
    files.set("/w/a"s, 1);
    NEBDictionary record;
    record.set("boolean"s, true);
    record.set("integer"s, INT64_MIN);
    record.set("string"s, "a \"b\"\n");
    record.set("date"s, NEBDate(std::chrono::seconds(1330837567)));
    record.set("path"s, LOMFilePath::filePathForPathString("/t/x"));
    record.set("dictionary"s, files);
    record.set("object"s, std::static_pointer_cast<const NEBObject>(
                              std::make_shared<const NEBSourceControlWorkingTree>()));
    Outcome outcome;
    outcome.result = {record};
    EXPECT_EQ(jsonOf(outcome)["result"].dump(),
              R"([{"boolean":true,"integer":-9223372036854775808,"string":"a \"b\"\n",)"
              R"("date":"2012-03-04T05:06:07Z","path":"/t/x","dictionary":{"/w/b":4,"/w/a":1},)"
              R"("object":"<NEBSourceControlWorkingTree \"\": (null)>"}])");
}

TEST(OutcomeJSON, ContainsArraysAndBytes) {
    NEBDictionary record;
    record.set("array"s,
               std::vector<NEBValue>{"a", 1, NEBDictionary{{"b"s, true}}, std::vector<NEBValue>{}});
    record.set("bytes"s, NEBValue::ofBytes(std::string_view("\0\xff"
                                                            "a",
                                                            3)));
    record.set("none"s, NEBValue::ofBytes({}));
    Outcome outcome;
    outcome.result = {record};
    EXPECT_EQ(jsonOf(outcome)["result"].dump(),
              R"([{"array":["a",1,{"b":true},[]],"bytes":{"base64":"AP9h"},)"
              R"("none":{"base64":""}}])");
}

TEST(OutcomeJSON, ContainsTheUserInfoOfAnError) {
    Outcome outcome;
    outcome.error = NEBSourceControlError::withDescription(-21, "No.", "Try again.");
    outcome.error->errorClass = "authentication";
    outcome.error->userInfo.set(NEBSourceControlAuthenticationErrorTypeKey, "wrong");
    outcome.error->terminationStatus = TerminationStatus::exited(128);
    outcome.error->text = "fatal: no\n";
    outcome.error->hints = {"a", "", "b"};
    outcome.error->remoteLines = {"r"};
    outcome.error->files = {"x y", "z"};
    EXPECT_EQ(jsonOf(outcome)["error"].dump(),
              R"({"domain":"NEBSourceControlErrorDomain","code":-21,"class":"authentication",)"
              R"("terminationStatus":128,"text":"fatal: no\n","hints":["a","","b"],)"
              R"("remoteLines":["r"],"files":["x y","z"],)"
              R"("localizedDescription":"No.","localizedRecoverySuggestion":"Try again.",)"
              R"("userInfo":{"NEBLocalizedDescriptionKey":"No.",)"
              R"("NEBLocalizedRecoverySuggestionKey":"Try again.",)"
              R"("NEBSourceControlAuthenticationErrorTypeKey":"wrong"}})");
}

TEST(OutcomeJSON, HasNullsInAnEmptyError) {
    Outcome outcome;
    outcome.error.emplace();
    EXPECT_EQ(jsonOf(outcome)["error"].dump(),
              R"({"domain":"NEBSourceControlErrorDomain","code":-1,"class":null,)"
              R"("terminationStatus":null,"text":null,"hints":[],"remoteLines":[],"files":[],)"
              R"("localizedDescription":null,"localizedRecoverySuggestion":null,"userInfo":{}})");
}

TEST(OutcomeJSON, NamesTheSignal) {
    const auto terminationOf = [](const TerminationStatus& status) {
        Outcome outcome;
        outcome.error.emplace();
        outcome.error->terminationStatus = status;
        return jsonOf(outcome)["error"]["terminationStatus"].dump();
    };
    EXPECT_EQ(terminationOf(TerminationStatus::signalled(SIGKILL)), "\"SIGKILL\"");
    EXPECT_EQ(terminationOf(TerminationStatus::signalled(SIGRTMIN)),
              "\"SIG" + std::to_string(SIGRTMIN) + "\"");
    EXPECT_EQ(terminationOf(TerminationStatus::exited(0)), "0");
    EXPECT_EQ(terminationOf(TerminationStatus::notStarted("not found")), "null");
    EXPECT_EQ(terminationOf(TerminationStatus::unknown("already reaped")), "null");
}

TEST(OutcomeJSON, ReplacesBytesThatAreNotUTF8) {
    Outcome outcome;
    NEBDictionary record;
    record.set("k\xff"s, "a\xff\xc3");
    outcome.result = {record};
    const std::string line = textOfOutcome(outcome);
    EXPECT_NE(line.find("\"k\xEF\xBF\xBD\":\"a\xEF\xBF\xBD\xEF\xBF\xBD\""), std::string::npos)
        << line;
}

}  // namespace
}  // namespace neb::nebsc
