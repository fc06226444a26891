#include "Platform/LimitWatch.h"

#include <gmock/gmock.h>
#include <signal.h>

#include "Support/ChildLaunches.h"
#include "Support/HygienicTest.h"

namespace neb {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using test::shell;
using Moment = LimitWatch::Moment;

TEST(LimitWatch, WithoutLimitsHasNoDeadline) {
    LimitWatch watch({});
    watch.addOutput(1U << 30, Moment::max());
    EXPECT_EQ(watch.deadline(), std::nullopt);
    EXPECT_EQ(watch.exceededLimit(Moment::max()), std::nullopt);
}

TEST(LimitWatch, SilenceBeginsWithTheLastOutput) {
    LimitWatch watch({.silence = seconds(10)});
    const Moment now = *watch.deadline();
    watch.addOutput(1, now);
    EXPECT_EQ(watch.deadline(), now + seconds(10));
    watch.addOutput(0, now + seconds(5));
    EXPECT_EQ(watch.deadline(), now + seconds(10)) << "nothing was written";
    EXPECT_EQ(watch.exceededLimit(now + milliseconds(9999)), std::nullopt);
    EXPECT_EQ(watch.exceededLimit(now + seconds(10)), ChildLimit::silence);
}

TEST(LimitWatch, OutputDoesNotExtendTheTotalTime) {
    LimitWatch watch({.silence = seconds(10), .total = seconds(30)});
    const Moment start = *watch.deadline() - seconds(10);
    watch.addOutput(1, start + seconds(25));
    EXPECT_EQ(watch.deadline(), start + seconds(30));
    EXPECT_EQ(watch.exceededLimit(start + seconds(29)), std::nullopt);
    EXPECT_EQ(watch.exceededLimit(start + seconds(30)), ChildLimit::total);
}

TEST(LimitWatch, TimeInWhichChildrenAreHeldBackDoesNotCount) {
    LimitWatch watch({.silence = seconds(40), .total = seconds(30)});
    const Moment start = *watch.deadline() - seconds(30);
    watch.addHeldBack(start + seconds(1), start + seconds(1001));
    EXPECT_EQ(watch.deadline(), start + seconds(1030));
    watch.addHeldBack(start + seconds(1001), start + seconds(2001));
    EXPECT_EQ(watch.deadline(), start + seconds(2030));
    EXPECT_EQ(watch.exceededLimit(start + seconds(2029)), std::nullopt);
    EXPECT_EQ(watch.exceededLimit(start + seconds(2030)), ChildLimit::total);
}

TEST(LimitWatch, CountsTheBytesOfTheOutput) {
    LimitWatch watch({.outputBytes = 100});
    watch.addOutput(60, LimitWatch::Clock::now());
    watch.addOutput(40, LimitWatch::Clock::now());
    EXPECT_EQ(watch.exceededLimit(Moment::max()), std::nullopt);
    watch.addOutput(1, LimitWatch::Clock::now());
    EXPECT_EQ(watch.exceededLimit(Moment::min()), ChildLimit::outputBytes);
    EXPECT_EQ(watch.deadline(), std::nullopt);
}

// ---- children ---------------------------------------------------------------------------------

class LimitedChild : public test::HygienicTest {
protected:
    static ChildOutcome run(const std::string& script, const ChildLimits& limits) {
        ChildProcess process;
        return process.run({shell(script)}, {}, limits).at(0);
    }
};

TEST_F(LimitedChild, IsEndedWhenItIsSilent) {
    const ChildOutcome outcome =
        run("echo one; sleep 1000 & exec sleep 1000", {.silence = milliseconds(50)});
    EXPECT_EQ(outcome.exceededLimit, ChildLimit::silence);
    EXPECT_EQ(outcome.status.signalNumber(), SIGTERM);
    EXPECT_EQ(outcome.output, "one\n");
}

TEST_F(LimitedChild, IsEndedAfterTheTotalTime) {
    const ChildOutcome outcome =
        run("while :; do echo x >&2; sleep 0.01; done", {.total = milliseconds(100)});
    EXPECT_EQ(outcome.exceededLimit, ChildLimit::total);
    EXPECT_NE(outcome.errorOutput, "");
}

TEST_F(LimitedChild, IsEndedWhenItWritesTooMuch) {
    EXPECT_EQ(run("exec yes", {.outputBytes = 1000}).exceededLimit, ChildLimit::outputBytes);
    EXPECT_EQ(run("exec yes >&2", {.outputBytes = 1000}).exceededLimit, ChildLimit::outputBytes);
}

TEST_F(LimitedChild, WithinItsLimitsIsNotDisturbed) {
    const ChildOutcome outcome = run(
        "printf %1000s x", {.silence = seconds(100), .total = seconds(100), .outputBytes = 1000});
    EXPECT_EQ(outcome.exceededLimit, std::nullopt);
    EXPECT_TRUE(outcome.status.isSuccess());
}

TEST_F(LimitedChild, ThatHasEndedMayLeaveItsOutputOpen) {
    const ChildOutcome outcome =
        run("trap '' TERM; sleep 0.4 & echo done", {.silence = milliseconds(100)});
    EXPECT_EQ(outcome.exceededLimit, std::nullopt);
    EXPECT_TRUE(outcome.status.isSuccess());
}

TEST_F(LimitedChild, OfAPipelineEndsAllOfIt) {
    ChildProcess process;
    const auto outcomes = process.run({shell("exec sleep 1000"), shell("exec sleep 1000")}, {},
                                      {.silence = milliseconds(50)});
    EXPECT_EQ(outcomes[0].exceededLimit, ChildLimit::silence);
    EXPECT_EQ(outcomes[1].exceededLimit, std::nullopt);
    for (const ChildOutcome& outcome : outcomes) {
        EXPECT_EQ(outcome.status.signalNumber(), SIGTERM);
    }
}

TEST_F(LimitedChild, OfAPipelineIsTheOneThatStillRunsOrWrites) {
    struct Row {
        const char *first, *second;
        ChildLimits limits;
        std::size_t child;
    };
    const Row rows[] = {
        {"exec sleep 1000", "exec cat", {.total = milliseconds(100)}, 0},
        {"exit 0", "exec sleep 1000", {.total = milliseconds(100)}, 1},
        {"exit 0", "exec sleep 1000", {.silence = milliseconds(100)}, 1},
        {"exec yes", "exec cat", {.outputBytes = 1000}, 1},
        {"exec yes >&2", "exec cat", {.outputBytes = 1000}, 0},
    };
    for (const Row& row : rows) {
        ChildProcess process;
        const auto outcomes = process.run({shell(row.first), shell(row.second)}, {}, row.limits);
        EXPECT_TRUE(outcomes[row.child].exceededLimit) << row.first << " | " << row.second;
        EXPECT_FALSE(outcomes[1 - row.child].exceededLimit) << row.first << " | " << row.second;
    }
}

}  // namespace
}  // namespace neb
