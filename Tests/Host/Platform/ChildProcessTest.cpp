#include "Platform/ChildProcess.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <thread>

#include "Platform/ErrnoText.h"
#include "Support/ChildLaunches.h"
#include "Support/HygienicTest.h"
#include "Support/TemporaryFolder.h"

namespace neb {
namespace {

using std::string_literals::operator""s;
using test::program;
using test::runOne;
using test::shell;
using test::TemporaryFolder;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

class ChildProcessTest : public test::HygienicTest {};
class ChildFailure : public test::HygienicTest {};
class ChildInheritance : public test::HygienicTest {};

// ---- ordinary runs ----------------------------------------------------------------------------

TEST_F(ChildProcessTest, RunsAProgramAndCollectsItsOutput) {
    ChildProcess process;
    ChildLaunch launch{.launchPath = "/bin/echo",
                       .arguments = {"hello"},
                       .currentDirectoryPath = std::nullopt,
                       .environment = {}};
    const std::vector<ChildOutcome> outcomes = process.run({launch});
    ASSERT_EQ(outcomes.size(), 1U);
    EXPECT_TRUE(outcomes[0].status.isSuccess());
    EXPECT_EQ(outcomes[0].output, "hello\n");
    EXPECT_EQ(outcomes[0].errorOutput, "");
    EXPECT_FALSE(outcomes[0].outputWasHeldOpen);
    EXPECT_GT(outcomes[0].duration.count(), 0);
}

TEST_F(ChildProcessTest, PassesArgumentsByteForByte) {
    const ChildOutcome outcome =
        runOne(program("/usr/bin/printf", {"[%s]", "", "a b", "*", "\n", "$HOME", "\xE4", "'\""}));
    EXPECT_EQ(outcome.output, "[][a b][*][\n][$HOME][\xE4]['\"]");
}

TEST_F(ChildProcessTest, PreservesOutputByteForByte) {
    const ChildOutcome outcome = runOne(shell(R"(printf 'a\000b\377\r\n'; printf '\000' >&2)"));
    EXPECT_EQ(outcome.output, "a\0b\xFF\r\n"s);
    EXPECT_EQ(outcome.errorOutput, "\0"s);
}

TEST_F(ChildProcessTest, ReportsTheExitStatus) {
    for (const int status : {0, 1, 2, 128, 255}) {
        const ChildOutcome outcome = runOne(shell("exit " + std::to_string(status)));
        EXPECT_EQ(outcome.status.exitStatus(), status);
        EXPECT_EQ(outcome.status.isSuccess(), status == 0);
        EXPECT_EQ(outcome.status.description(), "exit status " + std::to_string(status));
    }
}

TEST_F(ChildProcessTest, ReadsLargeOutputOfBothStreams) {
    const ChildOutcome outcome = runOne(
        shell("head -c 100000000 /dev/zero >&2 & head -c 100000001 /dev/zero; wait; exit 3"));
    EXPECT_EQ(outcome.status.exitStatus(), 3);
    EXPECT_EQ(outcome.output.size(), 100000001U);
    EXPECT_EQ(outcome.errorOutput.size(), 1U << 23U) << "the beginning and the end";
}

TEST_F(ChildProcessTest, WaitsForAChildThatHasClosedItsStreams) {
    const ChildOutcome outcome = runOne(shell("echo x; exec >&- 2>&-; sleep 0.1; exit 4"));
    EXPECT_EQ(outcome.status.exitStatus(), 4);
    EXPECT_EQ(outcome.output, "x\n");
}

TEST_F(ChildProcessTest, ContinuesAfterSignalsOfTheHost) {
    struct sigaction action {};
    struct sigaction previous {};
    action.sa_handler = [](int) {};  // without SA_RESTART, so that calls fail with EINTR
    ::sigaction(SIGALRM, &action, &previous);
    const itimerval everyMillisecond{{0, 1000}, {0, 1000}};
    ::setitimer(ITIMER_REAL, &everyMillisecond, nullptr);
    const ChildOutcome outcome = runOne(shell("for i in 1 2 3; do echo $i; sleep 0.05; done"));
    const itimerval never{};
    ::setitimer(ITIMER_REAL, &never, nullptr);
    ::sigaction(SIGALRM, &previous, nullptr);
    EXPECT_EQ(outcome.output, "1\n2\n3\n");
    EXPECT_TRUE(outcome.status.isSuccess());
}

TEST_F(ChildProcessTest, RunsOnManyThreadsAtOnce) {
    std::atomic<int> right = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&right, t] {
            for (int i = 0; i < 10; ++i) {
                const std::string word = std::to_string(t) + "." + std::to_string(i);
                right += runOne(program("/bin/echo", {word})).output == word + "\n" ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(right, 80);
}

TEST_F(ChildProcessTest, WorksInAHostWithClosedStandardStreams) {
    int saved[3];
    for (int i = 0; i < 3; ++i) {
        saved[i] = ::fcntl(i, F_DUPFD_CLOEXEC, 20);
        ::close(i);
    }
    const ChildOutcome outcome = runOne(shell("readlink /proc/self/fd/0; echo error >&2"));
    for (int i = 0; i < 3; ++i) {
        ::dup2(saved[i], i);
        ::close(saved[i]);
    }
    EXPECT_EQ(outcome.output, "/dev/null\n");
    EXPECT_EQ(outcome.errorOutput, "error\n");
}

// ---- what the child inherits ------------------------------------------------------------------

TEST_F(ChildInheritance, StandardInputIsEmpty) {
    EXPECT_EQ(runOne(shell("readlink /proc/self/fd/0; cat")).output, "/dev/null\n");
}

TEST_F(ChildInheritance, TheWorkingDirectoryOfTheHostDoesNotChange) {
    const TemporaryFolder folder;
    ChildLaunch launch = program("/bin/pwd");
    launch.currentDirectoryPath = folder.path();
    EXPECT_EQ(runOne(launch).output, folder.path() + "\n");
}

TEST_F(ChildInheritance, TheEnvironmentIsExactlyTheGivenOne) {
    ChildLaunch launch = program("/usr/bin/env");
    launch.environment = {"A=1", "B=", "C=x=y"};
    EXPECT_EQ(runOne(launch).output, "A=1\nB=\nC=x=y\n");
}

TEST_F(ChildInheritance, TheChildLeadsItsOwnSession) {
    // pid (name) state parent group session
    const ChildOutcome outcome =
        runOne(shell("set -- $(cat /proc/$$/stat); echo $(( $1 == $5 )) $(( $1 == $6 ))"));
    EXPECT_EQ(outcome.output, "1 1\n");
}

TEST_F(ChildInheritance, SignalsHaveTheirDefaultDisposition) {
    struct sigaction ignore {};
    struct sigaction previous {};
    ignore.sa_handler = SIG_IGN;
    ::sigaction(SIGPIPE, &ignore, &previous);
    sigset_t blocked;
    sigset_t previousMask;
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &previousMask);
    const ChildOutcome outcome =
        runOne(program("/bin/grep", {"-E", "^Sig(Blk|Ign)", "/proc/self/status"}));
    ::pthread_sigmask(SIG_SETMASK, &previousMask, nullptr);
    ::sigaction(SIGPIPE, &previous, nullptr);
    // Each line ends with a mask of 16 digits. The last 8 are the signals 1 to 32, and 32 is used
    // by the C library.
    std::uint64_t mask = 0;
    const std::string masks(outcome.output);
    for (std::size_t tab = masks.find('\t'); tab != std::string::npos;
         tab = masks.find('\t', tab + 1)) {
        mask |= std::stoull(masks.substr(tab + 1, 16), nullptr, 16);
    }
    EXPECT_THAT(outcome.output, AllOf(HasSubstr("SigBlk:"), HasSubstr("SigIgn:")));
    EXPECT_EQ(mask & 0x7FFFFFFFU, 0U) << masks;
}

TEST_F(ChildInheritance, NoDescriptorOfTheHostIsInherited) {
#ifndef __GLIBC__
    GTEST_SKIP() << "posix_spawn_file_actions_addclosefrom_np exists in glibc only";
#endif
    const int careless = ::open("/dev/null", O_RDONLY);  // NOLINT: deliberately without O_CLOEXEC
    const ChildOutcome outcome = runOne(program("/bin/ls", {"/proc/self/fd"}));
    ::close(careless);
    EXPECT_EQ(outcome.output, "0\n1\n2\n3\n");  // 3: ls reading that folder
}

// ---- failures --------------------------------------------------------------------------------

TEST_F(ChildFailure, AMissingProgramIsNamed) {
    const ChildOutcome outcome = runOne(program("/no/such/program"));
    EXPECT_FALSE(outcome.status.started());
    EXPECT_EQ(outcome.status.exitStatus(), std::nullopt);
    EXPECT_EQ(outcome.status.description(),
              "the program \"/no/such/program\" could not be started: No such file or directory");
}

TEST_F(ChildFailure, AFileThatIsNotExecutableIsNamed) {
    const TemporaryFolder folder;
    const std::string text = folder.write("text", "hello\n");
    EXPECT_EQ(runOne(program(text)).status.description(),
              "the program \"" + text + "\" could not be started: Permission denied");
    const std::string empty = folder.writeProgram("noformat", "\x01\x02\x03");
    EXPECT_EQ(runOne(program(empty)).status.description(),
              "the program \"" + empty + "\" could not be started: Exec format error");
    EXPECT_EQ(runOne(program(folder.path())).status.description(),
              "the program \"" + folder.path() + "\" could not be started: Permission denied");
}

TEST_F(ChildFailure, AMissingFolderIsNamedAndNotTheProgram) {
    ChildLaunch launch = program("/bin/pwd");
    launch.currentDirectoryPath = "/no/such/folder";
    EXPECT_EQ(runOne(launch).status.description(),
              "the folder \"/no/such/folder\" could not be entered: No such file or directory");
    launch.launchPath = "/no/such/program";
    EXPECT_THAT(runOne(launch).status.description(), HasSubstr("the folder \"/no/such/folder\""));
}

TEST_F(ChildFailure, AFileAsWorkingDirectoryIsNamed) {
    const TemporaryFolder folder;
    ChildLaunch launch = program("/bin/pwd");
    launch.currentDirectoryPath = folder.write("file", "");
    EXPECT_EQ(runOne(launch).status.description(),
              "the folder \"" + folder.path("file") + "\" could not be entered: Not a directory");
}

TEST_F(ChildFailure, AFolderWithoutPermissionIsNamed) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path("locked"));
    std::filesystem::permissions(folder.path("locked"), std::filesystem::perms::none);
    ChildLaunch launch = program("/bin/pwd");
    launch.currentDirectoryPath = folder.path("locked");
    const test::AsOrdinaryUser user;
    EXPECT_EQ(
        runOne(launch).status.description(),
        "the folder \"" + folder.path("locked") + "\" could not be entered: Permission denied");
}

