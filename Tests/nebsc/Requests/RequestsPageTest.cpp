// Each type of request is as docs/requests.md says: its examples are carried out and compared.

#include "nebsc/Requests/RequestsPage.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <regex>
#include <stdexcept>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Support/HygienicTest.h"
#include "Support/TemporaryFolder.h"
#include "nebsc/NebscRun.h"

namespace neb::test {

// How gtest shows a section.
static void PrintTo(const RequestSection& section, std::ostream* stream) {
    *stream << section.type << " " << section.name;
}

namespace {

using JSON = nlohmann::ordered_json;
using testing::HasSubstr;

/// Where the page's examples are.
constexpr std::string_view pageFolder = "/home/ann";

std::string replaced(std::string text, std::string_view what, std::string_view with) {
    for (std::size_t place = 0; (place = text.find(what, place)) != std::string::npos;
         place += with.size()) {
        text.replace(place, what.size(), with);
    }
    return text;
}

// ---- the repositories of the examples ---------------------------------------------------------

constexpr std::string_view worldScript = R"SH(
set -e
mkdir "$1" "$1/tmp"
cd "$1"
git init -q demo
cd demo
mkdir src
printf 'int main() { return 0; }\n' >main.c
printf 'int two = 2;\n' >src/util.c
printf 'Notes.\n' >notes.txt
git add .
git commit -q -m 'Say hello'
git tag v1.0
git checkout -q -b topic
printf 'int topic;\n' >topic.c
git add .
git commit -q -m 'Add a topic'
git checkout -q main
printf 'int main() { return 1; }\n' >main.c
git commit -q -a -m 'Return 1'
git clone -q --bare . ../shared.git
git remote add origin "$1/shared.git"
git fetch -q
git branch -q --set-upstream-to=origin/main
git clone -q ../shared.git ../ben
cd ../ben
printf 'int ben;\n' >ben.c
git add .
git commit -q -m 'Add Ben'
git push -q origin main
rm -rf ../ben
)SH";

class World {
public:
    World() { run(worldScript, "/"); }

