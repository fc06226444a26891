// The output of all commands on a terminal, and as JSON.

#include <sstream>

#include "Terminal/TextWidth.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using testing::Not;
using Arguments = std::vector<std::string>;

constexpr unsigned short columns = 50;

class Terminal : public CommandTest {
protected:
    void SetUp() override {
        const std::string wide = "漢字漢字漢字漢字漢字漢字漢字漢字漢字漢字漢字漢字漢字漢字";
        repository.commitFile("a.c", "\t" + std::string(100, 'x') + "\n漢字\n", "Say " + wide);
        repository.git({"branch", std::string(70, 'b')});
        repository.git({"remote", "add", "origin", "/" + std::string(70, 'r')});
    }
    [[nodiscard]] NebscOutcome onTerminal(const Arguments& arguments) const {
        return runNebsc(arguments,
                        {.folder = repository.path(),
                         .variables = {{"NO_COLOR", "1"}, {"TERM", "xterm"}, {"PAGER", "cat"}},
                         .output = NebscOutput::terminal,
                         .terminalColumns = columns});
    }
};

TEST_F(Terminal, TablesFit) {
    for (const Arguments& arguments :
         {Arguments{"log"}, {"blame", "a.c"}, {"types"}, {"branch"}, {"remote"}}) {
        const NebscOutcome outcome = onTerminal(arguments);
        std::istringstream lines(outcome.output);
        bool isAnyTruncated = false;
        for (std::string line; std::getline(lines, line);) {
            ASSERT_TRUE(line.ends_with('\r')) << line;
            line.pop_back();
            EXPECT_LE(nebsc::columnsOf(line), columns) << line;
            isAnyTruncated = isAnyTruncated || line.ends_with("…");
        }
        EXPECT_TRUE(isAnyTruncated) << outcome.output;
        EXPECT_THAT(nebsc(arguments).output, Not(HasSubstr("…")));
    }
}

TEST_F(Terminal, DoctorOutputIsWrapped) {
    std::istringstream lines(onTerminal({"doctor"}).output);
    std::size_t count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        const bool isOneWord = line.find(' ', line.find_first_not_of(' ')) == std::string::npos;
        EXPECT_TRUE(isOneWord || nebsc::columnsOf(line) <= columns + 1 ||
                    line.find("  /") != std::string::npos)
            << line;
    }
    std::istringstream whole(nebsc({"doctor"}).output);
    std::size_t wholeCount = 0;
    for (std::string line; std::getline(whole, line);) {
        ++wholeCount;
    }
    EXPECT_GT(count, wholeCount);
}

TEST_F(Terminal, GetsNoControlCharactersFromTheRepository) {
    const std::string bad = "x\x1b[31m\u202ey";
    repository.write(bad + ".c", bad + "\n");
    repository.git({"add", "."});
    repository.git(
        {"commit", "--quiet", "-m", bad + "\n\n" + bad, "--author", bad + " <" + bad + ">"});
    repository.git({"branch", "b\u202eb"});
    repository.git({"remote", "add", "second", "/" + bad});
    repository.write(bad + ".c", bad + bad + "\n");
    repository.git({"config", "core.quotePath", bad});
    for (const Arguments& arguments : {Arguments{"status"},
                                       {"log"},
                                       {"log", "--full", "--files"},
                                       {"blame", bad + ".c"},
                                       {"diff"},
                                       {"diff", "--name-status"},
                                       {"ls"},
                                       {"export", "HEAD", bad + ".c"},
                                       {"branch"},
                                       {"checkout", "b\u202eb"},
                                       {"branch", "current"},
                                       {"branch", "tracking", "b\u202eb"},
                                       {"remote"},
                                       {"info"},
                                       {"doctor"},
                                       {"rm", bad + ".c"},
                                       {"mv", bad, bad + "z"},
                                       {"cp", bad + ".c", bad + "z"},
                                       {"ignore", bad + "q"},
                                       {"revert", bad},
                                       {"checkout", bad},
                                       {"merge", bad},
                                       {"fetch", "second"},
                                       {"push", "second", "main:main"},
                                       {"update"},
                                       {"branch", "create", bad},
                                       {"branch", "delete", bad},
                                       {"remote", "rm", bad},
                                       {"clone", "/" + bad, bad},
                                       {bad},
                                       {"log", "--" + bad},
                                       {"--color=" + bad, "log"}}) {
        const NebscOutcome outcome = onTerminal(arguments);
        for (const std::string& text : {outcome.output, outcome.errors}) {
            EXPECT_THAT(text, Not(HasSubstr("\x1b"))) << arguments.front();
            EXPECT_THAT(text, Not(HasSubstr("\u202e"))) << arguments.front();
        }
        EXPECT_FALSE(outcome.output.empty() && outcome.errors.empty() &&
                     arguments.front() != "revert")
            << arguments.front();
    }
}

TEST_F(Terminal, JSONOutputIsAnOutcomeOrEmpty) {
    repository.git({"checkout", "--quiet", "--detach"});
    for (const Arguments& arguments : {Arguments{"log", "nosuch"},
                                       {"log", "-n", "x"},
                                       {"blame", "nosuch"},
                                       {"blame"},
                                       {"status", "nosuch"},
                                       {"diff", "nosuch"},
                                       {"ls", "nosuch"},
                                       {"export", "nosuch", "a.c"},
                                       {"export-tree", "."},
                                       {"add"},
                                       {"add", "nosuch"},
                                       {"rm", "nosuch"},
                                       {"mv", "nosuch", "x"},
                                       {"cp", "nosuch", "x"},
                                       {"mkdir", "a.c"},
                                       {"ignore", "a.c"},
                                       {"revert", "nosuch"},
                                       {"commit", "-m", "x"},
                                       {"checkout", "nosuch"},
                                       {"checkout", "--", "-x"},
                                       {"merge", "nosuch"},
                                       {"merge-base", "main", "nosuch"},
                                       {"branch", "current"},
                                       {"branch", "create", "a..b"},
                                       {"branch", "delete", "nosuch"},
                                       {"branch", "track", "x", "nosuch/x"},
                                       {"branch", "tracking", "main"},
                                       {"init", "."},
                                       {"clone", "/nosuch", "x"},
                                       {"remote", "rm", "nosuch"},
                                       {"fetch", "nosuch"},
                                       {"push", "origin", "main:main"},
                                       {"push", "--svn"},
                                       {"update"},
                                       {"svn"},
                                       {"stauts"}}) {
        Arguments withJSON = arguments;
        withJSON.insert(withJSON.begin(), "--json");
        const NebscOutcome outcome = nebsc(withJSON);
        EXPECT_TRUE(outcome.exitStatus == 1 || outcome.exitStatus == 2)
            << testing::PrintToString(arguments) << outcome.exitStatus;
        if (outcome.output.empty()) {
            EXPECT_THAT(outcome.errors, testing::StartsWith("nebsc: "))
                << testing::PrintToString(arguments);
        } else {
            EXPECT_TRUE(outcome.json().contains("error")) << testing::PrintToString(arguments);
        }
    }
}

}  // namespace
}  // namespace neb::test