TEST_F(ChildFailure, ANULCharacterIsRefusedInEveryString) {
    EXPECT_EQ(runOne(program("/bin/echo", {"a", "b\0c"s})).status.description(),
              "the program \"/bin/echo\" could not be started: an argument holds a NUL character");
    EXPECT_THAT(runOne(program("/bin/echo\0x"s)).status.description(), HasSubstr("its path"));
    ChildLaunch launch = program("/bin/pwd");
    launch.currentDirectoryPath = "/\0x"s;
    EXPECT_THAT(runOne(launch).status.description(), HasSubstr("its working directory"));
    launch.currentDirectoryPath.reset();
    launch.environment = {"A=\0"s};
    EXPECT_THAT(runOne(launch).status.description(), HasSubstr("its environment"));
}

TEST_F(ChildFailure, TooLongArgumentsAreReported) {
    const ChildOutcome outcome = runOne(program("/bin/echo", {std::string(4 << 20, 'x')}));
    EXPECT_EQ(outcome.status.description(),
              "the program \"/bin/echo\" could not be started: Argument list too long");
}

TEST_F(ChildFailure, ASignalIsNamed) {
    const ChildOutcome outcome = runOne(shell("echo before; kill -9 $$"));
    EXPECT_EQ(outcome.status.signalNumber(), 9);
    EXPECT_EQ(outcome.status.exitStatus(), std::nullopt);
    EXPECT_FALSE(outcome.status.isSuccess());
    EXPECT_EQ(outcome.status.description(), "signal 9 (Killed)");
    EXPECT_EQ(outcome.output, "before\n");
}

