// Threads that block the signals of the process.

#include "Platform/SignalFreeThread.h"

#include <gtest/gtest.h>
#include <signal.h>

#include "Platform/OperationQueue.h"

namespace neb::test {
namespace {

/// Returns the signals that the calling thread blocks.
sigset_t blockedSignals() {
    sigset_t signals;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &signals);
    return signals;
}

void expectOnlyFaultsTaken(const sigset_t& blocked) {
    for (const int signalNumber : {SIGHUP, SIGINT, SIGTERM, SIGCHLD, SIGPIPE, SIGALRM, SIGUSR1}) {
        EXPECT_EQ(::sigismember(&blocked, signalNumber), 1) << signalNumber;
    }
    for (const int signalNumber : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS}) {
        EXPECT_EQ(::sigismember(&blocked, signalNumber), 0) << signalNumber;
    }
}

TEST(SignalFreeThread, BlocksAllSignalsExceptFaults) {
    sigset_t blocked{};
    startSignalFreeThread([&blocked] { blocked = blockedSignals(); }).join();
    expectOnlyFaultsTaken(blocked);
}

TEST(SignalFreeThread, DoesNotChangeTheMaskOfTheCaller) {
    sigset_t own;
    ::sigemptyset(&own);
    ::sigaddset(&own, SIGUSR2);
    sigset_t former;
    ::pthread_sigmask(SIG_SETMASK, &own, &former);
    startSignalFreeThread([] {}).join();
    const sigset_t afterwards = blockedSignals();
    ::pthread_sigmask(SIG_SETMASK, &former, nullptr);
    EXPECT_EQ(::sigismember(&afterwards, SIGUSR2), 1);
    EXPECT_EQ(::sigismember(&afterwards, SIGHUP), 0);
}

TEST(SignalFreeThread, IsUsedByQueues) {
    OperationQueue queue(1);
    sigset_t blocked{};
    queue.addBlock([&blocked] { blocked = blockedSignals(); });
    queue.waitUntilAllOperationsAreFinished();
    expectOnlyFaultsTaken(blocked);
}

}  // namespace
}  // namespace neb::test
