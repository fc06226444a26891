// Errors of operations whose child process fails.

#include "NEBFoundation/NEBSourceControlTaskOperation.h"

#include <gmock/gmock.h>
#include <signal.h>

#include <cstdlib>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlErrorClasses.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Platform/OperationQueue.h"
#include "Support/HygienicTest.h"
#include "Support/Matchers.h"
#include "Support/ScriptOperation.h"
#include "Support/TemporaryFolder.h"

namespace neb {
namespace {

using test::HasErrorClass;
using test::IsSourceControlError;
using test::requestFor;
using test::script;
using test::ScriptOperation;
using testing::ElementsAre;
using testing::HasSubstr;

class TaskOperationFailure : public test::HygienicTest {};

TEST_F(TaskOperationFailure, ASuccessWithErrorTextIsNotAnError) {
    auto operation = script("echo \"Switched to branch 'topic'\" >&2");
    operation->start();
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_THAT(operation->messages, ElementsAre("Switched to branch 'topic'"));
}

TEST_F(TaskOperationFailure, AFailureIsAnErrorAlsoWithAClearedErrorText) {
    auto operation = script(
        "printf ' ! [rejected]        main -> main (fetch first)\\nerror: failed to push some refs "
        "to '\"'x'\"'\\n' >&2; exit 1");
    operation->parse = [&] {
        operation->setData(operation->errorData());
        operation->setErrorData(std::nullopt);
        operation->setResult(NEBSourceControlResult{{}});
    };
    operation->start();
    EXPECT_THAT(operation->error(),
                IsSourceControlError(-32,
                                     "The operation could not be performed because \"demo\" "
                                     "does not have the latest remote changes."));
    EXPECT_EQ(operation->error()->localizedRecoverySuggestion(),
              "Pull the remote changes and try again.");
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlRemoteAheadErrorClass));
    EXPECT_EQ(operation->result()->size(), 1U) << "beside its content";
}

TEST_F(TaskOperationFailure, OfVeryMuchErrorTextTheFirstAndLastLinesAreKept) {
    const std::string numbers = "first=1000000; last=1999999; ";
    auto operation = script(numbers + "seq $first $last >&2; echo 'fatal: no' >&2; exit 1");
    operation->start();
    const std::string text = operation->error()->text.value_or("");
    constexpr std::size_t lineSize = 8;
    const std::size_t mark = text.find("[");
    const std::size_t afterMark = text.find("]\n", mark) + 2;
    ASSERT_NE(mark, std::string::npos);
    EXPECT_TRUE(text.starts_with("1000000\n1000001\n"));
    EXPECT_TRUE(text.ends_with("\n1999999\nfatal: no\n"));
    EXPECT_EQ(text.substr(mark, afterMark - mark), "[some text is left out here]\n");
    EXPECT_EQ(text[mark - 1], '\n');
    EXPECT_EQ(text[afterMark], '1') << "the beginning of a line";
    EXPECT_EQ(text.find('\n', afterMark), afterMark + lineSize - 1);
    EXPECT_LE(text.size(), 1U << 20U);
}

TEST_F(TaskOperationFailure, AVeryLongLineIsCutBetweenCharacters) {
    auto operation = script("{ printf 'x'; yes 'ä' | head -n 1000000 | tr -d '\\n'; } >&2; exit 1");
    operation->start();
    const std::string text = operation->error()->text.value_or("");
    EXPECT_TRUE(text.starts_with("xää"));
    EXPECT_THAT(text, HasSubstr("ä\n["));
    EXPECT_THAT(text, HasSubstr("left out here]\nä"));
    EXPECT_THAT(text, testing::Not(HasSubstr("\uFFFD")));
}

TEST_F(TaskOperationFailure, OfVeryMuchOutputTheFirstAndLastLinesAreKept) {
    auto operation = script("echo 'nothing to commit'; seq 1000000 1999999; exit 1");
    operation->start();
    const std::string text = operation->error()->text.value_or("");
    EXPECT_THAT(text, HasSubstr("\n[some text is left out here]\n"));
    EXPECT_TRUE(text.ends_with("\n1999999\n"));
    EXPECT_EQ(operation->data()->size(), 8000018U) << "whole";
}

TEST_F(TaskOperationFailure, WholeBuffersAreWrittenOnRequest) {
    const auto run = [](bool writesWholeBuffers) {
        auto operation = script("printf %s \"${GIT_FLUSH-unset}\"");
        operation->setWritesWholeBuffers(writesWholeBuffers);
        operation->start();
        return operation->data();
    };
    EXPECT_EQ(run(false), "unset");
    EXPECT_EQ(run(true), "0");
}

