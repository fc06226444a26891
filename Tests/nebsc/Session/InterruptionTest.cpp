// Signals: nebsc ends the running git, waits for it and leaves no process or file behind.

#include "Session/Interruption.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <future>
#include <sstream>
#include <thread>
#include <vector>

#include "Support/TestRepository.h"
#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

using nebsc::Interruption;
using testing::HasSubstr;

constexpr std::chrono::seconds longEnough(60);

/// Waits for a line in the file and returns it; empty after the time limit.
std::string awaitLine(const TemporaryFolder& folder, std::string_view name) {
    const auto deadline = std::chrono::steady_clock::now() + longEnough;
    while (std::chrono::steady_clock::now() < deadline) {
        std::string text = folder.read(name);
        if (text.ends_with('\n')) {
            return text;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return {};
}

/// Returns whether the process runs; false for a zombie.
bool runs(int pid) {
    std::ifstream stream("/proc/" + std::to_string(pid) + "/stat");
    std::string text;
    std::getline(stream, text);
    const std::size_t end = text.rfind(") ");
    return end != std::string::npos && text[end + 2] != 'Z' && text[end + 2] != 'X';
}

struct SignalRow {
    int signalNumber;
    int exitStatus;
    const char* line;
};

class InterruptedBy : public testing::TestWithParam<SignalRow> {
protected:
    /// Returns a script that writes the IDs of its process and of a child process, and then runs
    /// for a long time.
    [[nodiscard]] std::string slowScript() const {
        return "sleep 3600 &\necho $$ $! > '" + folder.path("started") + "'\nwait";
    }
    /// Waits until git runs, sends the signal, and checks that all processes end.
    NebscOutcome interrupt(Nebsc& program) const {
        std::istringstream numbers(awaitLine(folder, "started"));
        int git = 0;
        int child = 0;
        numbers >> git >> child;
        EXPECT_TRUE(child > 0 && runs(git) && runs(child));
        program.send(GetParam().signalNumber);
        NebscOutcome outcome = program.outcome();
        EXPECT_FALSE(runs(git) || runs(child));
        expectReported(outcome);
        return outcome;
    }
    static void expectReported(const NebscOutcome& outcome) {
        EXPECT_EQ(outcome.errors, GetParam().line);
        EXPECT_EQ(outcome.exitStatus, GetParam().exitStatus);
    }

    TemporaryFolder folder;
};

TEST_P(InterruptedBy, StatusLeavesNoProcessBehind) {
    const StandInGit git(folder.path(), slowScript());
    Nebsc program({"status"}, {.folder = folder.path(), .variables = {git.path()}});
    EXPECT_EQ(interrupt(program).output, "");
}

TEST_P(InterruptedBy, ARequestReportsTheCancellation) {
    const StandInGit git(folder.path(), slowScript());
    Nebsc program({"request"}, {.folder = folder.path(),
                                .input = R"({"type": 15, "sourceTree": {"location": "/"}})",
                                .variables = {git.path()}});
    const auto json = interrupt(program).json();
    EXPECT_EQ(json["error"]["class"], "cancelled");
    EXPECT_EQ(json["commands"].size(), 1U);
}

TEST_P(InterruptedBy, TheSearchForTheTopFolderEnds) {
    const TemporaryFolder bin;
    bin.writeProgram("git", "#!/bin/sh\n" + slowScript());
    Nebsc program({"status"}, {.folder = folder.path(),
                               .variables = {{"PATH", bin.path() + ":/usr/bin:/bin"}}});
    EXPECT_EQ(interrupt(program).output, "");
}

TEST_P(InterruptedBy, TheQueryForTheVersionEnds) {
    const StandInGit git(folder.path(), slowScript());
    Nebsc program({"--version"}, {.variables = {git.path()}});
    EXPECT_EQ(interrupt(program).output, "");
}

INSTANTIATE_TEST_SUITE_P(Interruption, InterruptedBy,
                         testing::Values(SignalRow{SIGINT, 130, "nebsc: stopped by SIGINT\n"},
                                         SignalRow{SIGQUIT, 131, "nebsc: stopped by SIGQUIT\n"},
                                         SignalRow{SIGTERM, 143, "nebsc: stopped by SIGTERM\n"},
                                         SignalRow{SIGHUP, 129, "nebsc: stopped by SIGHUP\n"}),
                         [](const auto& row) { return std::to_string(row.param.signalNumber); });

TEST(InterruptionOfProgram, AnIgnoredSignalStaysIgnored) {
    const TemporaryFolder folder;
    const StandInGit git(folder.path(), "echo $$ > '" + folder.path("started") +
                                            "'\nwhile ! [ -e '" + folder.path("go on") +
                                            "' ]; do sleep 0.01; done");
    Nebsc program({"status"},
                  {.folder = folder.path(), .variables = {git.path()}, .ignoredSignals = {SIGHUP}});
    EXPECT_NE(awaitLine(folder, "started"), "");
    program.send(SIGHUP);
    folder.write("go on", "");
    const NebscOutcome outcome = program.outcome();
    EXPECT_THAT(outcome.output, HasSubstr("No changes"));
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

// ---- within this process ----------------------------------------------------------------------

/// Sets the default actions of the signals.
class InterruptionHere : public testing::Test {
protected:
    void SetUp() override {
        for (std::size_t i = 0; i < signals.size(); ++i) {
            former[i] = ::signal(signals[i], SIG_DFL);
        }
    }
    void TearDown() override {
        for (std::size_t i = 0; i < signals.size(); ++i) {
            static_cast<void>(::signal(signals[i], former[i]));
        }
    }

    static constexpr std::array signals{SIGINT, SIGQUIT, SIGTERM, SIGHUP};
    std::array<void (*)(int), signals.size()> former{};
};

TEST_F(InterruptionHere, WithoutASignalNothingIsCancelled) {
    Interruption interruption;
    bool isCancelled = false;
    {
        const Interruption::Work work(interruption, [&isCancelled] { isCancelled = true; });
    }
    EXPECT_FALSE(isCancelled);
    EXPECT_EQ(interruption.signalNumber(), std::nullopt);
}

TEST_F(InterruptionHere, ASignalCancelsTheWorkOnAnotherThread) {
    Interruption interruption;
    std::promise<std::thread::id> cancelled;
    const Interruption::Work work(
        interruption, [&cancelled] { cancelled.set_value(std::this_thread::get_id()); });
    ASSERT_EQ(::kill(::getpid(), SIGTERM), 0);
    auto canceller = cancelled.get_future();
    ASSERT_EQ(canceller.wait_for(longEnough), std::future_status::ready);
    EXPECT_NE(canceller.get(), std::this_thread::get_id());
    EXPECT_EQ(interruption.signalNumber(), SIGTERM);
}

TEST_F(InterruptionHere, ASignalCancelsAllWorkThatRuns) {
    Interruption interruption;
    std::promise<void> first;
    std::promise<void> last;
    bool isCancelled = false;
    const Interruption::Work firstWork(interruption, [&first] { first.set_value(); });
    {
        const Interruption::Work ended(interruption, [&isCancelled] { isCancelled = true; });
    }
    const Interruption::Work lastWork(interruption, [&last] { last.set_value(); });
    ASSERT_EQ(::kill(::getpid(), SIGTERM), 0);
    EXPECT_EQ(first.get_future().wait_for(longEnough), std::future_status::ready);
    EXPECT_EQ(last.get_future().wait_for(longEnough), std::future_status::ready);
    EXPECT_FALSE(isCancelled);
}

TEST_F(InterruptionHere, WorkThatBeginsAfterTheSignalIsCancelledImmediately) {
    Interruption interruption;
    std::promise<void> cancelled;
    {
        const Interruption::Work first(interruption, [&cancelled] { cancelled.set_value(); });
        ASSERT_EQ(::kill(::getpid(), SIGINT), 0);
        ASSERT_EQ(cancelled.get_future().wait_for(longEnough), std::future_status::ready);
    }
    bool isCancelled = false;
    const Interruption::Work second(interruption, [&isCancelled] { isCancelled = true; });
    EXPECT_TRUE(isCancelled);
}

TEST_F(InterruptionHere, BlocksTheSignalsWhileItExists) {
    static_cast<void>(::signal(SIGHUP, SIG_IGN));
    const auto blocked = [] {
        sigset_t mask;
        ::pthread_sigmask(SIG_BLOCK, nullptr, &mask);
        std::vector<int> numbers;
        for (const int signalNumber : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGUSR1}) {
            if (::sigismember(&mask, signalNumber) == 1) {
                numbers.push_back(signalNumber);
            }
        }
        return numbers;
    };
    {
        const Interruption interruption;
        EXPECT_THAT(blocked(), testing::ElementsAre(SIGINT, SIGQUIT, SIGTERM));
    }
    EXPECT_THAT(blocked(), testing::IsEmpty());
}

}  // namespace
}  // namespace neb::test
