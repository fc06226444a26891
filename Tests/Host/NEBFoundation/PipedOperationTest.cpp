// Task operations with a pipeToOperation().

#include <gmock/gmock.h>
#include <signal.h>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Support/HygienicTest.h"
#include "Support/Matchers.h"
#include "Support/ScriptOperation.h"

namespace neb {
namespace {

using test::HasErrorClass;
using test::IsSourceControlError;
using test::script;
using test::ScriptOperation;
using testing::ElementsAre;
using testing::HasSubstr;

class PipedOperation : public test::HygienicTest {};

std::shared_ptr<ScriptOperation> piped(std::string first, std::string second) {
    auto operation = script(std::move(first));
    operation->second = script(std::move(second));
    return operation;
}

TEST_F(PipedOperation, TheResultOfTheSecondHalfIsKept) {
    auto operation =
        piped("echo data; echo fatal: first >&2; exit 1", "cat; echo second >&2; exit 2");
    operation->second->parse = [&] {
        operation->second->setResult(
            NEBSourceControlResult{NEBDictionary{{"content", *operation->second->data()}}});
    };
    operation->start();
    EXPECT_EQ(operation->error(), std::nullopt);
    ASSERT_TRUE(operation->result().has_value());
    EXPECT_EQ(*operation->result()->at(0).value("content").string(), "data\n");
    EXPECT_EQ(operation->parses, 0);
    EXPECT_EQ(operation->second->parses, 1);
}

TEST_F(PipedOperation, AFailedHalfIsAnErrorDespiteAResult) {
    const std::pair<const char*, const char*> deaths[] = {{"echo half; kill -9 $$", "cat"},
                                                          {"echo data", "cat; kill -9 $$"}};
    for (const auto& [first, second] : deaths) {
        auto operation = piped(first, second);
        operation->second->parse = [&] { operation->second->setResult(NEBSourceControlResult{}); };
        operation->start();
        EXPECT_THAT(operation->error(), IsSourceControlError(-1, HasSubstr("signal 9 (Killed)")));
        EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlKilledErrorClass));
    }
    auto cutOff = piped("exec yes", "head -n 1");
    cutOff->second->parse = [&] { cutOff->second->setResult(NEBSourceControlResult{}); };
    cutOff->start();
    EXPECT_EQ(cutOff->error(), std::nullopt) << "the second half has read enough";
}

TEST_F(PipedOperation, AnExceededLimitNamesTheProgramOfItsHalf) {
    auto operation = piped("exit 0", "1000");
    operation->second->program = "/bin/sleep";
    operation->second->setArguments({"1000"});
    operation->setLimits({.silence = std::chrono::milliseconds(50)});
    operation->start();
    EXPECT_EQ(operation->error()->localizedDescription(),
              "\"/bin/sleep\" was ended because it wrote nothing for 0.05 seconds.");
}

TEST_F(PipedOperation, AnErrorHasTheStatusOfTheFailedHalf) {
    struct Case {
        const char *first, *second;
        int exitStatus;
    };
    for (const auto& [first, second, exitStatus] :
         {Case{"exit 128", "exit 2", 128}, Case{"echo x >&2; exit 3", "cat", 3},
          Case{"true", "echo y >&2; exit 2", 2}, Case{"exec yes", "exit 4", 4}}) {
        auto operation = piped(first, second);
        operation->second->parse = [&] {
            operation->second->setError(NEBSourceControlError::withDescription(-1, "No."));
        };
        operation->start();
        EXPECT_EQ(operation->error()->terminationStatus->exitStatus(), exitStatus) << first;
    }
}

TEST_F(PipedOperation, TheErrorOfTheSecondHalfIsKept) {
    auto operation = piped("echo 'fatal: not a valid object name: nosuch' >&2; exit 128",
                           "echo 'This does not look like a tar archive' >&2; exit 2");
    operation->second->parse = [&] {
        operation->second->setError(
            NEBSourceControlError::withDescription(-1, "The revision was not found."));
    };
    operation->start();
    EXPECT_THAT(operation->error(), IsSourceControlError(-1, "The revision was not found."));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlRevisionUnknownErrorClass));
    EXPECT_THAT(operation->messages, ElementsAre());
    EXPECT_THAT(operation->second->messages, ElementsAre());
}

TEST_F(PipedOperation, WithoutBothTheErrorTextsAreTranslatedInOrder) {
    auto both = piped("echo fatal: first >&2; exit 1", "echo second >&2; exit 2");
    both->start();
    EXPECT_THAT(both->error(), IsSourceControlError(-1, "fatal: first"));
    EXPECT_EQ(both->second->parses, 1);

    auto second = piped("echo data", "echo fatal: second >&2; exit 2");
    second->start();
    EXPECT_THAT(second->error(), IsSourceControlError(-1, "fatal: second"));
}

TEST_F(PipedOperation, AFirstHalfEndedBySIGPIPEIsNotTheCause) {
    auto operation = piped("exec yes", "echo fatal: second >&2; exit 2");
    operation->start();
    EXPECT_THAT(operation->error(), IsSourceControlError(-1, "fatal: second"));

    auto silent = piped("exec yes", "exit 2");
    silent->start();
    EXPECT_THAT(silent->error(), HasErrorClass(NEBSourceControlKilledErrorClass))
        << "it is still a failure";
}

TEST_F(PipedOperation, AHalfThatCannotBeStartedIsNamed) {
    auto first = piped("", "cat");
    first->program = "/no/such/first";
    first->start();
    EXPECT_THAT(first->error(), IsSourceControlError(-1, HasSubstr("\"/no/such/first\"")));

    auto second = piped("exec sleep 1000", "");
    second->second->program = "/no/such/second";
    second->start();
    EXPECT_THAT(second->error(), IsSourceControlError(-1, HasSubstr("\"/no/such/second\"")));
    EXPECT_THAT(second->error(), HasErrorClass(NEBSourceControlNotStartedErrorClass));
}

TEST_F(PipedOperation, ReportsThatALingeringProcessHeldTheOutputOfEitherHalf) {
    auto operation = piped("echo data", "cat; sleep 1000 & echo $!");
    operation->start();
    EXPECT_TRUE(operation->outputWasHeldOpen());
    const std::string output(*operation->second->data());
    const auto left = static_cast<pid_t>(std::stol(output.substr(output.find('\n') + 1)));
    ::kill(left, SIGKILL);
    test::waitUntilGone(left);
}

TEST_F(PipedOperation, BothChildrenAreReportedInOrder) {
    auto operation = piped("echo a", "cat; exit 4");
    auto log = std::make_shared<NEBSourceControlCommandLog>();
    operation->setCommandLog(log);
    EXPECT_THAT(operation->command()->pipeTo->arguments, ElementsAre("-c", "cat; exit 4"));
    operation->start();
    ASSERT_EQ(log->runs().size(), 2U);
    EXPECT_THAT(log->runs()[0].arguments, ElementsAre("-c", "echo a"));
    EXPECT_EQ(log->runs()[0].terminationStatus, 0);
    EXPECT_THAT(log->runs()[1].arguments, ElementsAre("-c", "cat; exit 4"));
    EXPECT_EQ(log->runs()[1].terminationStatus, 4);
}

}  // namespace
}  // namespace neb