TEST_F(ChildFailure, TooFewDescriptorsAreReportedAndAProcessDescriptorIsNotNeeded) {
#ifndef __GLIBC__
    GTEST_SKIP() << "posix_spawn of musl needs two more descriptors";
#endif
    rlimit original{};
    ::getrlimit(RLIMIT_NOFILE, &original);
    const int next = ::fcntl(0, F_DUPFD_CLOEXEC, 3);
    ::close(next);
    std::vector<std::string> answers;
    for (int free = 0; free <= 7; ++free) {
        rlimit limit = original;
        limit.rlim_cur = static_cast<rlim_t>(next + free);
        ::setrlimit(RLIMIT_NOFILE, &limit);
        const ChildOutcome outcome = runOne(shell("echo x; exit 7"));
        answers.push_back(std::string(outcome.output) + outcome.status.description());
    }
    ::setrlimit(RLIMIT_NOFILE, &original);
    const std::string none =
        "the program \"/bin/sh\" could not be started: no pipe for it: Too many open files";
    // Three pipes have six descriptors. The seventh is the process descriptor.
    EXPECT_THAT(answers, ElementsAre(none, none, none, none, none, none, "x\nexit status 7",
                                     "x\nexit status 7"));
}

TEST_F(ChildFailure, AnUnknownEndIsNotASuccess) {
    struct sigaction ignore {};
    struct sigaction previous {};
    ignore.sa_handler = SIG_IGN;
    ::sigaction(SIGCHLD, &ignore, &previous);
    const ChildOutcome outcome = runOne(shell("echo x"));
    ::sigaction(SIGCHLD, &previous, nullptr);
    EXPECT_EQ(outcome.output, "x\n");
    EXPECT_TRUE(outcome.status.started());
    EXPECT_FALSE(outcome.status.isSuccess());
    EXPECT_EQ(outcome.status.description(),
              "how it ended could not be learned: " + textOfErrno(ECHILD));
}

}  // namespace
}  // namespace neb