TEST_F(TaskOperationFailure, AFailureIsAnErrorAlsoWithoutATranslation) {
    auto operation = script("echo notice >&2; exit 1");
    operation->translate = [](const std::string&) { return std::nullopt; };
    operation->start();
    EXPECT_THAT(operation->error(), IsSourceControlError(-1, "notice"));
}

TEST_F(TaskOperationFailure, AFailureThatPrintsOnlyToStandardOutputIsAnError) {
    auto operation =
        script("printf 'On branch main\\nnothing to commit, working tree clean\\n'; exit 1");
    operation->start();
    EXPECT_THAT(operation->error(), IsSourceControlError(-1, "There is nothing to commit."));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlNothingToCommitErrorClass));
    EXPECT_EQ(operation->error()->text, "On branch main\nnothing to commit, working tree clean\n");
}

TEST_F(TaskOperationFailure, StandardOutputIsUsedIfStandardErrorIsUnknown) {
    auto conflict = script(
        "echo \"Recorded preimage for 'a'\" >&2; echo 'CONFLICT (content): Merge conflict in a'; "
        "exit 1");
    conflict->start();
    EXPECT_THAT(
        conflict->error(),
        IsSourceControlError(-1, "There are conflicts that could not be resolved automatically."));
    EXPECT_THAT(conflict->error(), HasErrorClass(NEBSourceControlConflictErrorClass));
    EXPECT_EQ(conflict->error()->text,
              "Recorded preimage for 'a'\nCONFLICT (content): Merge conflict in a");

    // git 2.47 and newer, for a stash during a conflict
    auto stash = script("echo 'error: could not write index' >&2; echo 'a.c: needs merge'; exit 1");
    stash->start();
    EXPECT_THAT(stash->error(), HasErrorClass(NEBSourceControlConflictUnresolvedErrorClass));
    EXPECT_THAT(stash->error()->files, ElementsAre("a.c"));
    auto lock = script("echo 'error: could not write index' >&2; exit 1");
    lock->start();
    EXPECT_THAT(lock->error(), HasErrorClass(NEBSourceControlIOErrorClass));

    auto known = script("echo 'fatal: odd' >&2; echo 'nothing to commit'; exit 1");
    known->translate = [](const std::string& message) {
        return NEBSourceControlError::withDescription(-9, message);
    };
    known->start();
    EXPECT_THAT(known->error(), IsSourceControlError(-9, "fatal: odd"))
        << "an error of the plug-in's own stays";
    EXPECT_THAT(known->error(), HasErrorClass(NEBSourceControlNothingToCommitErrorClass));

    auto unknown = script("echo 'hook: no' >&2; echo 'some output'; exit 1");
    unknown->start();
    EXPECT_THAT(unknown->error(), IsSourceControlError(-1, "hook: no"));
    EXPECT_THAT(unknown->error(), HasErrorClass(NEBSourceControlUnknownErrorClass));

    auto success = script("echo 'nothing to commit'; echo notice >&2");
    success->start();
    EXPECT_EQ(success->error(), std::nullopt);
}

TEST_F(TaskOperationFailure, AFailureWithoutOutputHasNoError) {
    auto operation = script("exit 1");
    operation->start();
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(operation->terminationStatus()->exitStatus(), 1);
}

TEST_F(TaskOperationFailure, AFailureThatPrintsOnlySpacesIsAnErrorWithItsStatus) {
    for (const char* blank : {"echo; exit 3", "echo ' ' >&2; exit 3"}) {
        auto operation = script(blank);
        operation->start();
        EXPECT_THAT(operation->error(),
                    IsSourceControlError(-1,
                                         "The operation was not completed: \"/bin/sh\" ended "
                                         "with exit status 3."))
            << blank;
        EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlUnknownErrorClass));
    }
}

/// An operation that explains unknown failures.
class Explaining : public test::ScriptOperation {
public:
    using ScriptOperation::ScriptOperation;
    std::optional<NEBSourceControlError> errorFromUnknownFailure(
        std::optional<NEBSourceControlError> error) override {
        ++questions;
        return NEBSourceControlError::withDescription(
            -7, error ? "known: " + *error->localizedDescription() : "known silence");
    }
    int questions = 0;
};

