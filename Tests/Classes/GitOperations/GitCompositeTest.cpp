#include "GitOperations/GitComposite.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

#include <signal.h>

#include <chrono>
#include <thread>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"
#include "Support/ScriptOperation.h"
#include "Support/TemporaryFolder.h"

namespace neb {
namespace {

using test::HasErrorClass;
using test::IsSourceControlError;
using test::requestFor;
using test::TemporaryFolder;

/// Runs the destination of its request as a script.
class Step : public test::ScriptOperation {
public:
    explicit Step(std::shared_ptr<NEBSourceControlRequest> request)
        : ScriptOperation(std::string(*request->destination.string()), request) {}
};

/// Runs its steps in order and keeps the first error.
class Composite : public GitComposite<NEBSourceControlOperation> {
public:
    explicit Composite(std::vector<std::string> scripts)
        : GitComposite(requestFor(NEBSourceControlRequestInfo, std::nullopt)),
          _scripts(std::move(scripts)) {}

    void main() override {
        setOperationQueue(std::make_shared<OperationQueue>());
        for (const std::string& script : _scripts) {
            auto request = requestFor(NEBSourceControlRequestAdd, std::nullopt);
            request->destination = script;
            steps.push_back(run<Step>(request));
            if (steps.back()->error()) {
                setError(steps.back()->error());
                return;
            }
        }
    }

    std::vector<std::shared_ptr<Step>> steps;

private:
    std::vector<std::string> _scripts;
};

class CompositeTest : public test::HygienicTest {};

TEST_F(CompositeTest, RunsStepsInOrderOnItsOwnQueue) {
    const TemporaryFolder folder;
    Composite composite({"sleep 0.1; echo one >>'" + folder.path("log") + "'",
                         "echo two >>'" + folder.path("log") + "'"});
    EXPECT_EQ(composite.operationQueue(), nullptr);
    composite.start();
    EXPECT_EQ(composite.error(), std::nullopt);
    EXPECT_EQ(folder.read("log"), "one\ntwo\n");
    EXPECT_NE(composite.operationQueue(), nullptr);
    EXPECT_FALSE(composite.command().has_value());
    const auto queue = composite.operationQueue();
    const auto other = std::make_shared<OperationQueue>();
    composite.setOperationQueue(other);
    EXPECT_EQ(composite.operationQueue(), other);
}

TEST_F(CompositeTest, PassesOnTheErrorOfAStep) {
    Composite composite({"echo 'fatal: not a git repository' >&2; exit 128", "exit 0"});
    composite.start();
    EXPECT_THAT(composite.error(), HasErrorClass(NEBSourceControlNotARepositoryErrorClass));
    EXPECT_EQ(composite.steps.size(), 1U);
}

TEST_F(CompositeTest, PassesOnLogBackgroundFlagAndVariables) {
    Composite composite({"exit 0", "exit 3"});
    composite.setCommandLog(std::make_shared<NEBSourceControlCommandLog>());
    composite.setBackgroundWork(true);
    composite.setChildVariables({"GIT_ASKPASS=/ask"});
    composite.start();
    const auto runs = composite.commandLog()->runs();
    ASSERT_EQ(runs.size(), 2U);
    EXPECT_EQ(runs[0].terminationStatus, 0);
    EXPECT_EQ(runs[1].terminationStatus, 3);
    EXPECT_TRUE(composite.steps[0]->isBackgroundWork());
    EXPECT_THAT(composite.steps[1]->childVariables(), testing::ElementsAre("GIT_ASKPASS=/ask"));
}

TEST_F(CompositeTest, PassesOnThatOutputWasHeldOpen) {
    const TemporaryFolder folder;
    Composite composite({"sleep 600 & echo $! >'" + folder.path("pid") + "'", "exit 0"});
    composite.start();
    EXPECT_TRUE(composite.outputWasHeldOpen());
    ASSERT_EQ(::kill(std::stoi(folder.read("pid")), SIGKILL), 0);
}

TEST_F(CompositeTest, IsCancelledWithTheStepThatRuns) {
    const TemporaryFolder folder;
    Composite composite(
        {"exit 0", "echo $$ >'" + folder.path("pid") + "'; exec sleep 600", "exit 0"});
    std::thread canceller([&] {
        while (folder.read("pid").empty()) {
            std::this_thread::yield();
        }
        composite.cancel();
    });
    composite.start();
    canceller.join();
    EXPECT_THAT(composite.error(), HasErrorClass(NEBSourceControlCancelledErrorClass));
    EXPECT_EQ(composite.steps.size(), 2U);
    EXPECT_FALSE(test::isLiveProcess(std::stoi(folder.read("pid"))));
}

/// No step runs when cancel() is called between two steps.
TEST_F(CompositeTest, IsCancelledBetweenItsSteps) {
    const TemporaryFolder folder;
    Composite composite({"echo $$ >'" + folder.path("pid") + "'; exec sleep 600"});
    composite.cancel();
    composite.main();  // start() would not call it
    EXPECT_THAT(composite.error(), HasErrorClass(NEBSourceControlCancelledErrorClass));
    EXPECT_EQ(folder.read("pid"), "") << "the step began";
}

TEST_F(CompositeTest, IsCancelledAtAnyMoment) {
    for (int round = 0; round < 100; ++round) {
        Composite composite({"exit 0", "exit 0", "exec sleep 600"});
        std::thread canceller([&] {
            std::this_thread::sleep_for(std::chrono::microseconds(round * 60));
            composite.cancel();
        });
        composite.start();
        canceller.join();
        EXPECT_THAT(composite.error(), HasErrorClass(NEBSourceControlCancelledErrorClass));
    }
}

TEST_F(CompositeTest, DoesNothingIfCancelledBefore) {
    Composite composite({"exit 0"});
    composite.cancel();
    composite.start();
    EXPECT_THAT(composite.error(), HasErrorClass(NEBSourceControlCancelledErrorClass));
    EXPECT_TRUE(composite.steps.empty());
}

}  // namespace
}  // namespace neb
