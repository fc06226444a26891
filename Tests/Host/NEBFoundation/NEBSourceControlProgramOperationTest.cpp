#include "NEBFoundation/NEBSourceControlProgramOperation.h"

#include <gmock/gmock.h>

#include "LOMFoundation/LOMDeveloperPaths.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Support/TemporaryFolder.h"

namespace neb::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::string_view variables[] = {"FROM_PLUG_IN=1", "LANGUAGE=de"};
constexpr NEBSourceControlProgramMessage messages[] = {
    {"no tea", "tea-missing", "There is no tea.", "Buy some.", 7},
    {"tea", "tea-unknown", "The tea is unknown.", "Look for it."},
};

/// Runs a script of the shell; its output is one record.
class ShellProgram final : public NEBSourceControlProgramOperation {
public:
    ShellProgram(std::shared_ptr<NEBSourceControlRequest> request, const std::string& script,
                 std::string_view program = "sh")
        : NEBSourceControlProgramOperation(
              std::move(request), {.name = program, .variables = variables, .messages = messages}) {
        setArguments({"-c", script});
    }
    void setInputText(const char* text) { setInput(Data(text)); }

protected:
    void readOutput(const Data& output) override {
        setResult({{{{NEBSourceControlOperationContentKey, *_nebsc_stringFromData(output)}}}});
    }
};

class ProgramOperation : public testing::Test {
protected:
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> newRequest() const {
        auto tree = std::make_shared<NEBSourceControlWorkingTree>();
        tree->location = folder.path();
        return NEBSourceControlRequest::initWithType(NEBSourceControlRequestInfo, std::move(tree));
    }
    [[nodiscard]] NEBSourceControlError errorOf(const std::string& script) const {
        ShellProgram operation(newRequest(), script);
        operation.start();
        return operation.error().value_or(NEBSourceControlError());
    }
    [[nodiscard]] std::string outputOf(ShellProgram& operation) const {
        operation.start();
        EXPECT_FALSE(operation.error());
        return operation.result() ? std::string(operation.result()->front().text(
                                        NEBSourceControlOperationContentKey))
                                  : "";
    }

    TemporaryFolder folder;
};

TEST_F(ProgramOperation, RunsInTheFolderOfTheSourceTree) {
    ShellProgram operation(newRequest(), "pwd; echo 'no tea' >&2");
    EXPECT_EQ(outputOf(operation), folder.path()) << "exit status 0 is success";
}

TEST_F(ProgramOperation, VariablesOfTheHostReplaceThoseOfThePlugIn) {
    const std::string script = "echo $LC_ALL/$LANGUAGE/$FROM_PLUG_IN/$GIT_PAGER";
    ShellProgram operation(newRequest(), script);
    EXPECT_EQ(outputOf(operation), "C.UTF-8/de/1/");
    ShellProgram other(newRequest(), script);
    other.setChildVariables({"FROM_PLUG_IN=2"});
    EXPECT_EQ(outputOf(other), "C.UTF-8/de/2/");
}

TEST_F(ProgramOperation, InputIsPassedOn) {
    ShellProgram operation(newRequest(), "cat");
    operation.setInputText("text");
    EXPECT_EQ(outputOf(operation), "text");
}

TEST_F(ProgramOperation, TheFirstRowOfStandardErrorDecides) {
    const NEBSourceControlError error = errorOf("echo tea; echo 'no tea' >&2; exit 3");
    EXPECT_EQ(error.errorClass, "tea-missing");
    EXPECT_EQ(error.code, 7);
    EXPECT_EQ(error.localizedDescription(), "There is no tea.");
    EXPECT_EQ(error.localizedRecoverySuggestion(), "Buy some.");
    EXPECT_EQ(error.text, "no tea");
    EXPECT_EQ(error.terminationStatus->exitStatus(), 3);
    EXPECT_EQ(errorOf("echo tea; echo milk >&2; exit 1").errorClass, "tea-unknown");
    EXPECT_EQ(errorOf("echo tea; exit 9").errorClass, "tea-unknown");
}

