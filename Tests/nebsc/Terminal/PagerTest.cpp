// The pager: when it is used, which one, and what happens if it fails or ends early.

#include "Terminal/Pager.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/ioctl.h>

#include <optional>

#include "Platform/FileDescriptor.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using Variables = std::vector<std::pair<std::string, std::optional<std::string>>>;

/// A working copy with a diff that is longer than a terminal of unknown size.
class Pager : public CommandTest {
protected:
    void SetUp() override {
        repository.commitFile("a", "");
        repository.write("a", linesOf(40));
    }
    static std::string linesOf(int count) {
        std::string lines;
        for (int i = 0; i < count; ++i) {
            lines += "x\n";
        }
        return lines;
    }
    /// Runs on a terminal without colours, so that the text can be compared.
    [[nodiscard]] NebscOutcome diff(Variables variables, NebscOutput output = NebscOutput::terminal,
                                    std::vector<std::string> arguments = {"diff"}) const {
        Variables all{{"TERM", "xterm"},       {"NO_COLOR", "1"},      {"GIT_PAGER", std::nullopt},
                      {"PAGER", std::nullopt}, {"LESS", std::nullopt}, {"LV", std::nullopt}};
        all.insert(all.end(), variables.begin(), variables.end());
        return runNebsc(arguments,
                        {.folder = repository.path(), .variables = all, .output = output});
    }
    /// The output is complete when its first line is printed.
    [[nodiscard]] NebscOutcome blame(Variables variables) const {
        return diff(std::move(variables), NebscOutput::terminal, {"blame", "a"});
    }
    [[nodiscard]] std::string patchOnTerminal() const {
        std::string text;
        for (const char character : repository.git({"diff"})) {
            text.append(character == '\n' ? "\r" : "").append(1, character);
        }
        return text;
    }
};

constexpr const char* marking = "sed s/^/p:/";

