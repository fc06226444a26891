// "sourceControl/describe": the JSON Schema of requests and outcomes.

#include "JSON/Schema/RequestSchema.h"

#include <gmock/gmock.h>

#include <fstream>
#include <set>
#include <sstream>

#include "JSON/RequestJSON.h"
#include "JSON/Schema/TypeMembers.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/TemporaryFolder.h"
#include "Support/TestRepository.h"
#include "nebsc/JSON/Schema/SchemaValidator.h"
#include "nebsc/NebscRun.h"
#include "nebsc/Server/ServerClient.h"

namespace neb::test {
namespace {

using namespace neb::nebsc;
using JSON = nlohmann::ordered_json;

/// Returns the JSON blocks of a page, except fragments.
std::vector<JSON> examplesOf(const std::string& page) {
    std::ifstream file(NEB_SOURCE_FOLDER "/docs/" + page);
    std::vector<JSON> examples;
    std::string block;
    bool isInside = false;
    for (std::string line; std::getline(file, line);) {
        if (line == "```json") {
            isInside = true;
            block.clear();
        } else if (line == "```" && isInside) {
            isInside = false;
            const JSON example = JSON::parse(block, nullptr, false);
            if (!example.is_discarded()) {
                examples.push_back(example);
            }
        } else if (isInside) {
            block += line + "\n";
        }
    }
    return examples;
}

std::vector<std::string> namesIn(std::string_view list) {
    std::istringstream words{std::string(list)};
    return {std::istream_iterator<std::string>(words), std::istream_iterator<std::string>()};
}

class RequestSchema : public testing::Test {
protected:
    [[nodiscard]] std::string violation(const std::string& name, const JSON& value) const {
        return schemaViolation(schema, schema["$defs"].at(name), value);
    }
    /// Checks also that the schema knows all members.
    void expectKnownRecord(const std::string& number, const JSON& record) const {
        EXPECT_EQ(violation("record-" + number, record), "") << record;
        for (const auto& [key, value] : record.items()) {
            EXPECT_TRUE(schema["$defs"]["record-" + number]["properties"].contains(key))
                << "type " << number << ": " << key;
        }
    }

    const JSON schema = requestSchema();
};

TEST_F(RequestSchema, MatchesTheExamples) {
    std::set<std::string> described;
    for (const JSON& example : examplesOf("requests.md")) {
        const std::string number = std::to_string(example["type"].get<int>());
        const bool isOutcome = example.contains("valid");
        if (!schema["$defs"].contains("request-" + number)) {
            continue;  // a type without an operation
        }
        if (!isOutcome) {
            EXPECT_EQ(violation("request-" + number, example), "") << example;
            const JSON options = example.value("options", JSON::object());
            for (const auto& [name, value] : options.items()) {
                EXPECT_TRUE(
                    schema["$defs"]["request-" + number]["properties"]["options"]["properties"]
                        .contains(name))
                    << number << name;
            }
            continue;
        }
        described.insert(number);
        EXPECT_EQ(violation("outcome", example), "") << example;
        if (example["result"].is_array()) {
            for (const JSON& record : example["result"]) {
                expectKnownRecord(number, record);
            }
        }
    }
    EXPECT_GT(described.size(), 50U);
}

/// A server prints lines for a push of a branch.
TEST_F(RequestSchema, KnowsTheLinesOfAServer) {
    const TestRepository repository;
    const TemporaryFolder folder;
    repository.commitFile("a", "1\n");
    repository.git({"init", "-q", "--bare", folder.path("origin")});
    repository.git({"remote", "add", "origin", folder.path("origin")});
    folder.writeProgram("origin/hooks/post-receive", "#!/bin/sh\necho Reviewed\n");
    const JSON outcome = runNebsc({"push", "-u", "--json"}, {.folder = repository.path()}).json();
    ASSERT_EQ(outcome["result"].size(), 2U) << outcome;
    for (const JSON& record : outcome["result"]) {
        expectKnownRecord("1012", record);
    }
}

TEST_F(RequestSchema, DescribesAllTypesAndOptions) {
    for (const auto& type : NEBSourceControlAllRequestTypes()) {
        const std::string name = "request-" + std::to_string(type.type);
        EXPECT_EQ(schema["$defs"].contains(name), type.name != "unsupported") << type.type;
        for (const std::string& option : namesIn(membersOfType(type.type).options)) {
            EXPECT_TRUE(schema["$defs"]["options"]["properties"].contains(
                "NEBSourceControlRequestOption" + option))
                << type.type << option;
        }
        for (const std::string& key : namesIn(membersOfType(type.type).record)) {
            EXPECT_TRUE(
                schema["$defs"]["record-" + std::to_string(type.type)]["properties"].contains(
                    "NEBSourceControlOperation" + key + "Key"))
                << type.type << key;
        }
    }
    std::set<std::string> options;
    for (const auto& [name, value] : schema["$defs"]["options"]["properties"].items()) {
        options.insert(name);
    }
    std::set<std::string> known;
    for (const NEBConstant option : NEBSourceControlAllRequestOptions) {
        known.insert(std::string(option.text()));
    }
    EXPECT_EQ(options, known);
}

TEST_F(RequestSchema, HasTheMembersThatRequestsHave) {
    const std::string refusal = requestFromJSON(R"({"type": 0, "x": 1})").refusal;
    std::string members;
    for (const auto& [name, value] : schema["$defs"]["request"]["properties"].items()) {
        members += (members.empty() ? "" : ", ") + name;
    }
    EXPECT_THAT(refusal, testing::EndsWith("expected one of " + members + "."));
}

TEST_F(RequestSchema, RefusesWhatIsRefused) {
    const JSON location{{"location", "/w"}};
    const std::pair<JSON, std::string> rows[] = {
        {JSON::object(), "the value lacks the member \"type\""},
        {{{"type", 18}, {"sourcetree", location}}, "the value has the unknown member sourcetree"},
        {{{"type", 18}, {"sourceTree", 1}}, "sourceTree is not of the type"},
        {{{"type", 18}, {"options", {{"Limit", 1}}}}, "options has the unknown member Limit"},
        {{{"type", 18}, {"files", "a"}}, "files is not of the type"},
        {{{"type", 18}, {"limits", {{"outputBytes", 0}}}}, "limits.outputBytes exceeds the limit"},
        {{{"type", 18}, {"limits", {{"lockWaitMilliseconds", -1}}}},
         "limits.lockWaitMilliseconds exceeds the limit"},
        {{{"type", 18}, {"background", "yes"}}, "background is not of the type"},
        {{{"type", 17}}, "the value exceeds the limit 18"},
    };
    for (const auto& [request, expected] : rows) {
        const std::string found = violation("request-18", request);
        EXPECT_THAT(found, testing::AnyOf(testing::HasSubstr(expected),
                                          testing::HasSubstr("type exceeds the limit 18")))
            << request;
        EXPECT_NE(found, "") << request;
    }
    EXPECT_THAT(violation("request-28", {{"type", 28}, {"files", JSON::array()}}),
                testing::HasSubstr("files exceeds the limit 1"));
    EXPECT_THAT(violation("request-1", {{"type", 1}}),
                testing::HasSubstr("lacks the member \"destination\""));
}

TEST_F(RequestSchema, IsWhatTheServerDescribes) {
    ServerClient client;
    client.initialize();
    client.send(1, "sourceControl/describe");
    EXPECT_EQ(client.answerTo(1)["result"], schema);
}

}  // namespace
}  // namespace neb::test
