// RequestsPageTest.cpp - runs the examples of docs/requests.md and compares their outcomes.

#include "nebsc/Requests/RequestsPage.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <regex>
#include <stdexcept>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/TemporaryFolder.h"
#include "nebsc/NebscRun.h"

namespace neb::test {

// Used by gtest to print a section.
static void PrintTo(const RequestSection& section, std::ostream* stream) {
    *stream << section.type << " " << section.name;
}

namespace {

using JSON = nlohmann::ordered_json;
using testing::HasSubstr;

/// The folder of the examples, as written on the page.
constexpr std::string_view exampleFolder = "/home/ann";

std::string replaced(std::string text, std::string_view what, std::string_view with) {
    for (std::size_t position = 0; (position = text.find(what, position)) != std::string::npos;
         position += with.size()) {
        text.replace(position, what.size(), with);
    }
    return text;
}

// ---- the repositories of the examples ---------------------------------------------------------

constexpr const char* worldScript =
    NEB_SOURCE_FOLDER "/Tests/nebsc/Requests/make-example-repositories";

class World {
public:
    World() { succeed(worldScript, {path()}, "/"); }

    [[nodiscard]] std::string path() const { return _folder.path("ann"); }
    void run(std::string_view script, const std::string& folder) const {
        succeed("/bin/sh", {"-e", "-c", std::string(script), "sh", path()}, folder);
    }
    [[nodiscard]] JSON outcomeOf(const RequestExample& example) const {
        if (!example.script.empty()) {
            run(example.script, path() + "/demo");
        }
        std::vector<std::string> args{"request"};
        if (example.isPlan) {
            args.emplace_back("--dry-run");
        }
        const NebscOutcome outcome =
            runNebsc(args, {.folder = _folder.path(),
                            .input = replaced(example.request, exampleFolder, path()),
                            .variables = {{"TMPDIR", path() + "/tmp"}}});
        EXPECT_EQ(outcome.errors, "");
        return outcome.json();
    }
    /// Replaces the parts of an outcome that vary between runs and machines.
    [[nodiscard]] std::string normalized(const std::string& text) const {
        static const std::regex programOfGit(R"("launchPath": "[^"]*/git")");
        static const std::regex randomName(R"([0-9A-F]{16}-)");
        return std::regex_replace(
            std::regex_replace(replaced(text, path(), exampleFolder), programOfGit,
                               R"("launchPath": "/usr/bin/git")"),
            randomName, "0123456789ABCDEF-");
    }

private:
    static void succeed(const std::string& program, const std::vector<std::string>& args,
                        const std::string& folder) {
        const NebscOutcome outcome = runProgram(program, args, {.folder = folder});
        if (outcome.exitStatus != 0) {
            throw std::runtime_error(outcome.errors);
        }
    }

    TemporaryFolder _folder;
};

// ---- JSON for the page ------------------------------------------------------------------------

std::string onOneLine(const JSON& value) {
    std::string text;
    if (value.is_object()) {
        for (const auto& [key, member] : value.items()) {
            text += (text.empty() ? "" : ", ") + JSON(key).dump() + ": " + onOneLine(member);
        }
        return "{" + text + "}";
    }
    if (value.is_array()) {
        for (const JSON& element : value) {
            text += (text.empty() ? "" : ", ") + onOneLine(element);
        }
        return "[" + text + "]";
    }
    return value.dump();
}

bool isListOfObjects(const JSON& value) {
    return value.is_array() && !value.empty() && value.front().is_object();
}

/// Returns the outcome with a line for each member, each element of a list of objects, and each
/// member of the error.
std::string formatted(const JSON& outcome) {
    std::string text;
    for (const auto& [key, member] : outcome.items()) {
        text += (text.empty() ? "{\n  " : ",\n  ") + JSON(key).dump() + ": ";
        const bool isList = isListOfObjects(member);
        if (!isList && (key != "error" || member.is_null())) {
            text += onOneLine(member);
            continue;
        }
        std::string lines;
        for (const auto& [name, element] : member.items()) {
            lines += (lines.empty() ? "\n    " : ",\n    ") +
                     (isList ? "" : JSON(name).dump() + ": ") + onOneLine(element);
        }
        text += (isList ? "[" : "{") + lines + (isList ? "\n  ]" : "\n  }");
    }
    return text + "\n}\n";
}

/// Replaces what varies between runs: the duration of a command, and whether the add that runs
/// concurrently with a copy or the creation of a folder came first and found nothing.
void normalizeCommands(JSON& outcome) {
    const bool isConcurrentAdd = outcome["type"] == NEBSourceControlRequestMakeDirectory ||
                                 outcome["type"] == NEBSourceControlRequestCopy;
    for (JSON& command : outcome["commands"]) {
        EXPECT_GT(command["milliseconds"], 0);
        command["milliseconds"] = 3.1;
        if (isConcurrentAdd && command["terminationStatus"] == 128) {
            command["terminationStatus"] = 0;
        }
    }
}

/// Returns the outcome without the texts that differ between versions of git.
JSON withoutTexts(JSON outcome) {
    for (JSON& record : outcome["result"]) {
        for (JSON& value : record) {
            value = nullptr;
        }
    }
    if (outcome["error"].is_object()) {
        outcome["error"] = {{"code", outcome["error"]["code"]},
                            {"class", outcome["error"]["class"]}};
    }
    return outcome;
}

// ---- command lines ----------------------------------------------------------------------------

std::string escapedForRegex(const std::string& text) {
    return std::regex_replace(text, std::regex(R"([.^$|()*+?{}\[\]\\])"), R"(\$&)");
}

/// Returns a regular expression for a command line such as "git log [-LIMIT] [-- FILE…]". It
/// matches the arguments separated by U+001F: names in capitals match any text, brackets are
/// optional parts, and "…" matches further arguments.
std::regex expressionFor(const std::string& commandLine) {
    std::string expression;
    std::size_t depth = 0;
    const std::regex token(R"(\[| ?\]|…| |[A-Z]+|[^\[\]A-Z …]+)");
    for (std::sregex_iterator match(commandLine.begin(), commandLine.end(), token), end;
         match != end; ++match) {
        const std::string text = match->str();
        if (text == "[") {
            ++depth;
            expression += "(";
        } else if (text == "]" || text == " ]") {
            --depth;
            expression += ")?";
        } else if (text == "…") {
            expression += "(\x1f[^\x1f]*)*";
        } else if (text == " ") {
            expression += "\x1f?";
        } else if (std::isupper(static_cast<unsigned char>(text.front())) != 0) {
            expression += "[^\x1f]*";
        } else {
            expression += escapedForRegex(text);
        }
    }
    EXPECT_EQ(depth, 0U) << commandLine;
    return std::regex(expression);
}

std::string programOf(const JSON& command) {
    const std::string path = command["launchPath"].get<std::string>();
    return path.ends_with("/git") ? "git" : path;
}

/// Whether the section has a command line that matches the command.
bool isDocumented(const JSON& command, const RequestSection& section) {
    std::string args = programOf(command);
    for (const JSON& argument : command["arguments"]) {
        args += "\x1f" + argument.get<std::string>();
    }
    return std::any_of(section.commandLines.begin(), section.commandLines.end(),
                       [&args](const std::string& commandLine) {
                           return std::regex_match(args, expressionFor(commandLine));
                       });
}

void expectDocumented(const JSON& outcome, const RequestSection& section) {
    for (const JSON& command : outcome["commands"]) {
        EXPECT_TRUE(isDocumented(command, section)) << command;
    }
    if (outcome["command"].is_object()) {
        EXPECT_TRUE(isDocumented(outcome["command"], section)) << outcome["command"];
    }
    constexpr std::string_view prefix = "NEBSourceControlOperation";
    for (const JSON& record : outcome["result"]) {
        for (const auto& [key, value] : record.items()) {
            EXPECT_THAT(section.text, HasSubstr("`" + key.substr(prefix.size()) + "`"));
        }
    }
}

// ---- tests ------------------------------------------------------------------------------------

/// Returns the generated line of a section, from `nebsc types --json`.
std::string factsOf(const JSON& type) {
    std::string needs;
    for (const JSON& need : type["needs"]) {
        needs += (needs.empty() ? "" : ", ") + need.get<std::string>();
    }
    const std::string className =
        type["operation"].is_null() ? "none" : "`" + type["operation"].get<std::string>() + "`";
    return "Class: " + className + ". Requires: " + (needs.empty() ? "nothing" : needs) +
           ". Authentication: " + (type["authentication"].get<bool>() ? "possible." : "no.");
}

class RequestsPageTest : public HygienicTest, public testing::WithParamInterface<RequestSection> {};

TEST_P(RequestsPageTest, MatchesTheProgram) {
    const RequestSection& section = GetParam();
    RequestsPage& page = RequestsPage::instance();
    const JSON types = runNebsc({"types", "--json"}).json();
    const auto type =
        *std::ranges::find(types, JSON(section.type), [](const JSON& row) { return row["type"]; });
    EXPECT_EQ(section.name, type["name"]);
    ASSERT_FALSE(section.examples.empty());
    std::vector<std::string> outcomes;
    for (const RequestExample& example : section.examples) {
        SCOPED_TRACE(example.request);
        const World world;
        JSON outcome = world.outcomeOf(example);
        EXPECT_EQ(outcome["type"], section.type);
        normalizeCommands(outcome);
        expectDocumented(outcome, section);
        outcomes.push_back(world.normalized(formatted(outcome)));
        if (page.isWritten()) {
            continue;
        }
        if (page.isOfThisGit()) {
            EXPECT_EQ(example.outcome, outcomes.back())
                << "NEB_WRITE_REQUESTS_PAGE=1 updates the page";
        } else {
            EXPECT_EQ(withoutTexts(JSON::parse(example.outcome)),
                      withoutTexts(JSON::parse(outcomes.back())));
        }
    }
    if (page.isWritten()) {
        page.set(section, factsOf(type), outcomes);
    } else {
        EXPECT_EQ(section.facts, factsOf(type));
    }
}

std::string testNameOf(const testing::TestParamInfo<RequestSection>& info) {
    std::string name;
    bool isWordStart = true;
    for (const char character : info.param.name) {
        if (std::isalpha(static_cast<unsigned char>(character)) != 0) {
            name += isWordStart ? static_cast<char>(std::toupper(character)) : character;
        }
        isWordStart = character == ' ';
    }
    return name + std::to_string(info.param.type);
}

INSTANTIATE_TEST_SUITE_P(All, RequestsPageTest,
                         testing::ValuesIn(RequestsPage::instance().sections()), testNameOf);

TEST(RequestsPage, HasEveryTypeInOrder) {
    const auto& sections = RequestsPage::instance().sections();
    std::vector<std::int32_t> types;
    for (const auto& row : NEBSourceControlAllRequestTypes()) {
        types.push_back(row.type);
    }
    std::vector<std::int32_t> described;
    for (const RequestSection& section : sections) {
        described.push_back(section.type);
    }
    EXPECT_EQ(described, types);
}

/// Sections name options and keys without their prefixes.
TEST(RequestsPage, NamesEveryOptionAndEveryKeyOfAResult) {
    std::string text;
    for (const RequestSection& section : RequestsPage::instance().sections()) {
        text += section.text;
        for (const char* entry : {"reads", "runs", "returns", "errors"}) {
            EXPECT_THAT(section.text, HasSubstr(std::string("\n- **") + entry + "** "));
        }
    }
    constexpr std::string_view prefix = "NEBSourceControlRequestOption";
    for (const NEBConstant option : NEBSourceControlAllRequestOptions) {
        EXPECT_THAT(text, HasSubstr("`" + std::string(option.text().substr(prefix.size())) + "`"));
    }
}

/// Each error class of the page is listed in docs/errors.md.
TEST(RequestsPage, NamesOnlyExistingErrorClasses) {
    std::ifstream stream(NEB_SOURCE_FOLDER "/docs/errors.md", std::ios::binary);
    const std::string errors(std::istreambuf_iterator<char>(stream), {});
    const std::regex errorClass("`[a-z]+(-[a-z]+)*`");
    std::size_t count = 0;
    for (const RequestSection& section : RequestsPage::instance().sections()) {
        const std::size_t begin = section.text.find("\n- **errors** ");
        const std::string entry =
            section.text.substr(begin, section.text.find("\n\n", begin) - begin);
        for (std::sregex_iterator match(entry.begin(), entry.end(), errorClass), end; match != end;
             ++match) {
            EXPECT_THAT(errors, HasSubstr("| " + match->str() + " |")) << section.name;
            ++count;
        }
    }
    EXPECT_GT(count, 60U);
}

}  // namespace
}  // namespace neb::test
