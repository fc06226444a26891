// The sign that long work goes on.

#include <gmock/gmock.h>
#include <signal.h>

#include "Support/TestRepository.h"
#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

/// A git that works until somebody says "go on".
class LifeSignTest : public testing::Test {
protected:
    TemporaryFolder folder;
    StandInGit git{folder.path(),
                   "while ! [ -e '" + folder.path("go on") + "' ]; do sleep 0.01; done"};
};

TEST_F(LifeSignTest, ATerminalShowsTheSecondsAndIsWiped) {
    Nebsc program(
        {"status"},
        {.folder = folder.path(), .variables = {git.path()}, .hasTerminalForErrors = true});
    EXPECT_EQ(program.awaitErrors("1 s"), "\rLooking … 1 s");
    EXPECT_EQ(program.awaitErrors("2 s"), "\rLooking … 2 s");
    folder.write("go on", "");
    const NebscOutcome outcome = program.outcome();
    // A slow machine may show further seconds; the last word wipes the line.
    EXPECT_THAT(outcome.errors, testing::EndsWith("\r             \r"));
    EXPECT_THAT(outcome.output, testing::StartsWith("Nothing to report"));
    EXPECT_EQ(outcome.exitStatus, 0);
}

TEST_F(LifeSignTest, TheLineIsWipedBeforeAnErrorIsTold) {
    Nebsc program(
        {"status"},
        {.folder = folder.path(), .variables = {git.path()}, .hasTerminalForErrors = true});
    EXPECT_EQ(program.awaitErrors("1 s"), "\rLooking … 1 s");
    program.send(SIGINT);
    const NebscOutcome outcome = program.outcome();
    EXPECT_THAT(outcome.errors,
                testing::EndsWith("\r             \rnebsc: Stopped by SIGINT.\r\n"));
    EXPECT_EQ(outcome.exitStatus, 130);
}

TEST_F(LifeSignTest, WhatIsNoTerminalGetsNothing) {
    const StandInGit slow(folder.path(), "sleep 1.2");
    const NebscOutcome outcome =
        runNebsc({"status"}, {.folder = folder.path(), .variables = {slow.path()}});
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

}  // namespace
}  // namespace neb::test
