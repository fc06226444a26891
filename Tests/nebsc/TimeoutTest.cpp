// The option --timeout of all commands.

#include <gmock/gmock.h>

#include "Support/TestRepository.h"
#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* timedOut =
    "nebsc: the operation was ended because it took longer than 0.2 seconds\n";

TEST(Timeout, EndsARequestThatTakesLonger) {
    const TestRepository repository;
    const StandInGit git(repository.path(), "exec sleep 1000");
    for (const std::vector<std::string>& command : std::vector<std::vector<std::string>>{
             {"status"}, {"log"}, {"branch"}, {"fetch", "origin"}, {"commit", "-m", "x"}}) {
        std::vector<std::string> arguments{"--timeout", "0.2"};
        arguments.insert(arguments.end(), command.begin(), command.end());
        const NebscOutcome outcome =
            runNebsc(arguments, {.folder = repository.path(), .variables = {git.path()}});
        EXPECT_THAT(outcome.errors, StartsWith(timedOut)) << command.front();
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.exitStatus, 1);
    }
}

TEST(Timeout, EndsCommandsWithoutARequest) {
    const TestRepository repository;
    const TemporaryFolder folder;
    folder.writeProgram("git", "#!/bin/sh\nexec sleep 1000\n");
    for (const std::vector<std::string>& command : std::vector<std::vector<std::string>>{
             {"--version"}, {"tune"}, {"tune", "--undo"}, {"doctor"}}) {
        std::vector<std::string> arguments{"--timeout", "0.2"};
        arguments.insert(arguments.end(), command.begin(), command.end());
        const NebscOutcome outcome = runNebsc(
            arguments,
            {.folder = repository.path(), .variables = {{"PATH", folder.path() + ":/bin"}}});
        EXPECT_THAT(outcome.errors, StartsWith(timedOut)) << command.front();
        EXPECT_EQ(outcome.exitStatus, 1);
    }
}

TEST(Timeout, EndsTheServer) {
    const NebscSurroundings terminal{.hasTerminalForErrors = true, .hasTerminalForInput = true};
    Nebsc server({"serve", "--timeout", "0.2"}, terminal);
    const NebscOutcome outcome = server.outcome();
    EXPECT_THAT(outcome.errors, HasSubstr("took longer than 0.2 seconds"));
    EXPECT_EQ(outcome.exitStatus, 1);
}

/// What git has not answered is not a finding.
TEST(Timeout, LeavesOutTheChecksThatItInterrupted) {
    const TestRepository repository;
    repository.commitFile("a", "1");
    const TemporaryFolder folder;
    folder.writeProgram("git",
                        "#!/bin/sh\ncase \"$*\" in *for-each-ref*) exec sleep 1000;; esac\n"
                        "exec /usr/bin/git \"$@\"\n");
    const NebscOutcome outcome = runNebsc(
        {"doctor", "--json", "--timeout", "1.5"},
        {.folder = repository.path(), .variables = {{"PATH", folder.path() + ":/usr/bin:/bin"}}});
    const auto json = outcome.json();
    EXPECT_EQ(json["isInOrder"], false);
    std::vector<std::string> problems;
    for (const auto& finding : json["findings"]) {
        if (finding["health"] == "problem") {
            problems.push_back(finding["text"]);
        }
    }
    EXPECT_THAT(problems,
                testing::ElementsAre("were interrupted; the remaining ones were skipped"));
    EXPECT_THAT(outcome.errors, HasSubstr("took longer than 1.5 seconds"));
}

TEST(Timeout, EndsAQuestionThatTakesLonger) {
    const TestRepository repository;
    const TemporaryFolder folder;
    folder.writeProgram("git", "#!/bin/sh\nexec sleep 1000\n");
    const NebscOutcome outcome =
        runNebsc({"status", "--timeout=0.2"},
                 {.folder = repository.path(), .variables = {{"PATH", folder.path() + ":/bin"}}});
    EXPECT_THAT(outcome.errors, StartsWith(timedOut));
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST(Timeout, HasAnErrorClassInJSON) {
    const TestRepository repository;
    const TemporaryFolder folder;
    folder.writeProgram("git", "#!/bin/sh\nexec sleep 1000\n");
    const StandInGit git(repository.path(), "exec sleep 1000");
    const NebscSurroundings surroundings[] = {
        {.folder = repository.path(), .variables = {git.path()}},
        {.folder = repository.path(), .variables = {{"PATH", folder.path() + ":/bin"}}}};
    for (const NebscSurroundings& surrounding : surroundings) {
        const NebscOutcome outcome =
            runNebsc({"branch", "create", "x", "--json", "--timeout=0.2"}, surrounding);
        EXPECT_EQ(outcome.json()["error"]["class"], "timed-out");
        EXPECT_EQ(outcome.exitStatus, 1);
    }
    const NebscOutcome request = runProgram(
        NEB_BUILD_FOLDER "/bin/nebsc", {"request", "--timeout", "0.2"},
        {.input = R"({"type": 18, "sourceTree": {"location": ")" + repository.path() + R"("}})",
         .variables = {git.path()}});
    EXPECT_EQ(request.json()["error"]["class"], "timed-out");
}

TEST(Timeout, DoesNotDisturbWhatIsFaster) {
    const TestRepository repository;
    repository.write("a", "a");
    const NebscOutcome outcome =
        runNebsc({"status", "--short", "--timeout", "1000"}, {.folder = repository.path()});
    EXPECT_EQ(outcome.output, "untracked  a\n");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

TEST(Timeout, RefusesWhatIsNoTime) {
    for (const char* value : {"0", "-1", "x", "1s", "nan", "inf", " 1", "0.0001"}) {
        const NebscOutcome outcome = runNebsc({"status", std::string("--timeout=") + value});
        EXPECT_THAT(outcome.errors,
                    HasSubstr(std::string("invalid value '") + value +
                              "' for option '--timeout'; expected a number of seconds above 0"));
        EXPECT_EQ(outcome.exitStatus, 2);
    }
}

}  // namespace
}  // namespace neb::test
