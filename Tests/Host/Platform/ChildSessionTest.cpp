// Sessions and the writers of pipes.

#include "Platform/ChildSession.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

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
