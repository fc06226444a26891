// Recordings that are damaged, or made to do harm.

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

#include "Commands/OwnOperations.h"
#include "NEBFoundation/NEBSourceControlPlugIn.h"
#include "Recording/RecordingReader.h"
#include "Recording/Replay.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using nebsc::readRecording;
using nebsc::RecordingReading;
using testing::AnyOf;
using testing::HasSubstr;
using testing::StartsWith;
using JSON = nlohmann::ordered_json;

using Lines = std::vector<JSON>;

/// Without most of the environment variables, which a replay does not use.
Lines recordedLines(const std::string& name) {
    std::ifstream file(std::string(NEB_SOURCE_FOLDER) + "/Tests/Recordings/git-2.39.5/" + name +
                       ".recording");
    Lines lines;
    for (std::string line; std::getline(file, line);) {
        JSON& json = lines.emplace_back(JSON::parse(line));
        if (json.contains("children")) {
            for (JSON& child : json["children"]) {
                child["set"] = JSON::array({child["set"][0]});
            }
        }
    }
    EXPECT_GT(lines.size(), 4U);
    return lines;
}

std::string joined(const Lines& lines) {
    std::string text;
    for (const JSON& line : lines) {
        text += line.dump() + "\n";
    }
    return text;
}

RecordingReading readingOf(const std::string& text) {
    std::istringstream stream(text);
    return readRecording(stream);
}

/// Calls the function for each member and for the first elements of each array, with its path.
void forEachValue(const JSON& json, const JSON::json_pointer& path,
                  const std::function<void(const JSON::json_pointer&)>& function) {
    constexpr std::size_t elements = 2;
    if (!json.is_structured()) {
        return;
    }
    for (const auto& [name, value] : json.items()) {
        if (json.is_array() && std::stoul(name) >= elements) {
            break;
        }
        const auto member = json.is_array() ? path / std::stoul(name) : path / name;
        function(member);
        forEachValue(value, member, function);
    }
}

/// A value of each kind, and some that are hard to take.
const JSON values[] = {nullptr,
                       true,
                       -1,
                       1e300,
                       "",
                       std::string("x\0y", 3),
                       JSON::array(),
                       JSON::array({1, "x"}),
                       JSON::object(),
                       {{"base64", "%"}},
                       {{"base64", "AP8="}}};

class DamagedRecording : public testing::TestWithParam<const char*> {
protected:
    /// Reads the text and, if it is a recording, replays it. A failure must name a line.
    void expectNoHarm(const std::string& text, const std::string& change) {
        const RecordingReading reading = readingOf(text);
        if (!reading.failure.empty()) {
            ++_refused;
            EXPECT_THAT(reading.failure, AnyOf(HasSubstr("line "), StartsWith("has a format that")))
                << change;
            return;
        }
        ++_replayed;
        for (const nebsc::RecordedRequest& request : reading.requests) {
            static_cast<void>(nebsc::replay(_session, request, nebsc::ownOperation));
        }
    }
    [[nodiscard]] int refused() const { return _refused; }
    [[nodiscard]] int replayed() const { return _replayed; }

private:
    const NEBSourceControlPlugInLoad _plugIn =
        NEBSourceControlPlugIn::load(NEB_BUILD_FOLDER "/lib/NEBGit.so");
    const nebsc::HostSession _session{_plugIn.plugIn->makePrincipalClass()};
    int _refused = 0, _replayed = 0;
};

TEST_P(DamagedRecording, IsRefusedWithTheLineOrReplayed) {
    const Lines lines = recordedLines(GetParam());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        forEachValue(lines[i], JSON::json_pointer(), [&](const JSON::json_pointer& path) {
            Lines changed = lines;
            JSON& parent = changed[i].at(path.parent_pointer());
            if (parent.is_array()) {
                parent.erase(std::stoul(path.back()));
            } else {
                parent.erase(path.back());
            }
            const std::string where = std::to_string(i + 1) + " " + path.to_string();
            expectNoHarm(joined(changed), where + " removed");
            for (const JSON& value : values) {
                changed = lines;
                changed[i][path] = value;
                expectNoHarm(joined(changed), where + " = " + value.dump());
            }
        });
    }
    EXPECT_GT(refused(), 300);
    EXPECT_GT(replayed(), 100);
}

TEST_P(DamagedRecording, HasItsLinesInOrder) {
    const Lines lines = recordedLines(GetParam());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            Lines changed = lines;
            std::swap(changed[i], changed[j]);
            expectNoHarm(joined(changed), std::to_string(i) + " and " + std::to_string(j));
        }
        Lines repeated = lines;
        repeated.insert(repeated.begin() + static_cast<std::ptrdiff_t>(i), lines[i]);
        EXPECT_NE(readingOf(joined(repeated)).failure, "") << i;
        repeated.back()["lines"] = repeated.size();
        expectNoHarm(joined(repeated), std::to_string(i) + " repeated");
    }
}

INSTANTIATE_TEST_SUITE_P(Recordings, DamagedRecording,
                         testing::Values("log", "show", "merge-conflict"), [](const auto& tested) {
                             std::string name = tested.param;
                             std::erase(name, '-');
                             return name;
                         });

// ---- messages ---------------------------------------------------------------------------------

