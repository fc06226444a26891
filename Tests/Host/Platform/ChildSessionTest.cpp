// Sessions and the writers of pipes.

#include "Platform/ChildSession.h"

#include <gmock/gmock.h>
#include <sched.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>

#include "Platform/PipeWriters.h"
#include "Support/HygienicTest.h"

namespace neb {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ChildSessionTest : public test::HygienicTest {};

/// Starts a process that leads a session and waits for a signal.
pid_t startSession() {
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::setsid();
        while (true) {
            ::pause();
        }
    }
    while (::getsid(pid) != pid) {
        ::usleep(1000);
    }
    return pid;
}

TEST_F(ChildSessionTest, AZombieLeaderIsNotALiveMember) {
    const pid_t pid = startSession();
    EXPECT_THAT(liveMembers(pid), ElementsAre(pid));
    signalSession(pid, SIGKILL);
    siginfo_t information{};
    ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(pid), &information, WEXITED | WNOWAIT), 0);
    EXPECT_THAT(liveMembers(pid), IsEmpty()) << "it has not been reaped";
    EXPECT_EQ(::waitpid(pid, nullptr, 0), pid);
}

TEST_F(ChildSessionTest, SignalsMembersByTheirOwnNumbers) {
    const pid_t pid = startSession();
    signalMembers(pid, SIGUSR1);
    int status = 0;
    EXPECT_EQ(::waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGUSR1);
}

void awaitStopProgress(pid_t session, StopProgress progress) {
    while (stopProgressOf(session) != progress) {
        ::usleep(1000);
    }
}

void endSession(pid_t session) {
    signalSession(session, SIGKILL);
    EXPECT_EQ(::waitpid(session, nullptr, 0), session);
}

TEST_F(ChildSessionTest, ARunningSessionStopsAfterSIGSTOP) {
    const pid_t pid = startSession();
    EXPECT_EQ(stopProgressOf(pid), StopProgress::running);
    signalSession(pid, SIGSTOP);
    awaitStopProgress(pid, StopProgress::complete);
    endSession(pid);
}

/// Stops itself, so that its parent waits after vfork(2).
int stopForever(void* /*unused*/) {
    while (true) {
        ::kill(::getpid(), SIGSTOP);  // raise() of musl stops the parent
    }
}

TEST_F(ChildSessionTest, AProcessThatWaitsInTheKernelIsBlocked) {
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::setsid();
        static std::array<char, 1U << 16> stack;
        static_cast<void>(
            ::clone(stopForever, stack.data() + stack.size(), CLONE_VFORK | SIGCHLD, nullptr));
        ::_exit(0);
    }
    while (::getsid(pid) != pid) {
        ::usleep(1000);
    }
    awaitStopProgress(pid, StopProgress::blocked);
    endSession(pid);
}

TEST_F(ChildSessionTest, FindsTheWritersOfAPipeAndNotItsReaders) {
    Pipe pipe;
    ASSERT_EQ(openPipe(pipe, PipeSize::ordinary), 0);
    const ino_t number = pipeNumber(pipe.readEnd);
    EXPECT_NE(number, 0U);
    EXPECT_THAT(processesWritingTo(number), ElementsAre(::getpid()));
    pipe.writeEnd.close();
    EXPECT_THAT(processesWritingTo(number), IsEmpty());
    EXPECT_EQ(pipeNumber(FileDescriptor()), 0U);
}

}  // namespace
}  // namespace neb
