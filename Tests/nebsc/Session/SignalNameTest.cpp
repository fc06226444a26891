#include "Session/SignalName.h"

#include <gmock/gmock.h>

#include <csignal>

namespace neb::test {
namespace {

using nebsc::signalName;

TEST(SignalName, IsThatOfTheSystem) {
    EXPECT_EQ(signalName(SIGHUP), "SIGHUP");
    EXPECT_EQ(signalName(SIGKILL), "SIGKILL");
    EXPECT_EQ(signalName(SIGTERM), "SIGTERM");
    EXPECT_EQ(signalName(SIGSEGV), "SIGSEGV");
    EXPECT_EQ(signalName(SIGCHLD), "SIGCHLD");
    EXPECT_EQ(signalName(SIGSYS), "SIGSYS");
}

/// All but the real-time signals have one on Linux.
TEST(SignalName, IsKnownForEverySignal) {
    for (int signalNumber = 1; signalNumber < 32; ++signalNumber) {
        EXPECT_THAT(signalName(signalNumber), testing::MatchesRegex("SIG[A-Z]+[12]?"))
            << signalNumber;
    }
}

TEST(SignalName, HasTheNumberOfOtherSignals) {
    EXPECT_EQ(signalName(SIGRTMIN), "SIG" + std::to_string(SIGRTMIN));
    EXPECT_EQ(signalName(0), "SIG0");
    EXPECT_EQ(signalName(-1), "SIG-1");
}

// In one condition, the second macro is an error where the C library does not define it.
#ifdef __GLIBC__
#if __GLIBC_PREREQ(2, 32)
TEST(SignalName, AgreesWithTheCLibrary) {
    for (int signalNumber = 1; signalNumber < 32; ++signalNumber) {
        EXPECT_EQ(signalName(signalNumber), std::string("SIG") + ::sigabbrev_np(signalNumber));
    }
}
#endif
#endif

}  // namespace
}  // namespace neb::test