/// Returns the failure of reading the log recording with a changed line.
std::string failureWith(std::size_t number, const std::function<void(JSON&)>& change) {
    Lines lines = recordedLines("log");
    change(lines.at(number - 1));
    return readingOf(joined(lines)).failure;
}

/// Returns the failure of reading the log recording with another text as its second line.
std::string failureOfLine(const std::string& line) {
    const Lines lines = recordedLines("log");
    return readingOf(lines[0].dump() + "\n" + line + "\n").failure;
}

TEST(DamagedRecordingMessage, NamesLineAndMember) {
    EXPECT_EQ(failureWith(1, [](JSON& line) { line.erase("home"); }),
              "has an invalid line 1: the member 'home' is missing");
    EXPECT_EQ(failureWith(4, [](JSON& line) { line["children"][0]["status"]["exit"] = 256; }),
              "has an invalid line 4: the member 'children[0].status.exit' is the number 256; "
              "expected an integer from 0 to 255");
    EXPECT_EQ(failureWith(4, [](JSON& line) { line["children"] = JSON::array(); }),
              "has an invalid line 4: the member 'children' is empty");
    EXPECT_EQ(failureWith(4,
                          [](JSON& line) {
                              line["children"][0]["output"] = {{"base64", "%"}};
                          }),
              "has an invalid line 4: the member 'children[0].output.base64' is not base64");
    EXPECT_EQ(failureWith(1, [](JSON& line) { line["home"] = std::string("a\0b", 3); }),
              "has an invalid line 1: the member 'home' contains a NUL byte");
    EXPECT_EQ(failureWith(2, [](JSON& line) { line["json"]["type"] = "log"; }),
              "has an invalid line 2: the member 'json' is not a request: The request's member "
              "'type' is a string; expected an integer from -2147483648 to 2147483647.");
    EXPECT_EQ(failureWith(3, [](JSON& line) { line["kind"] = "cat\n"; }),
              "has an invalid line 3: the member 'kind' is 'cat\\n'; expected 'request', 'run', "
              "'answer', 'records', 'outcome' or 'end'");
    EXPECT_EQ(failureWith(3, [](JSON& line) { line["request"] = 7; }),
              "has an invalid line 3: the member 'request' is 7; no line before is a request with "
              "this number");
    EXPECT_EQ(failureWith(6, [](JSON& line) { line["limits"]["silenceMilliseconds"] = -1; }),
              "has an invalid line 6: the member 'limits' is not the limits of a request: The "
              "request's member 'limits.silenceMilliseconds' is -1; expected an integer above 0.");
}

TEST(DamagedRecordingMessage, NamesTheLineThatIsNoJSONOrTooLarge) {
    EXPECT_EQ(failureOfLine(R"({"kind":"run","start":1e999})"),
              "has an invalid line 2: it has a number that is too large, at or after the member "
              "'start'");
    EXPECT_EQ(failureOfLine(R"({"kind":"run)"),
              "has an invalid line 2: it is not JSON at byte 13, at or after the member 'kind'");
    EXPECT_EQ(failureOfLine("[]"), "has an invalid line 2: it is an array; expected an object");
    const std::size_t many = 1000000;
    EXPECT_EQ(failureOfLine(R"({"kind":)" + std::string(many, '[') + std::string(many, ']') + "}"),
              "has an invalid line 2: it is nested more than 64 levels deep, at or after the "
              "member 'kind'");
    std::string members = R"({"kind":1)";
    for (std::size_t i = 0; i < many; ++i) {
        members += ",\"" + std::to_string(i) + "\":0";
    }
    EXPECT_EQ(failureOfLine(members + "}"),
              "has an invalid line 2: it has an object of more than 1000 members, up to '999'");
}

TEST(DamagedRecordingMessage, IsPrintedOnOneLine) {
    const TemporaryFolder folder;
    std::string text = joined(recordedLines("log"));
    text.replace(text.find("\"location\""), std::string("\"location\"").size(), "\"\\u001b\\n\"");
    folder.write("file", text);
    const NebscOutcome outcome = runNebsc({"replay", folder.path("file")}, {});
    expectFailed(
        outcome,
        "nebsc: recording '" + folder.path("file") +
            "' has an invalid line 2: the member 'json' is not a request: The request's "
            "member 'sourceTree.\\x1b\\n' is unknown; expected one of class, location, name, "
            "reachable, isValid, isRemoteDistributedRepository\n",
        2);
    expectFailed(runNebsc({"replay", folder.path()}, {}), HasSubstr("Is a directory"), 2);
    folder.write("file", "");
    expectFailed(runNebsc({"replay", folder.path("file")}, {}), HasSubstr("is empty"), 2);
}

TEST(DamagedRecordingFile, OnlyARegularFileIsRead) {
    const TemporaryFolder folder;
    const std::string pipe = folder.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), S_IRUSR | S_IWUSR), 0);
    for (const std::string& file : {pipe, std::string("/dev/zero")}) {
        const auto refused = HasSubstr("cannot be read: it is not a regular file");
        expectFailed(runNebsc({"replay", file}, {}), refused, 2);
        expectFailed(runNebsc({"report", "--from", file, folder.path("copy")}, {}), refused, 2);
    }
    EXPECT_FALSE(std::filesystem::exists(folder.path("copy")));
}

}  // namespace
}  // namespace neb::test