TEST_F(TaskOperationFailure, AnOperationMayExplainAnUnknownFailure) {
    const auto run = [](std::string text) {
        auto operation = std::make_shared<Explaining>(
            std::move(text), requestFor(NEBSourceControlRequestCommit, std::nullopt));
        operation->start();
        return operation;
    };
    EXPECT_THAT(run("exit 1")->error(), IsSourceControlError(-7, "known silence"));
    const auto odd = run("echo odd words >&2; exit 1");
    EXPECT_THAT(odd->error(), IsSourceControlError(-7, "known: odd words"));
    EXPECT_EQ(odd->error()->text, "odd words");
    EXPECT_THAT(odd->error(), HasErrorClass(NEBSourceControlUnknownErrorClass));
    EXPECT_EQ(run("echo notice >&2")->questions, 0) << "no failure";
    EXPECT_EQ(run("echo 'fatal: not a git repository' >&2; exit 128")->questions, 0) << "known";
    EXPECT_EQ(run("echo hm >&2; echo 'nothing to commit'; exit 1")->questions, 0)
        << "standard output tells";
    EXPECT_EQ(run("kill -9 $$")->questions, 0) << "no exit status";
}

TEST_F(TaskOperationFailure, AFailureKeepsTheErrorOfParseData) {
    auto operation = script("echo x; exit 1");
    operation->parse = [&] {
        operation->setError(NEBSourceControlError::withDescription(-5, "ours"));
    };
    operation->start();
    EXPECT_THAT(operation->error(), IsSourceControlError(-5, "ours"));
}

TEST_F(TaskOperationFailure, ASignalIsAnErrorWithItsName) {
    auto operation = script("echo fatal: half >&2; kill -9 $$");
    operation->start();
    EXPECT_THAT(operation->error(),
                IsSourceControlError(-1,
                                     "The operation was not completed because \"/bin/sh\" was "
                                     "ended by signal 9 (Killed)."));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlKilledErrorClass));
    EXPECT_EQ(operation->error()->text, "fatal: half");
}

TEST_F(TaskOperationFailure, AProgramThatCannotBeStartedIsNamed) {
    auto operation = script("");
    operation->program = "/no/such/git";
    operation->start();
    EXPECT_THAT(operation->error(),
                IsSourceControlError(-1,
                                     "The operation could not be performed because the program "
                                     "\"/no/such/git\" could not be started: No such file or "
                                     "directory."));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlNotStartedErrorClass));
    EXPECT_EQ(operation->parses, 0);
    EXPECT_EQ(operation->data(), std::nullopt);
    EXPECT_FALSE(operation->terminationStatus()->started());
}

TEST_F(TaskOperationFailure, AnArgumentThatIsTooLongIsALimitOfTheSystem) {
    // Linux limits one argument to 128 KiB.
    auto operation = script(std::string(1U << 18U, ' '));
    operation->start();
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlSystemLimitErrorClass));
    EXPECT_FALSE(operation->terminationStatus()->started());
}

TEST_F(TaskOperationFailure, AMissingWorkingDirectoryIsNamed) {
    auto operation = script("");
    operation->setCurrentDirectoryPath("/no/such/folder");
    operation->start();
    EXPECT_THAT(operation->error(),
                IsSourceControlError(-1, HasSubstr("the folder \"/no/such/folder\" could not be "
                                                   "entered: No such file or directory")));
}

TEST_F(TaskOperationFailure, ATildeInTheFolderIsTheHomeDirectory) {
    auto operation = script("pwd");
    operation->setCurrentDirectoryPath("~");
    operation->start();
    EXPECT_EQ(operation->data(), std::string(std::getenv("HOME")) + "\n");
}

TEST_F(TaskOperationFailure, AnUnknownEndIsAnError) {
    struct sigaction ignore {};
    struct sigaction previous {};
    ignore.sa_handler = SIG_IGN;
    ::sigaction(SIGCHLD, &ignore, &previous);
    auto operation = script("echo x");
    operation->start();
    ::sigaction(SIGCHLD, &previous, nullptr);
    EXPECT_THAT(operation->error(),
                IsSourceControlError(-1, HasSubstr("Whether the operation was completed is not "
                                                   "known")));
}

TEST_F(TaskOperationFailure, ReportsThatALingeringProcessHeldItsOutput) {
    auto operation = script("sleep 1000 & echo $!");
    operation->start();
    EXPECT_TRUE(operation->outputWasHeldOpen());
    EXPECT_EQ(operation->error(), std::nullopt);
    ::kill(static_cast<pid_t>(std::stol(std::string(*operation->data()))), SIGKILL);
    test::waitUntilGone(static_cast<pid_t>(std::stol(std::string(*operation->data()))));
}

}  // namespace
}  // namespace neb
