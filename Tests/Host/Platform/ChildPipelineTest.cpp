// Children that outlive, are cancelled, or feed each other.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <thread>

#include "Platform/ChildProcess.h"
#include "Support/ChildLaunches.h"
#include "Support/HygienicTest.h"
#include "Support/TemporaryFolder.h"

namespace neb {
namespace {

using test::numberIn;
using test::program;
using test::runOne;
using test::shell;
using test::TemporaryFolder;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

class ChildCancellation : public test::HygienicTest {};
class ChildPipelines : public test::HygienicTest {};
class LeftOverProcess : public test::HygienicTest {};

// ---- a process that outlives the child --------------------------------------------------------

TEST_F(LeftOverProcess, DoesNotHoldTheRun) {
    const ChildOutcome outcome = runOne(shell("sleep 1000 & echo $!"));
    const pid_t left = numberIn(outcome.output);
    EXPECT_TRUE(test::isLiveProcess(left)) << "it is not ours to end";
    EXPECT_TRUE(outcome.outputWasHeldOpen);
    EXPECT_TRUE(outcome.status.isSuccess());
    ::kill(left, SIGKILL);
    test::waitUntilGone(left);
}

TEST_F(LeftOverProcess, WhatTheChildWroteIsWhole) {
    const ChildOutcome outcome =
        runOne(shell("sleep 1000 & echo $! >&2; head -c 900000 /dev/zero"));
    EXPECT_EQ(outcome.output.size(), 900000U);
    const pid_t left = numberIn(outcome.errorOutput);
    EXPECT_TRUE(outcome.outputWasHeldOpen);
    ::kill(left, SIGKILL);
    test::waitUntilGone(left);
}

TEST_F(LeftOverProcess, MayGoOnWritingForEver) {
    const ChildOutcome outcome = runOne(shell("yes & echo $! >&2; exit 5"));
    EXPECT_EQ(outcome.status.exitStatus(), 5);
    EXPECT_TRUE(outcome.outputWasHeldOpen);
    test::waitUntilGone(numberIn(outcome.errorOutput));  // by SIGPIPE: nobody reads any more
}

TEST_F(LeftOverProcess, WithoutOurStreamsIsNoneOfOurBusiness) {
    const ChildOutcome outcome = runOne(shell("sleep 1000 >/dev/null 2>&1 & echo $!"));
    EXPECT_FALSE(outcome.outputWasHeldOpen);
    ::kill(numberIn(outcome.output), SIGKILL);
    test::waitUntilGone(numberIn(outcome.output));
}

// ---- cancelling -------------------------------------------------------------------------------

/// Runs the launches and cancels as soon as the file `ready` is there.
std::vector<ChildOutcome> runAndCancel(const std::vector<ChildLaunch>& launches,
                                       const std::string& ready) {
    ChildProcess process;
    std::thread canceller([&] {
        while (!std::filesystem::exists(ready)) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        process.cancel();
        process.cancel();
    });
    std::vector<ChildOutcome> outcomes = process.run(launches);
    canceller.join();
    EXPECT_TRUE(process.isCancelled());
    return outcomes;
}

TEST_F(ChildCancellation, EndsAChildThatRuns) {
    const TemporaryFolder folder;
    const auto outcomes = runAndCancel(
        {shell("touch " + folder.path("ready") + "; exec sleep 1000")}, folder.path("ready"));
    EXPECT_EQ(outcomes[0].status.signalNumber(), SIGTERM);
}

TEST_F(ChildCancellation, GivesTheChildItsChanceToCleanUp) {
    const TemporaryFolder folder;
    const std::string lock = folder.path("lock");
    const auto outcomes =
        runAndCancel({shell("trap 'rm " + lock + "; exit 9' TERM; touch " + lock + " " +
                            folder.path("ready") + "; while :; do sleep 0.01; done")},
                     folder.path("ready"));
    EXPECT_EQ(outcomes[0].status.exitStatus(), 9);
    EXPECT_FALSE(std::filesystem::exists(lock));
}

TEST_F(ChildCancellation, ReportsTheStoppedProcessesOfAllSessions) {
    const TemporaryFolder folder;
    ChildProcess process;
    std::vector<pid_t> reported;
    bool areStopped = true;
    const auto outcomes =
        process.run({shell("echo $$ >&2; echo; exec sleep 1000"),
                     shell("read line; sleep 1000 & echo $$ >&2; echo $! >&2; echo; wait")},
                    {.outputGrew = [&process](const Data&) { process.cancel(); },
                     .stopped =
                         [&](const std::vector<pid_t>& processes) {
                             reported = processes;
                             for (const pid_t pid : processes) {
                                 areStopped = areStopped && test::isStoppedProcess(pid);
                             }
                         }});
    const std::string second(outcomes[1].errorOutput);
    EXPECT_THAT(reported,
                testing::UnorderedElementsAre(numberIn(outcomes[0].errorOutput), numberIn(second),
                                              numberIn(second.substr(second.find('\n') + 1))));
    EXPECT_TRUE(areStopped);
}

TEST_F(ChildCancellation, EndsAChildThatDoesNotListen) {
    const TemporaryFolder folder;
    const auto outcomes = runAndCancel(
        {shell("trap '' TERM; touch " + folder.path("ready") + "; while :; do sleep 1; done")},
        folder.path("ready"));
    EXPECT_EQ(outcomes[0].status.signalNumber(), SIGKILL);
}

TEST_F(ChildCancellation, EndsAChildThatIsStopped) {
    const TemporaryFolder folder;
    const auto outcomes = runAndCancel(
        {shell("(while [ \"$(cut -d' ' -f3 /proc/$$/stat)\" != T ]; do :; done; touch " +
               folder.path("ready") + ") & kill -STOP $$")},
        folder.path("ready"));
    EXPECT_EQ(outcomes[0].status.signalNumber(), SIGTERM);
}

TEST_F(ChildCancellation, EndsTheWholeSessionWhateverItsProcessGroups) {
    const TemporaryFolder folder;
    // With job control on, bash gives its background work a process group of its own.
    const std::string script =
        "set -m; sleep 1000 >/dev/null 2>&1 & echo $!; set +m; (trap '' TERM; exec sleep 1000 "
        ">/dev/null 2>&1) & echo $! >&2; touch " +
        folder.path("ready") + "; wait";
    const auto outcomes =
        runAndCancel({program("/bin/bash", {"-c", script})}, folder.path("ready"));
    EXPECT_FALSE(test::isLiveProcess(numberIn(outcomes[0].output)));
    EXPECT_FALSE(test::isLiveProcess(numberIn(outcomes[0].errorOutput)));
}

TEST_F(ChildCancellation, LeavesNothingInAHostThatReapsForUs) {
    const TemporaryFolder folder;
    struct sigaction ignore {};
    struct sigaction previous {};
    ignore.sa_handler = SIG_IGN;
    ::sigaction(SIGCHLD, &ignore, &previous);
    const auto outcomes = runAndCancel({shell("(trap '' TERM; exec sleep 1000) & echo $!; touch " +
                                              folder.path("ready") + "; wait")},
                                       folder.path("ready"));
    ::sigaction(SIGCHLD, &previous, nullptr);
    EXPECT_FALSE(test::isLiveProcess(numberIn(outcomes[0].output)));
}

TEST_F(ChildCancellation, BeforeTheRunNothingStarts) {
    const TemporaryFolder folder;
    ChildProcess process;
    process.cancel();
    bool started = false;
    const auto outcomes =
        process.run({shell("touch " + folder.path("ran"))},
                    {.started = [&started](std::size_t) { started = true; },
                     .outputGrew = [&started](std::string_view) { started = true; }});
    EXPECT_EQ(outcomes[0].status.description(),
              "the program \"/bin/sh\" was not started, as it was cancelled before");
    EXPECT_FALSE(started);
    EXPECT_FALSE(std::filesystem::exists(folder.path("ran")));
}

TEST_F(ChildCancellation, AfterTheEndChangesNothing) {
    ChildProcess process;
    const auto outcomes = process.run({shell("echo x")});
    process.cancel();
    EXPECT_EQ(outcomes[0].output, "x\n");
}

TEST_F(ChildCancellation, EndsBothHalvesOfAPipeline) {
    const TemporaryFolder folder;
    const auto outcomes = runAndCancel(
        {shell("touch " + folder.path("ready") + "; exec sleep 1000"), shell("exec sleep 1000")},
        folder.path("ready"));
    EXPECT_EQ(outcomes[0].status.signalNumber(), SIGTERM);
    EXPECT_EQ(outcomes[1].status.signalNumber(), SIGTERM);
}

// ---- pipelines --------------------------------------------------------------------------------

TEST_F(ChildPipelines, JoinOutputToInput) {
    ChildProcess process;
    std::vector<std::size_t> started;
    const auto outcomes = process.run(
        {shell("echo one >&2; head -c 5000000 /dev/zero"), shell("wc -c; echo two >&2")},
        {.started = [&started](std::size_t index) { started.push_back(index); }});
    ASSERT_EQ(outcomes.size(), 2U);
    EXPECT_EQ(outcomes[0].output, "");
    EXPECT_EQ(outcomes[0].errorOutput, "one\n");
    EXPECT_EQ(outcomes[1].output, "5000000\n");
    EXPECT_EQ(outcomes[1].errorOutput, "two\n");
    EXPECT_THAT(started, ElementsAre(0U, 1U));
}

TEST_F(ChildPipelines, TellWhatTheLastHalfHasWrittenSoFar) {
    const TemporaryFolder folder;
    ChildProcess process;
    std::vector<std::string> told;
    const auto outcomes =
        process.run({shell("echo one >&2; echo two"),
                     shell("read line; echo one; while ! [ -e " + folder.path("told") +
                           " ]; do sleep 0.01; done; echo error >&2; echo $line")},
                    {.outputGrew = [&](std::string_view output) {
                        told.emplace_back(output);
                        folder.write("told", "");
                    }});
    EXPECT_EQ(outcomes[1].output, "one\ntwo\n");
    EXPECT_THAT(told, ElementsAre("one\n", "one\ntwo\n"));
}

TEST_F(ChildPipelines, TheFirstHalfIsCutOffWhenNobodyReadsOn) {
    ChildProcess process;
    const auto outcomes = process.run({program("/usr/bin/yes"), shell("head -c 2; exit 3")});
    EXPECT_EQ(outcomes[0].status.signalNumber(), SIGPIPE);
    EXPECT_EQ(outcomes[1].output, "y\n");
    EXPECT_EQ(outcomes[1].status.exitStatus(), 3);
}

TEST_F(ChildPipelines, ASecondHalfThatCannotStartEndsTheFirst) {
    ChildProcess process;
    const auto outcomes = process.run({shell("exec sleep 1000"), program("/no/such/program")});
    EXPECT_EQ(outcomes[0].status.signalNumber(), SIGTERM);
    EXPECT_THAT(outcomes[1].status.description(), HasSubstr("\"/no/such/program\""));
}

TEST_F(ChildPipelines, AFirstHalfThatCannotStartKeepsTheSecondFromStarting) {
    ChildProcess process;
    const TemporaryFolder folder;
    const auto outcomes =
        process.run({program("/no/such/program"), shell("touch " + folder.path("ran"))});
    EXPECT_THAT(outcomes[0].status.description(), HasSubstr("\"/no/such/program\""));
    EXPECT_THAT(outcomes[1].status.description(),
                AllOf(HasSubstr("\"/bin/sh\""), HasSubstr("was not started")));
    EXPECT_FALSE(std::filesystem::exists(folder.path("ran")));
}

/// The first half leaves the process of `command` behind and feeds the second.
std::vector<ChildOutcome> runLeaving(const std::string& command, const std::string& second) {
    ChildProcess process;
    return process.run({shell("echo data; " + command + " & echo $! >&2"), shell(second)});
}

TEST_F(ChildPipelines, AProcessThatHoldsTheInputOfTheSecondHalfIsEnded) {
    // The second one has left the session of its child.
    for (const char* holder : {"sleep 1000 2>/dev/null", "setsid sleep 1000 2>/dev/null"}) {
        const auto outcomes = runLeaving(holder, "cat");
        EXPECT_EQ(outcomes[1].output, "data\n");
        EXPECT_TRUE(outcomes[1].status.isSuccess());
        EXPECT_TRUE(outcomes[0].outputWasHeldOpen);
        test::waitUntilGone(numberIn(outcomes[0].errorOutput));
    }
}

TEST_F(ChildPipelines, AProcessThatHoldsTheInputIsEndedInAHostThatReapsForUs) {
    struct sigaction ignore {};
    struct sigaction previous {};
    ignore.sa_handler = SIG_IGN;
    ::sigaction(SIGCHLD, &ignore, &previous);
    const auto outcomes = runLeaving("sleep 1000 2>/dev/null", "cat");
    ::sigaction(SIGCHLD, &previous, nullptr);
    EXPECT_EQ(outcomes[1].output, "data\n");
    test::waitUntilGone(numberIn(outcomes[0].errorOutput));
}

/// A fork of this process that opens the standard output of the process whose number stands in the
/// file "pid", and then the file "opened", and lives for a minute.
pid_t forkHolder(const TemporaryFolder& folder) {
    const std::string number = folder.path("pid");
    const std::string opened = folder.path("opened");
    const pid_t holder = ::fork();
    if (holder != 0) {
        return holder;
    }
    ::alarm(60);
    char text[32] = {};
    while (std::strchr(text, '\n') == nullptr) {
        const int file = ::open(number.c_str(), O_RDONLY | O_CLOEXEC);
        static_cast<void>(::read(file, text, sizeof text - 1) > 0);
        ::close(file);
        ::usleep(1000);
    }
    *std::strchr(text, '\n') = '\0';
    const std::string output = std::string("/proc/") + text + "/fd/1";
    static_cast<void>(::open(output.c_str(), O_WRONLY | O_CLOEXEC));
    ::close(::open(opened.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, S_IRUSR));
    while (true) {
        ::pause();
    }
}

TEST_F(ChildPipelines, AForkOfTheHostThatHoldsTheInputLivesOn) {
    const TemporaryFolder folder;
    pid_t holder = -1;
    ChildProcess process;
    const auto outcomes =
        process.run({shell("echo $$ > " + folder.path("pid") + "; while ! [ -e " +
                           folder.path("opened") + " ]; do sleep 0.01; done; echo data"),
                     shell("cat")},
                    {.started = [&](std::size_t index) {
                        if (index == 0) {
                            holder = forkHolder(folder);
                        }
                    }});
    EXPECT_TRUE(test::isLiveProcess(holder)) << "it is the host's";
    ::kill(holder, SIGKILL);
    ::waitpid(holder, nullptr, 0);
    EXPECT_TRUE(outcomes[0].status.isSuccess());
    EXPECT_TRUE(outcomes[0].outputWasHeldOpen);
    EXPECT_EQ(outcomes[1].output, "data\n");
    EXPECT_EQ(outcomes[1].status.signalNumber(), SIGTERM) << "it waits for more";
}

TEST_F(ChildPipelines, AProcessThatHoldsNothingLivesOnHoweverSlowTheSecondHalf) {
    const auto outcomes = runLeaving("sleep 1000 >/dev/null 2>&1", "cat; sleep 1.5");
    EXPECT_EQ(outcomes[1].output, "data\n");
    EXPECT_FALSE(outcomes[0].outputWasHeldOpen);
    const pid_t left = numberIn(outcomes[0].errorOutput);
    EXPECT_TRUE(test::isLiveProcess(left));
    ::kill(left, SIGKILL);
    test::waitUntilGone(left);
}

}  // namespace
}  // namespace neb