    [[nodiscard]] std::string path() const { return _folder.path("ann"); }
    void run(std::string_view script, const std::string& folder) const {
        const NebscOutcome outcome = runProgram(
            "/bin/sh", {"-e", "-c", std::string(script), "sh", path()}, {.folder = folder});
        if (outcome.exitStatus != 0) {
            throw std::runtime_error(outcome.errors);
        }
    }
    [[nodiscard]] JSON outcomeOf(const RequestExample& example) const {
        if (!example.script.empty()) {
            run(example.script, path() + "/demo");
        }
        std::vector<std::string> words{"request"};
        if (example.isPlan) {
            words.emplace_back("--dry-run");
        }
        const NebscOutcome outcome =
            runNebsc(words, {.folder = _folder.path(),
                             .input = replaced(example.request, pageFolder, path()),
                             .variables = {{"TMPDIR", path() + "/tmp"}}});
        EXPECT_EQ(outcome.errors, "");
        return outcome.json();
    }
    /// The outcome as the page has it.
    [[nodiscard]] std::string steady(const std::string& text) const {
        static const std::regex programOfGit(R"("launchPath": "[^"]*/git")");
        static const std::regex randomName(R"([0-9A-F]{16}-)");
        return std::regex_replace(
            std::regex_replace(replaced(text, path(), pageFolder), programOfGit,
                               R"("launchPath": "/usr/bin/git")"),
            randomName, "0123456789ABCDEF-");
    }

private:
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

/// A line for each member, and for each element or member of those that hold much.
std::string laidOut(const JSON& outcome) {
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

/// Evens out what differs from run to run: how long a command took, and whether the add beside a
/// copy or a new folder came first, and so found nothing.
void steadyCommands(JSON& outcome) {
    const bool isBesideWork = outcome["type"] == 8 || outcome["type"] == 10;
    for (JSON& command : outcome["commands"]) {
        EXPECT_GT(command["milliseconds"], 0);
        command["milliseconds"] = 3.1;
        if (isBesideWork && command["terminationStatus"] == 128) {
            command["terminationStatus"] = 0;
        }
    }
}

/// The outcome without what another git may word or count otherwise.
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

/// "git log [-LIMIT] [-- FILE…]" as an expression for arguments with a blank in front of each:
/// words in capitals stand for any, brackets for what may be missing, the dots for more of it.
std::regex expressionFor(const std::string& commandLine) {
    std::string expression;
    std::size_t depth = 0;
    const std::regex piece(R"(\[| ?\]|…| |[A-Z]+|[^\[\]A-Z …]+)");
    for (std::sregex_iterator match(commandLine.begin(), commandLine.end(), piece), end;
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

/// Whether the page has a command line for this one.
bool isDocumented(const JSON& command, const RequestSection& section) {
    std::string words = programOf(command);
    for (const JSON& argument : command["arguments"]) {
        words += "\x1f" + argument.get<std::string>();
    }
    return std::any_of(section.commandLines.begin(), section.commandLines.end(),
                       [&words](const std::string& commandLine) {
                           return std::regex_match(words, expressionFor(commandLine));
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

/// What the program itself says of a type.
std::string factsOf(const JSON& type) {
    std::string needs;
    for (const JSON& need : type["needs"]) {
        needs += (needs.empty() ? "" : ", ") + need.get<std::string>();
    }
    const std::string carrier =
        type["operation"].is_null() ? "nothing" : "`" + type["operation"].get<std::string>() + "`";
    return "Carried out by " + carrier + ". Needs: " + (needs.empty() ? "nothing" : needs) +
           ". Authentication: " + (type["authentication"].get<bool>() ? "perhaps." : "none.");
}

class RequestsPageTest : public HygienicTest, public testing::WithParamInterface<RequestSection> {};

TEST_P(RequestsPageTest, TellsWhatTheProgramDoes) {
    const RequestSection& section = GetParam();
    RequestsPage& page = RequestsPage::instance();
    const JSON type =
        runNebsc({"types", "--json"}).json().at(static_cast<std::size_t>(section.type));
    EXPECT_EQ(section.name, type["name"]);
    ASSERT_FALSE(section.examples.empty());
    std::vector<std::string> outcomes;
    for (const RequestExample& example : section.examples) {
        SCOPED_TRACE(example.request);
        const World world;
        JSON outcome = world.outcomeOf(example);
        EXPECT_EQ(outcome["type"], section.type);
        steadyCommands(outcome);
        expectDocumented(outcome, section);
        outcomes.push_back(world.steady(laidOut(outcome)));
        if (page.isWritten()) {
            continue;
        }
        if (page.isOfThisGit()) {
            EXPECT_EQ(example.outcome, outcomes.back())
                << "NEB_WRITE_REQUESTS_PAGE=1 writes the page anew";
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
    bool isNewWord = true;
    for (const char character : info.param.name) {
        if (std::isalpha(static_cast<unsigned char>(character)) != 0) {
            name += isNewWord ? static_cast<char>(std::toupper(character)) : character;
        }
        isNewWord = character == ' ';
    }
    return name + std::to_string(info.param.type);
}

INSTANTIATE_TEST_SUITE_P(All, RequestsPageTest,
                         testing::ValuesIn(RequestsPage::instance().sections()), testNameOf);

TEST(RequestsPageAsAWhole, HasEveryTypeInOrder) {
    const auto& sections = RequestsPage::instance().sections();
    ASSERT_EQ(sections.size(), 40U);
    for (std::size_t i = 0; i < sections.size(); ++i) {
        EXPECT_EQ(sections[i].type, static_cast<std::int32_t>(i));
    }
}

/// In the list that each section has, told by their short names.
TEST(RequestsPageAsAWhole, NamesEveryOptionAndEveryKeyOfAResult) {
    std::string text;
    for (const RequestSection& section : RequestsPage::instance().sections()) {
        text += section.text;
        for (const char* entry : {"reads", "runs", "answers", "errors"}) {
            EXPECT_THAT(section.text, HasSubstr(std::string("\n- **") + entry + "** "));
        }
    }
    constexpr std::string_view prefix = "NEBSourceControlRequestOption";
    for (const NEBConstant option : NEBSourceControlAllRequestOptions) {
        EXPECT_THAT(text, HasSubstr("`" + std::string(option.text().substr(prefix.size())) + "`"));
    }
}

/// A class that is named here is explained there.
TEST(RequestsPageAsAWhole, NamesOnlyClassesOfErrorsThatThereAre) {
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
