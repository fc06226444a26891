// Unusual hosts: without standard streams, with their own signal handlers, with a clock that jumps.

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <filesystem>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/ChildLaunches.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"
#include "Support/Sanitizers.h"
#include "Support/TestRepository.h"
#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using JSON = nlohmann::ordered_json;

class HostFaults : public HygienicTest {
protected:
    HostFaults() { repository.commitFile("a", "1\n", "First"); }

    TestRepository repository;
};

/// Sets the handler of a signal for the lifetime of the object.
class Handled {
public:
    Handled(int signalNumber, void (*handler)(int)) : _signalNumber(signalNumber) {
        struct sigaction action {};
        action.sa_handler = handler;
        ::sigaction(signalNumber, &action, &_former);
    }
    Handled(const Handled&) = delete;
    Handled& operator=(const Handled&) = delete;
    ~Handled() { ::sigaction(_signalNumber, &_former, nullptr); }

private:
    int _signalNumber;
    struct sigaction _former {};
};

TEST_F(HostFaults, WithoutStandardStreamsACommandDoesItsWork) {
    const NebscOutcome outcome = runProgram(
        "/bin/sh",
        {"-c", "\"$0\" add new <&- >&- 2>&-; \"$0\" commit -m Second <&- >&- 2>&-; exec \"$0\" log",
         std::string(NEB_BUILD_FOLDER) + "/bin/nebsc"},
        {.folder = (repository.write("new", "2\n"), repository.path())});
    EXPECT_THAT(outcome.output, HasSubstr("Second")) << outcome.errors;
    EXPECT_EQ(repository.git({"show", "--format=%s", "--name-only"}), "Second\n\nnew\n")
        << "a message went into a file that had taken the place of a closed stream";
}

TEST_F(HostFaults, WithoutStandardStreamsNoPipeIsTakenForOne) {
    const std::string program = std::string(NEB_BUILD_FOLDER) + "/bin/nebsc";
    for (const char* closed : {"<&-", ">&-", "2>&-", "<&- 2>&-", "<&- >&-", ">&- 2>&-"}) {
        const NebscOutcome outcome = runProgram(
            "/bin/sh", {"-c", std::string("\"$0\" status ") + closed + "; echo $?", program},
            {.folder = repository.path()});
        const bool hasOutput = std::string(closed).find(" >&-") == std::string::npos &&
                               std::string(closed).find(">&-") != 0;
        if (hasOutput) {
            EXPECT_THAT(outcome.output, testing::AllOf(testing::HasSubstr("No changes"),
                                                       testing::EndsWith("\n0\n")))
                << closed;
        } else {
            EXPECT_THAT(outcome.output, testing::AnyOf("0\n", "1\n")) << closed;
        }
    }
}

TEST_F(HostFaults, AHostThatReapsAllChildrenInAHandlerGetsNoSuccessByAccident) {
    const Handled handled(SIGCHLD, [](int) {
        const int kept = errno;
        while (::waitpid(-1, nullptr, WNOHANG) > 0) {
        }
        errno = kept;
    });
    for (int i = 0; i < 20; ++i) {
        const ChildOutcome failed = runOne(shell("exit 3"));
        EXPECT_FALSE(failed.status.isSuccess());
        EXPECT_TRUE(failed.status.exitStatus() == 3 || !failed.status.exitStatus().has_value());
        const auto log = perform(requestFor(NEBSourceControlRequestLog, repository.path()));
        // If the host reaps git first, its exit status is unknown.
        EXPECT_EQ(log->error().has_value(),
                  log->error() && log->error()->errorClass == NEBSourceControlUnknownErrorClass);
        EXPECT_THAT(*log->result(), SizeIs(1));
    }
}

TEST_F(HostFaults, AHostThatHandlesOrIgnoresSIGPIPEIsNotDisturbed) {
    static volatile sig_atomic_t pipes = 0;
    pipes = 0;
    for (void (*handler)(int) : {+[](int) { pipes = pipes + 1; }, SIG_IGN}) {
        const Handled handled(SIGPIPE, handler);
        ChildProcess process;
        // The second half exits at once, so the first has no reader.
        const auto outcomes = process.run({program("/usr/bin/yes"), shell("exit 0")});
        EXPECT_EQ(outcomes[0].status.signalNumber(), SIGPIPE)
            << "the child has the default disposition";
        EXPECT_TRUE(outcomes[1].status.isSuccess());
    }
    EXPECT_EQ(pipes, 0) << "a write to a pipe without a reader";
}

TEST_F(HostFaults, AClockThatJumpsChangesNothing) {
    if (hasSanitizer) {
        GTEST_SKIP() << "nothing is loaded before a sanitizer";
    }
    const std::string clock = std::string(NEB_TEST_MODULES) + "/JumpingClock.so";
    ASSERT_TRUE(fs::exists(clock));
    const auto begin = std::chrono::steady_clock::now();
    // A lingering process makes the operation use each of its timeouts.
    const StandInGit git(repository.path(),
                         "date >'" + repository.path("../date") +
                             "'\nsleep 600 &\nPATH=/usr/bin:/bin exec git \"$@\"");
    const JSON request{{"type", NEBSourceControlRequestLog},
                       {"sourceTree", {{"location", repository.path()}}}};
    const NebscOutcome outcome =
        runRequest(request.dump(), {.variables = {git.path(), {"LD_PRELOAD", clock}}});
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.errors;
    const JSON json = outcome.json();
    EXPECT_THAT(json["result"], SizeIs(1));
    const double milliseconds = json["commands"][0]["milliseconds"].get<double>();
    EXPECT_GE(milliseconds, 0);
    EXPECT_LT(milliseconds, 600000) << "a day is a jump of the clock";
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::minutes(10));
}

TEST_F(HostFaults, TheClockOfThatTestJumps) {
    if (hasSanitizer) {
        GTEST_SKIP() << "nothing is loaded before a sanitizer";
    }
    const NebscOutcome outcome = runProgram(
        "/bin/date", {"+%s"},
        {.variables = {{"LD_PRELOAD", std::string(NEB_TEST_MODULES) + "/JumpingClock.so"}}});
    const auto now = std::chrono::duration_cast<std::chrono::seconds>(
                         std::chrono::system_clock::now().time_since_epoch())
                         .count();
    EXPECT_GT(std::abs(std::stoll(outcome.output) - now), 3600);
}

}  // namespace
}  // namespace neb::test
