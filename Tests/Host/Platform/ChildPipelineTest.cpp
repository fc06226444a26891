// Pipelines of children, cancelled children, and processes that outlive their child.

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
class LingeringProcess : public test::HygienicTest {};

// ---- processes that outlive the child ---------------------------------------------------------

TEST_F(LingeringProcess, DoesNotDelayTheRun) {
    const ChildOutcome outcome = runOne(shell("sleep 1000 & echo $!"));
    const pid_t lingering = numberIn(outcome.output);
    EXPECT_TRUE(test::isLiveProcess(lingering)) << "it must not be killed";
    EXPECT_TRUE(outcome.outputWasHeldOpen);
    EXPECT_TRUE(outcome.status.isSuccess());
    ::kill(lingering, SIGKILL);
    test::waitUntilGone(lingering);
}

TEST_F(LingeringProcess, DoesNotTruncateTheOutputOfTheChild) {
    const ChildOutcome outcome =
        runOne(shell("sleep 1000 & echo $! >&2; head -c 900000 /dev/zero"));
    EXPECT_EQ(outcome.output.size(), 900000U);
    const pid_t lingering = numberIn(outcome.errorOutput);
    EXPECT_TRUE(outcome.outputWasHeldOpen);
    ::kill(lingering, SIGKILL);
    test::waitUntilGone(lingering);
}

TEST_F(LingeringProcess, MayWriteWithoutEnd) {
    const ChildOutcome outcome = runOne(shell("yes & echo $! >&2; exit 5"));
    EXPECT_EQ(outcome.status.exitStatus(), 5);
    EXPECT_TRUE(outcome.outputWasHeldOpen);
    test::waitUntilGone(numberIn(outcome.errorOutput));  // it gets SIGPIPE
}

TEST_F(LingeringProcess, WithOtherStreamsIsNotReported) {
    const ChildOutcome outcome = runOne(shell("sleep 1000 >/dev/null 2>&1 & echo $!"));
    EXPECT_FALSE(outcome.outputWasHeldOpen);
    ::kill(numberIn(outcome.output), SIGKILL);
    test::waitUntilGone(numberIn(outcome.output));
}

// ---- cancelling -------------------------------------------------------------------------------

/// Runs the launches and cancels them when the file `ready` exists.
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

TEST_F(ChildCancellation, EndsARunningChild) {
    const TemporaryFolder folder;
    const auto outcomes = runAndCancel(
        {shell("touch " + folder.path("ready") + "; exec sleep 1000")}, folder.path("ready"));
    EXPECT_EQ(outcomes[0].status.signalNumber(), SIGTERM);
}

