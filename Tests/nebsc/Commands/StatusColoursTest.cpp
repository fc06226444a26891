// The colours of `nebsc status`, run as a program.

#include <gmock/gmock.h>

#include "Support/TestRepository.h"
#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

using testing::HasSubstr;

class StatusColours : public testing::Test {
protected:
    void SetUp() override {
        repository.commitFile("changed.c", "a\n");
        repository.write("changed.c", "b\n");
    }

    [[nodiscard]] std::string shownOnTerminal(
        std::vector<std::pair<std::string, std::optional<std::string>>> variables) const {
        const StandInGit git(repository.path(),
                             "printf 'A  a\\0 M b\\0 D c\\0R  d\\0x\\0UU e\\0?? f\\0X  g\\0'");
        variables.push_back(git.path());
        return runNebsc({"status", "--short"}, {.folder = repository.path(),
                                                .variables = std::move(variables),
                                                .output = NebscOutput::terminal})
            .output;
    }

    TestRepository repository;
};

constexpr const char* plainOnTerminal =
    "added      a\r\nmodified   b\r\ndeleted    c\r\nrenamed    x -> d\r\n"
    "conflict   e (both modified)\r\n"
    "untracked  f\r\nchanged    g\r\n";

TEST_F(StatusColours, AreUsedOnATerminal) {
    EXPECT_EQ(shownOnTerminal({{"TERM", "xterm"}, {"NO_COLOR", std::nullopt}}),
              "\x1b[32madded\x1b[0m      a\r\n"
              "\x1b[33mmodified\x1b[0m   b\r\n"
              "\x1b[31mdeleted\x1b[0m    c\r\n"
              "\x1b[36mrenamed\x1b[0m    x -> d\r\n"
              "\x1b[1;31mconflict\x1b[0m   e (both modified)\r\n"
              "\x1b[31muntracked\x1b[0m  f\r\n"
              "changed    g\r\n");
    EXPECT_NE(shownOnTerminal({{"TERM", "xterm"}, {"NO_COLOR", ""}}), plainOnTerminal);
}

TEST_F(StatusColours, CanBeSwitchedOff) {
    EXPECT_EQ(shownOnTerminal({{"TERM", "xterm"}, {"NO_COLOR", "1"}}), plainOnTerminal);
    EXPECT_EQ(shownOnTerminal({{"TERM", "dumb"}, {"NO_COLOR", std::nullopt}}), plainOnTerminal);
}

TEST_F(StatusColours, AreNotUsedElsewhere) {
    const NebscOutcome outcome = runNebsc(
        {"status", "--short"}, {.folder = repository.path(),
                                .variables = {{"TERM", "xterm"}, {"NO_COLOR", std::nullopt}}});
    EXPECT_THAT(outcome.output, HasSubstr("modified   changed.c\n"));
    EXPECT_EQ(outcome.output.find('\x1b'), std::string::npos);
}

}  // namespace
}  // namespace neb::test
