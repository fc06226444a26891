// The plug-in that nebsc loads: where it looks for it, and which files it refuses.

#include <csignal>
#include <filesystem>

#include "NEBFoundation/NEBSourceControlPlugIn.h"
#include "nebsc/CommandTest.h"
#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

struct PlugInRow {
    std::string file;
    std::string reason;
};

void expectRefusedPlugIn(const PlugInRow& row) {
    for (const char* command : {"status", "types", "--version"}) {
        const NebscOutcome outcome = runNebsc({command, "--plugin", row.file});
        EXPECT_EQ(outcome.output, "");
        EXPECT_THAT(outcome.errors, HasSubstr(row.file));
        EXPECT_THAT(outcome.errors, HasSubstr(row.reason));
        EXPECT_EQ(outcome.errors.find('\n'), outcome.errors.size() - 1);
        EXPECT_EQ(outcome.exitStatus, 2);
    }
}

TEST(ProgramPlugIn, AMissingFileIsRefused) {
    const TemporaryFolder folder;
    expectRefusedPlugIn({folder.path("none.so"), "No such file or directory"});
}

TEST(ProgramPlugIn, ATextFileIsRefused) {
    const TemporaryFolder folder;
    expectRefusedPlugIn({folder.write("text.so", "I am no library.\n"), "is not a plug-in"});
}

TEST(ProgramPlugIn, AFolderIsRefused) {
    const TemporaryFolder folder;
    expectRefusedPlugIn({folder.path(), "is not a file"});
}

TEST(ProgramPlugIn, ALibraryThatIsNoPlugInIsRefused) {
    expectRefusedPlugIn({NEB_BUILD_FOLDER "/lib/libNEBFoundation.so",
                         "does not export NEBSourceControlDescribePlugIn"});
}

TEST(ProgramPlugIn, AnotherContractVersionIsRefused) {
    expectRefusedPlugIn(
        {NEB_TEST_MODULES "/OtherContract.so", "its contract version is 1000, that of the host"});
}

TEST(ProgramPlugIn, AMissingPrincipalClassIsRefused) {
    expectRefusedPlugIn({NEB_TEST_MODULES "/NoPrincipalClass.so", "has no principal class"});
}

NebscOutcome runThrowing(const char* entryPoint) {
    return runNebsc({"--plugin", NEB_TEST_MODULES "/Throwing.so", "request"},
                    {.input = R"({"type": 4})", .variables = {{"THROWS_FROM", entryPoint}}});
}

TEST(ProgramPlugIn, AnExceptionIsTheErrorOfTheRequest) {
    for (const char* entryPoint : {"makePrincipalClass", "validateRequest", "operationForRequest",
                                   "className", "command", "start", "main"}) {
        const NebscOutcome outcome = runThrowing(entryPoint);
        EXPECT_EQ(outcome.exitStatus, 1) << entryPoint;
        const auto error = outcome.json()["error"];
        ASSERT_TRUE(error.is_object()) << entryPoint;
        EXPECT_EQ(error["class"], "unknown") << entryPoint;
        EXPECT_EQ(error["userInfo"]["NEBLocalizedDescriptionKey"],
                  "An exception of type \"int\" was thrown unexpectedly.")
            << entryPoint;
        EXPECT_EQ(outcome.json()["result"], nullptr) << entryPoint;
    }
    EXPECT_EQ(runThrowing("authenticationRequiredForRequest").json()["authenticationRequired"],
              true);
    EXPECT_EQ(runThrowing("nothing").exitStatus, 0);
}

TEST(ProgramPlugIn, AnExceptionDuringCancelDoesNotStopTheEnd) {
    EXPECT_EQ(runThrowing("cancel by a signal").exitStatus, 128 + SIGTERM);
}

TEST(ProgramPlugIn, TheOptionIsAcceptedBeforeAndAfterTheCommand) {
    const TemporaryFolder folder;
    const std::string plugIn = folder.path("other.so");
    fs::create_symlink(NEB_BUILD_FOLDER "/lib/NEBGit.so", plugIn);
    EXPECT_EQ(runNebsc({"--plugin", plugIn, "types"}).exitStatus, 0);
    EXPECT_EQ(runNebsc({"types", "--plugin=" + plugIn}).exitStatus, 0);
    EXPECT_EQ(runNebsc({"types", "--plugin", "other.so"}, {.folder = folder.path()}).exitStatus, 0);
}

/// A copy of the program with the host library. Each test puts the plug-in where it is searched.
class MovedProgram : public testing::Test {
protected:
    void SetUp() override {
        fs::create_directories(folder.path("bin"));
        fs::create_directories(folder.path("lib/nebgit"));
        fs::copy(NEB_BUILD_FOLDER "/bin/nebsc", folder.path("bin/nebsc"));
        const std::string version = NEB_PROJECT_VERSION;
        const std::string library =
            "lib/libNEBFoundation.so." + version.substr(0, version.find('.'));
        fs::copy(NEB_BUILD_FOLDER "/" + library, folder.path(library));
    }
    [[nodiscard]] NebscOutcome types() const {
        return runProgram(folder.path("bin/nebsc"), {"types"}, {});
    }

    TemporaryFolder folder;
};

TEST_F(MovedProgram, LoadsTheInstalledPlugInFirst) {
    fs::copy(NEB_BUILD_FOLDER "/lib/NEBGit.so", folder.path("lib/nebgit/NEBGit.so"));
    folder.write("lib/NEBGit.so", "not this one");
    const NebscOutcome outcome =
        runProgram(folder.path("bin/nebsc"), {"types"},
                   {.variables = {{"LD_LIBRARY_PATH", folder.path("lib")}}});
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.errors;
}

TEST_F(MovedProgram, LoadsTheBuiltPlugInNext) {
    fs::copy(NEB_BUILD_FOLDER "/lib/NEBGit.so", folder.path("lib/NEBGit.so"));
    EXPECT_EQ(types().exitStatus, 0);
    folder.write("bin/NEBGit.so", "not this one");
    EXPECT_EQ(types().exitStatus, 0);
}

TEST_F(MovedProgram, LoadsThePlugInOfItsOwnDirectoryLast) {
    fs::copy(NEB_BUILD_FOLDER "/lib/NEBGit.so", folder.path("bin/NEBGit.so"));
    const NebscOutcome outcome =
        runProgram(folder.path("bin/nebsc"), {"types"},
                   {.variables = {{"LD_LIBRARY_PATH", folder.path("lib")}}});
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.errors;
}

TEST_F(MovedProgram, NamesTheMissingFile) {
    const NebscOutcome outcome = types();
    EXPECT_EQ(outcome.errors, "nebsc: the plug-in '" + folder.path("lib/nebgit/NEBGit.so") +
                                  "' could not be read: No such file or directory\n");
    EXPECT_EQ(outcome.exitStatus, 2);
}

TEST(PlugIn, IsNotNeededForTheManualAndForCompletionScripts) {
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"manual"}, {"completion", "bash"}}) {
        std::vector<std::string> arguments{"--plugin", "/nosuch/NEBGit.so"};
        arguments.insert(arguments.end(), command.begin(), command.end());
        expectDone(runNebsc(arguments), runNebsc(command).output);
        EXPECT_THAT(runNebsc(arguments).output, testing::Not(testing::IsEmpty()));
    }
}

}  // namespace
}  // namespace neb::test
