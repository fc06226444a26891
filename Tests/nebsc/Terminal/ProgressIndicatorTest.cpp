// The progress indicator on a terminal.

#include <gmock/gmock.h>
#include <signal.h>

#include <filesystem>
#include <iterator>

#include "Support/TestRepository.h"
#include "Terminal/ProgressIndicator.h"
#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

/// Uses a stand-in for git that runs until the file "go on" exists.
class ProgressIndicatorTest : public testing::Test {
protected:
    TemporaryFolder folder;
    StandInGit git{folder.path(),
                   "while ! [ -e '" + folder.path("go on") + "' ]; do sleep 0.01; done"};
};

TEST_F(ProgressIndicatorTest, ShowsTheSecondsAndErasesTheLine) {
    Nebsc program(
        {"status", "--short"},
        {.folder = folder.path(), .variables = {git.path()}, .hasTerminalForErrors = true});
    EXPECT_EQ(program.awaitErrors("1 s"), "\rReading … 1 s");
    EXPECT_EQ(program.awaitErrors("2 s"), "\rReading … 2 s");
    folder.write("go on", "");
    const NebscOutcome outcome = program.outcome();
    // On a slow machine there may be more seconds; the last output erases the line.
    EXPECT_THAT(outcome.errors, testing::EndsWith("\r             \r"));
    EXPECT_THAT(outcome.output, testing::StartsWith("No changes"));
    EXPECT_EQ(outcome.exitStatus, 0);
}

TEST_F(ProgressIndicatorTest, ShowsTheReceivedBytes) {
    // Output begins with the first complete record, so this one stays incomplete.
    const StandInGit writing(folder.path(), "printf '?? a.c'; while ! [ -e '" +
                                                folder.path("go on") +
                                                "' ]; do sleep 0.01; done; printf '\\0'");
    Nebsc program(
        {"status", "--short"},
        {.folder = folder.path(), .variables = {writing.path()}, .hasTerminalForErrors = true});
    EXPECT_EQ(program.awaitErrors("bytes"), "\rReading … 1 s, 6 bytes");
    folder.write("go on", "");
    const NebscOutcome outcome = program.outcome();
    EXPECT_THAT(outcome.errors, testing::EndsWith("\r                      \r"));
    EXPECT_EQ(outcome.exitStatus, 0);
}

TEST_F(ProgressIndicatorTest, ShowsTheSizeOfTheReceivedPack) {
    const std::string pack = folder.path("clone/.git/objects/pack");
    const StandInGit git2(folder.path(), "mkdir -p '" + pack + "'; printf 0123456789 > '" + pack +
                                             "/tmp_pack_x'; while ! [ -e '" + folder.path("go on") +
                                             "' ]; do sleep 0.01; done");
    Nebsc program(
        {"clone", "/nowhere", "clone"},
        {.folder = folder.path(), .variables = {git2.path()}, .hasTerminalForErrors = true});
    EXPECT_EQ(program.awaitErrors("bytes"), "\rCloning … 1 s, 10 bytes");
    folder.write("go on", "");
    EXPECT_EQ(program.outcome().exitStatus, 0);
}

TEST_F(ProgressIndicatorTest, RunsDuringQueriesBeforeTheRequest) {
    const StandInGit slow(folder.path(), "[ \"$2\" != status ] || while ! [ -e '" +
                                             folder.path("go on") + "' ]; do sleep 0.01; done");
    Nebsc program(
        {"rm", "a.c"},
        {.folder = folder.path(), .variables = {slow.path()}, .hasTerminalForErrors = true});
    EXPECT_EQ(program.awaitErrors("1 s"), "\rDeleting … 1 s");
    folder.write("go on", "");
    EXPECT_EQ(program.outcome().exitStatus, 0);
}

TEST(ProgressIndicatorSize, HasASuitableUnit) {
    EXPECT_EQ(nebsc::textOfSize(1), "1 byte");
    EXPECT_EQ(nebsc::textOfSize(999), "999 bytes");
    EXPECT_EQ(nebsc::textOfSize(1000), "1.0 kB");
    EXPECT_EQ(nebsc::textOfSize(999'999), "999.9 kB");
    EXPECT_EQ(nebsc::textOfSize(1'234'567), "1.2 MB");
    EXPECT_EQ(nebsc::textOfSize(5'000'000'000'000), "5000.0 GB");
}

TEST_F(ProgressIndicatorTest, ErasesTheLineBeforeAnErrorMessage) {
    Nebsc program(
        {"status", "--short"},
        {.folder = folder.path(), .variables = {git.path()}, .hasTerminalForErrors = true});
    EXPECT_EQ(program.awaitErrors("1 s"), "\rReading … 1 s");
    program.send(SIGINT);
    const NebscOutcome outcome = program.outcome();
    EXPECT_THAT(outcome.errors, testing::EndsWith("\r             \rnebsc: stopped by SIGINT\r\n"));
    EXPECT_EQ(outcome.exitStatus, 130);
}

std::ptrdiff_t threadCount() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

/// Without its thread, it can write nothing, however long it exists.
TEST(ProgressIndicatorWithoutTerminal, StartsNoThread) {
    testing::internal::CaptureStderr();
    const std::ptrdiff_t before = threadCount();
    {
        const nebsc::ProgressIndicator indicator("Reading", true);
        EXPECT_EQ(threadCount(), before);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace neb::test