TEST_F(Pager, LongOutputGoesThroughTheUsersPager) {
    const NebscOutcome outcome = diff({{"PAGER", marking}});
    EXPECT_THAT(outcome.output, testing::StartsWith("p:diff --git a/a b/a\r\np:"));
    EXPECT_THAT(outcome.output, testing::EndsWith("\r\np:+x\r\n"));
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

TEST_F(Pager, IsChosenAsGitDoes) {
    repository.git({"config", "core.pager", "sed s/^/core:/"});
    EXPECT_THAT(diff({{"PAGER", marking}}).output, testing::StartsWith("core:diff"));
    EXPECT_THAT(diff({{"PAGER", marking}, {"GIT_PAGER", "sed s/^/git:/"}}).output,
                testing::StartsWith("git:diff"));
    EXPECT_EQ(diff({{"GIT_PAGER", "cat"}}).output, patchOnTerminal());
    repository.git({"config", "core.pager", ""});
    EXPECT_EQ(diff({{"PAGER", marking}}).output, patchOnTerminal());
}

TEST_F(Pager, DefaultsToLess) {
    const TemporaryFolder folder;
    folder.writeProgram("less", "#!/bin/sh\ncat > /dev/null; echo \"less, LESS=$LESS LV=$LV\"\n");
    const char* rest = std::getenv("PATH");
    const Variables variables{{"PATH", folder.path() + ":" + (rest == nullptr ? "" : rest)}};
    EXPECT_EQ(diff(variables).output, "less, LESS=FRX LV=-c\r\n");
    Variables chosen = variables;
    chosen.emplace_back("LESS", "i");
    EXPECT_EQ(diff(chosen).output, "less, LESS=i LV=-c\r\n");
}

TEST_F(Pager, IsNotUsedForFilesJSONOrShortOutput) {
    const std::string patch = repository.git({"diff"});
    EXPECT_EQ(diff({{"PAGER", marking}}, NebscOutput::collected).output, patch);
    EXPECT_EQ(diff({{"PAGER", marking}, {"TERM", "dumb"}}).output, patchOnTerminal());
    EXPECT_THAT(diff({{"PAGER", marking}}, NebscOutput::terminal, {"diff", "--json"}).output,
                testing::StartsWith("{\"type\":30"));
    repository.write("a", linesOf(3));
    EXPECT_THAT(blame({{"PAGER", marking}}).output, testing::StartsWith("------------  Not"));
}

TEST_F(Pager, ShowsTheOutputIfThePagerCannotBeStarted) {
    const NebscOutcome outcome = diff({{"PAGER", "/no/such/pager"}});
    EXPECT_EQ(outcome.output, patchOnTerminal());
    EXPECT_THAT(outcome.errors, HasSubstr("nebsc: the pager '/no/such/pager' could not be "
                                          "started; the output is shown without it\n"));
    EXPECT_EQ(outcome.exitStatus, 0);
}

TEST_F(Pager, MayEndEarly) {
    repository.write("a", linesOf(200'000));  // more than the capacity of a pipe
    for (const char* pager : {"head -n 1", "exec head -n 1"}) {
        const NebscOutcome outcome = diff({{"PAGER", pager}});
        EXPECT_EQ(outcome.output, "diff --git a/a b/a\r\n");
        EXPECT_EQ(outcome.errors, "");
        EXPECT_EQ(outcome.exitStatus, 0);
    }
    EXPECT_EQ(diff({{"PAGER", "exit 1"}}).exitStatus, 0);
}

TEST_F(Pager, ReceivesCtrlCInsteadOfNebsc) {
    const NebscOutcome outcome = blame({{"PAGER", "kill -INT $PPID; sed s/^/p:/"}});
    EXPECT_THAT(outcome.output, testing::EndsWith("  40  x\r\n"));
    EXPECT_EQ(outcome.exitStatus, 0);
    // The pager has the signal actions that nebsc was started with.
    EXPECT_EQ(blame({{"PAGER", "kill -INT $$; echo lived"}}).output, "");
    EXPECT_EQ(blame({{"PAGER", "kill -PIPE $$; echo lived"}}).output, "");
}

/// The terminal side of a pseudo-terminal of 5 rows with 10 columns.
class SmallTerminal : public testing::Test {
protected:
    void SetUp() override {
        ::setenv("TERM", "xterm", 1);
        ASSERT_EQ(::grantpt(_master.get()), 0);
        ASSERT_EQ(::unlockpt(_master.get()), 0);
        _terminal = FileDescriptor(::open(::ptsname(_master.get()), O_RDWR | O_NOCTTY | O_CLOEXEC));
        const winsize size{.ws_row = 5, .ws_col = 10, .ws_xpixel = 0, .ws_ypixel = 0};
        ASSERT_EQ(::ioctl(_terminal.get(), TIOCSWINSZ, &size), 0);
    }
    [[nodiscard]] bool needsPager(std::string_view text) const {
        return nebsc::needsPager(_terminal.get(), text);
    }

private:
    FileDescriptor _master{::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)};
    FileDescriptor _terminal;
};

TEST_F(SmallTerminal, NeedsAPagerForMoreThanItsRows) {
    EXPECT_FALSE(needsPager(""));
    EXPECT_FALSE(needsPager("\n\n\n\n"));
    EXPECT_TRUE(needsPager("\n\n\n\n\n"));
    EXPECT_FALSE(needsPager("1\n2\n3\n1234567890\n"));
    EXPECT_TRUE(needsPager("1\n2\n3\n12345678901\n"));
    EXPECT_FALSE(needsPager("1\n2\n3\n\x1b[1;31m1234567890\x1b[0m\n"));
    EXPECT_FALSE(needsPager("1\n2\n3\n\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\n"));
    EXPECT_TRUE(
        needsPager("1\n2\n3\n\xE4\xBD\xA0\xE4\xBD\xA0\xE4\xBD\xA0\xE4\xBD\xA0\xE4\xBD\xA0x\n"));
    EXPECT_FALSE(needsPager("1\n2\n3\n1\t90\n"));
    EXPECT_TRUE(needsPager("1\n2\n3\n1\t90x\n"));
    EXPECT_TRUE(needsPager("1\n2\n3\n4\n\x1b"));
}

}  // namespace
}  // namespace neb::test