TEST_F(ChildCancellation, LetsTheChildCleanUp) {
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
                    {.outputGrew =
                         [&process](const ArrivedOutput&) {
                             process.cancel();
                             return 0;
                         },
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

TEST_F(ChildCancellation, KillsAChildThatIgnoresSIGTERM) {
    const TemporaryFolder folder;
    const auto outcomes = runAndCancel(
        {shell("trap '' TERM; touch " + folder.path("ready") + "; while :; do sleep 1; done")},
        folder.path("ready"));
    EXPECT_EQ(outcomes[0].status.signalNumber(), SIGKILL);
}

TEST_F(ChildCancellation, EndsAStoppedChild) {
    const TemporaryFolder folder;
    const auto outcomes = runAndCancel(
        {shell("(while [ \"$(cut -d' ' -f3 /proc/$$/stat)\" != T ]; do :; done; touch " +
               folder.path("ready") + ") & kill -STOP $$")},
        folder.path("ready"));
    EXPECT_EQ(outcomes[0].status.signalNumber(), SIGTERM);
}

TEST_F(ChildCancellation, EndsAllProcessGroupsOfTheSession) {
    const TemporaryFolder folder;
    // With job control, bash runs background processes in their own process groups.
    const std::string script =
        "set -m; sleep 1000 >/dev/null 2>&1 & echo $!; set +m; (trap '' TERM; exec sleep 1000 "
        ">/dev/null 2>&1) & echo $! >&2; touch " +
        folder.path("ready") + "; wait";
    const auto outcomes =
        runAndCancel({program("/bin/bash", {"-c", script})}, folder.path("ready"));
    EXPECT_FALSE(test::isLiveProcess(numberIn(outcomes[0].output)));
    EXPECT_FALSE(test::isLiveProcess(numberIn(outcomes[0].errorOutput)));
}

TEST_F(ChildCancellation, LeavesNoProcessInAHostThatIgnoresSIGCHLD) {
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

TEST_F(ChildCancellation, BeforeTheRunPreventsTheStart) {
    const TemporaryFolder folder;
    ChildProcess process;
    process.cancel();
    bool started = false;
    const auto outcomes = process.run({shell("touch " + folder.path("ran"))},
                                      {.started = [&started](std::size_t) { started = true; },
                                       .outputGrew =
                                           [&started](const ArrivedOutput&) {
                                               started = true;
                                               return 0;
                                           }});
    EXPECT_EQ(outcomes[0].status.description(),
              "the program \"/bin/sh\" was not started, as it was cancelled before");
    EXPECT_FALSE(started);
    EXPECT_FALSE(std::filesystem::exists(folder.path("ran")));
}

TEST_F(ChildCancellation, AfterTheRunHasNoEffect) {
    ChildProcess process;
    const auto outcomes = process.run({shell("echo x")});
    process.cancel();
    EXPECT_EQ(outcomes[0].output, "x\n");
}

TEST_F(ChildCancellation, EndsBothChildrenOfAPipeline) {
    const TemporaryFolder folder;
    const auto outcomes = runAndCancel(
        {shell("touch " + folder.path("ready") + "; exec sleep 1000"), shell("exec sleep 1000")},
        folder.path("ready"));
    EXPECT_EQ(outcomes[0].status.signalNumber(), SIGTERM);
    EXPECT_EQ(outcomes[1].status.signalNumber(), SIGTERM);
}

// ---- pipelines --------------------------------------------------------------------------------

TEST_F(ChildPipelines, ConnectOutputToInput) {
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

TEST_F(ChildPipelines, ReportTheOutputOfTheLastChildAsItGrows) {
    const TemporaryFolder folder;
    ChildProcess process;
    std::vector<std::string> reported;
    const auto outcomes =
        process.run({shell("echo one >&2; echo two"),
                     shell("read line; echo one; while ! [ -e " + folder.path("reported") +
                           " ]; do sleep 0.01; done; echo error >&2; echo $line")},
                    {.outputGrew = [&](const ArrivedOutput& output) {
                        reported.emplace_back(output.data);
                        folder.write("reported", "");
                        return 0;
                    }});
    EXPECT_EQ(outcomes[1].output, "one\ntwo\n");
    EXPECT_THAT(reported, ElementsAre("one\n", "one\ntwo\n"));
}

TEST_F(ChildPipelines, TheFirstChildGetsSIGPIPEWhenTheSecondStopsReading) {
    ChildProcess process;
    const auto outcomes = process.run({program("/usr/bin/yes"), shell("head -c 2; exit 3")});
    EXPECT_EQ(outcomes[0].status.signalNumber(), SIGPIPE);
    EXPECT_EQ(outcomes[1].output, "y\n");
    EXPECT_EQ(outcomes[1].status.exitStatus(), 3);
}

TEST_F(ChildPipelines, EndTheFirstChildIfTheSecondCannotBeStarted) {
    ChildProcess process;
    const auto outcomes = process.run({shell("exec sleep 1000"), program("/no/such/program")});
    EXPECT_EQ(outcomes[0].status.signalNumber(), SIGTERM);
    EXPECT_THAT(outcomes[1].status.description(), HasSubstr("\"/no/such/program\""));
}

TEST_F(ChildPipelines, DoNotStartTheSecondChildIfTheFirstCannotBeStarted) {
    ChildProcess process;
    const TemporaryFolder folder;
    const auto outcomes =
        process.run({program("/no/such/program"), shell("touch " + folder.path("ran"))});
    EXPECT_THAT(outcomes[0].status.description(), HasSubstr("\"/no/such/program\""));
    EXPECT_THAT(outcomes[1].status.description(),
                AllOf(HasSubstr("\"/bin/sh\""), HasSubstr("was not started")));
    EXPECT_FALSE(std::filesystem::exists(folder.path("ran")));
}

/// Runs a pipeline whose first child leaves a process behind that runs `command`.
std::vector<ChildOutcome> runLeaving(const std::string& command, const std::string& second) {
    ChildProcess process;
    return process.run({shell("echo data; " + command + " & echo $! >&2"), shell(second)});
}

TEST_F(ChildPipelines, KillAProcessThatHoldsTheInputOfTheSecondChildOpen) {
    // setsid leaves the session of the child.
    for (const char* holder : {"sleep 1000 2>/dev/null", "setsid sleep 1000 2>/dev/null"}) {
        const auto outcomes = runLeaving(holder, "cat");
        EXPECT_EQ(outcomes[1].output, "data\n");
        EXPECT_TRUE(outcomes[1].status.isSuccess());
        EXPECT_TRUE(outcomes[0].outputWasHeldOpen);
        test::waitUntilGone(numberIn(outcomes[0].errorOutput));
    }
}

TEST_F(ChildPipelines, KillAProcessThatHoldsTheInputOpenInAHostThatIgnoresSIGCHLD) {
    struct sigaction ignore {};
    struct sigaction previous {};
    ignore.sa_handler = SIG_IGN;
    ::sigaction(SIGCHLD, &ignore, &previous);
    const auto outcomes = runLeaving("sleep 1000 2>/dev/null", "cat");
    ::sigaction(SIGCHLD, &previous, nullptr);
    EXPECT_EQ(outcomes[1].output, "data\n");
    test::waitUntilGone(numberIn(outcomes[0].errorOutput));
}

/// Forks a process that opens the standard output of the process in the file "pid", then creates
/// the file "opened", and lives for a minute.
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

TEST_F(ChildPipelines, DoNotKillAForkOfTheHostThatHoldsTheInputOpen) {
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
    EXPECT_TRUE(test::isLiveProcess(holder)) << "it belongs to the host";
    ::kill(holder, SIGKILL);
    ::waitpid(holder, nullptr, 0);
    EXPECT_TRUE(outcomes[0].status.isSuccess());
    EXPECT_TRUE(outcomes[0].outputWasHeldOpen);
    EXPECT_EQ(outcomes[1].output, "data\n");
    EXPECT_EQ(outcomes[1].status.signalNumber(), SIGTERM) << "it was waiting for input";
}

TEST_F(ChildPipelines, DoNotKillALingeringProcessThatHoldsNothingOpen) {
    const auto outcomes = runLeaving("sleep 1000 >/dev/null 2>&1", "cat; sleep 1.5");
    EXPECT_EQ(outcomes[1].output, "data\n");
    EXPECT_FALSE(outcomes[0].outputWasHeldOpen);
    const pid_t lingering = numberIn(outcomes[0].errorOutput);
    EXPECT_TRUE(test::isLiveProcess(lingering));
    ::kill(lingering, SIGKILL);
    test::waitUntilGone(lingering);
}

}  // namespace
}  // namespace neb