TEST_F(ProgramOperation, AMessageOfGitHasNoMeaning) {
    const NEBSourceControlError error =
        errorOf("echo 'fatal: not a git repository' >&2; echo 'hint: x' >&2; exit 128");
    EXPECT_EQ(error.errorClass, "unknown");
    EXPECT_THAT(error.localizedDescription().value_or(""), HasSubstr("not a git repository"));
    EXPECT_EQ(error.localizedRecoverySuggestion(), std::nullopt);
    EXPECT_THAT(error.hints, ElementsAre());
}

TEST_F(ProgramOperation, ASilentFailureIsAnError) {
    const NEBSourceControlError error = errorOf("exit 4");
    EXPECT_EQ(error.errorClass, "unknown");
    EXPECT_EQ(error.localizedDescription(), "sh exited with status 4 and printed nothing.");
}

TEST_F(ProgramOperation, AMissingProgramIsNamed) {
    ShellProgram operation(newRequest(), "", "no-such-program");
    operation.start();
    EXPECT_EQ(operation.error()->errorClass, "not-started");
    EXPECT_EQ(operation.error()->localizedRecoverySuggestion(),
              "Check that no-such-program is installed and on the PATH, and that the folder "
              "exists.");
    EXPECT_EQ(operation.command()->launchPath, "/usr/bin/no-such-program");
}

TEST_F(ProgramOperation, AnOperationThatIsCancelledBeforeStartsNothing) {
    ShellProgram operation(newRequest(), "touch started");
    operation.cancel();
    operation.start();
    EXPECT_EQ(operation.error()->errorClass, "cancelled");
    EXPECT_EQ(folder.read("started"), "");
    EXPECT_FALSE(operation.result());
}

TEST_F(ProgramOperation, ARepositoryThatIsOnlyInspectedIsRefused) {
    const auto request = newRequest();
    request->sourceTree->trust = NEBSourceControlTrust::inspect;
    ShellProgram operation(request, "touch started");
    operation.start();
    EXPECT_EQ(operation.error()->errorClass, "not-trusted");
    EXPECT_EQ(folder.read("started"), "");
}

TEST_F(ProgramOperation, ASinkGetsTheRecords) {
    ShellProgram operation(newRequest(), "echo text");
    std::size_t count = 0;
    operation.setRecordSink(
        [&count](const NEBSourceControlResult& records) { count += records.size(); });
    operation.start();
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(operation.deliveredRecordCount(), 1U);
    EXPECT_TRUE(operation.result()->empty());
}

TEST(PathOfProgram, IsTheFirstInPATHElseBelowUsr) {
    EXPECT_THAT(LOMPathOfProgram("sh"), testing::EndsWith("/sh"));
    EXPECT_EQ(LOMPathOfProgram("no-such-program"), "/usr/bin/no-such-program");
}

TEST(SetText, KeepsTheBytesOfANameThatIsNotUTF8) {
    NEBDictionary record;
    NEBSourceControlSetText(record, NEBSourceControlOperationPathKey,
                            NEBSourceControlOperationPathBytesKey, "n\xff");
    EXPECT_EQ(record.text(NEBSourceControlOperationPathKey), "n\uFFFD");
    EXPECT_EQ(record.value(NEBSourceControlOperationPathBytesKey).bytes()->bytes(), "n\xff");
    NEBSourceControlSetText(record, NEBSourceControlOperationNameKey,
                            NEBSourceControlOperationNameBytesKey, "n\n");
    EXPECT_EQ(record.text(NEBSourceControlOperationNameKey), "n\n");
    EXPECT_FALSE(record.value(NEBSourceControlOperationNameBytesKey).isPresent());
}

}  // namespace
}  // namespace neb::test
