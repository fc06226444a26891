#include "NEBFoundation/NEBSourceControlPlugIn.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Platform/OperationQueue.h"
#include "Support/Matchers.h"
#include "Support/TemporaryFolder.h"

namespace neb {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

const std::string plugInFile = NEB_BUILD_FOLDER "/lib/NEBGit.so";

TEST(PlugIn, IsLoadedFromItsFile) {
    const NEBSourceControlPlugInLoad load = NEBSourceControlPlugIn::load(plugInFile);
    ASSERT_TRUE(load.plugIn.has_value()) << load.failure;
    EXPECT_EQ(load.plugIn->name(), "NEBGit");
    EXPECT_EQ(load.plugIn->version(), NEB_PROJECT_VERSION);

    const auto controller = load.plugIn->makePrincipalClass();
    const auto request = test::requestFor(NEBSourceControlRequestStatus, "/no/such/folder");
    EXPECT_FALSE(controller->authenticationRequiredForRequest(*request));
    EXPECT_TRUE(controller->validateRequest(*request, nullptr));
    const auto operation = controller->operationForRequest(request);
    ASSERT_NE(operation, nullptr);
    EXPECT_EQ(operation->className(), "GitStatusOperation");
    operation->start();
    EXPECT_THAT(operation->error(),
                test::IsSourceControlError(-1, HasSubstr("\"/no/such/folder\"")));
}

TEST(PlugIn, ItsOperationsOutliveThePlugInObject) {
    std::shared_ptr<NEBSourceControlOperation> operation;
    {
        const NEBSourceControlPlugInLoad load = NEBSourceControlPlugIn::load(plugInFile);
        operation = load.plugIn->makePrincipalClass()->operationForRequest(
            test::requestFor(NEBSourceControlRequestIgnore, std::nullopt));
    }
    operation->start();
    EXPECT_TRUE(operation->isFinished());
}

TEST(PlugIn, ReportsItsVersionSymbols) {
    void* library = ::dlopen(plugInFile.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << ::dlerror();
    const auto* text = static_cast<const char*>(::dlsym(library, "NEBGitVersionString"));
    const auto* number = static_cast<const double*>(::dlsym(library, "NEBGitVersionNumber"));
    ASSERT_TRUE(text != nullptr && number != nullptr);
    EXPECT_STREQ(text, "@(#)PROGRAM:NEBGit  PROJECT:NEBGit-" NEB_PROJECT_VERSION "\n");
    EXPECT_DOUBLE_EQ(*number, std::stod(NEB_PROJECT_VERSION));
    ::dlclose(library);
}

std::string failureOf(const std::string& path) {
    const NEBSourceControlPlugInLoad load = NEBSourceControlPlugIn::load(path);
    EXPECT_FALSE(load.plugIn.has_value());
    return load.failure;
}

TEST(PlugInFailure, ReportsWhatIsWrongWithTheFile) {
    const test::TemporaryFolder folder;
    EXPECT_EQ(failureOf("/no/such/NEBGit.so"),
              "The plug-in \"/no/such/NEBGit.so\" could not be read: No such file or directory.");
    const std::string text = folder.write("text.so", "no library\n");
    EXPECT_THAT(failureOf(text), StartsWith("The file \"" + text + "\" is not a plug-in: "));
    EXPECT_EQ(failureOf(folder.path()), "The plug-in \"" + folder.path() + "\" is not a file.");
    ASSERT_EQ(::mkfifo(folder.path("pipe.so").c_str(), 0600), 0);
    EXPECT_EQ(failureOf(folder.path("pipe.so")),
              "The plug-in \"" + folder.path("pipe.so") + "\" is not a file.")
        << "opening the pipe must not block";
    const std::string library = NEB_TEST_MODULES "/NoPlugIn.so";
    EXPECT_EQ(failureOf(library),
              "The file \"" + library +
                  "\" is not a source-control plug-in, or was built for version 6 of the host "
                  "contract or an older one: it has no stamp of its binary interface.");
    const std::string noFunction = NEB_TEST_MODULES "/NoFunction.so";
    EXPECT_EQ(failureOf(noFunction), "The file \"" + noFunction +
                                         "\" is not a source-control plug-in: it does not export "
                                         "NEBSourceControlDescribePlugIn.");
    const std::string silent = NEB_TEST_MODULES "/NoDescription.so";
    EXPECT_EQ(failureOf(silent), "The plug-in \"" + silent + "\" does not describe itself.");
    const std::string halfSilent = NEB_TEST_MODULES "/HalfADescription.so";
    EXPECT_EQ(failureOf(halfSilent),
              "The plug-in \"" + halfSilent +
                  "\" describes itself without a name, a version, a program or a principal class.");
    const std::string other = NEB_TEST_MODULES "/OtherVersionInDescription.so";
    EXPECT_EQ(failureOf(other), "The plug-in \"" + other +
                                    "\" describes itself for version 1000 of the host contract; "
                                    "expected version " +
                                    std::to_string(NEBSourceControlContractVersion) + ".");
}

TEST(PlugInFailure, ANameWithoutSlashIsAFileInTheCurrentFolder) {
    const auto here = std::filesystem::current_path();
    std::filesystem::current_path(NEB_TEST_MODULES);
    const std::string failure = failureOf("OtherContract.so");
    std::filesystem::current_path(here);
    EXPECT_THAT(failure, HasSubstr("contract version is 1000"));
}

// ---- a plug-in that throws ---------------------------------------------------------------------

constexpr std::string_view unexpected = "An exception of type \"int\" was thrown unexpectedly.";

/// Has the plug-in throw an int from an entry point.
class ThrowingPlugIn : public testing::Test {
protected:
    void TearDown() override { ::unsetenv("THROWS_FROM"); }
    static NEBSourceControlPlugInLoad load(const char* entryPoint) {
        ::setenv("THROWS_FROM", entryPoint, 1);
        return NEBSourceControlPlugIn::load(NEB_TEST_MODULES "/Throwing.so");
    }
    static std::unique_ptr<NEBSourceControlProtocol> controller(const char* entryPoint) {
        return load(entryPoint).plugIn->makePrincipalClass();
    }

    std::shared_ptr<NEBSourceControlRequest> request =
        test::requestFor(NEBSourceControlRequestIgnore, std::nullopt);
};

TEST_F(ThrowingPlugIn, IsNotLoadedIfItsDescriptionThrows) {
    const NEBSourceControlPlugInLoad failed = load("describe");
    EXPECT_FALSE(failed.plugIn.has_value());
    EXPECT_EQ(failed.failure, "The plug-in \"" NEB_TEST_MODULES
                              "/Throwing.so\" could not describe itself. " +
                                  std::string(unexpected));
}

TEST_F(ThrowingPlugIn, RefusesEveryRequestIfItsPrincipalClassCannotBeCreated) {
    const auto principal = controller("makePrincipalClass");
    ASSERT_NE(principal, nullptr);
    std::optional<NEBSourceControlError> error;
    EXPECT_FALSE(principal->validateRequest(*request, &error));
    EXPECT_THAT(error, test::IsSourceControlError(-1, unexpected));
    EXPECT_THAT(error, test::HasErrorClass(NEBSourceControlUnknownErrorClass));
    EXPECT_FALSE(principal->validateRequest(*request, nullptr));
    EXPECT_TRUE(principal->authenticationRequiredForRequest(*request));
    const auto operation = principal->operationForRequest(request);
    ASSERT_NE(operation, nullptr);
    operation->start();
    EXPECT_THAT(operation->error(), test::IsSourceControlError(-1, unexpected));
}

TEST_F(ThrowingPlugIn, NeedsCredentialsIfThatIsUnknown) {
    EXPECT_TRUE(
        controller("authenticationRequiredForRequest")->authenticationRequiredForRequest(*request));
    EXPECT_FALSE(controller("")->authenticationRequiredForRequest(*request));
}

TEST_F(ThrowingPlugIn, RefusesTheRequestIfItsValidationThrows) {
    const auto principal = controller("validateRequest");
    std::optional<NEBSourceControlError> error;
    EXPECT_FALSE(principal->validateRequest(*request, &error));
    EXPECT_THAT(error, test::IsSourceControlError(-1, unexpected));
    EXPECT_FALSE(principal->validateRequest(*request, nullptr));
}

TEST_F(ThrowingPlugIn, ReturnsAnOperationThatFailsIfItCannotCreateOne) {
    const auto operation = controller("operationForRequest")->operationForRequest(request);
    ASSERT_NE(operation, nullptr);
    EXPECT_EQ(operation->request(), request);
    operation->start();
    EXPECT_TRUE(operation->isFinished());
    EXPECT_THAT(operation->error(), test::IsSourceControlError(-1, unexpected));
    EXPECT_EQ(operation->result(), std::nullopt);
}

TEST_F(ThrowingPlugIn, HasAnErrorIfItsOperationThrows) {
    const auto operation = controller("main")->operationForRequest(request);
    ASSERT_NE(operation, nullptr);
    operation->start();
    EXPECT_TRUE(operation->isFinished());
    EXPECT_THAT(operation->error(), test::IsSourceControlError(-1, unexpected));
    EXPECT_EQ(operation->result(), std::nullopt) << "it may be half of one";
}

TEST_F(ThrowingPlugIn, DoesNotEndTheThreadsOfAQueueWithAnException) {
    for (const char* entryPoint : {"start", "cancel"}) {
        const auto operation = controller(entryPoint)->operationForRequest(request);
        OperationQueue queue(1);
        queue.addOperation(operation);
        queue.cancelAllOperations();
        bool ranAfterIt = false;
        queue.addBlock([&ranAfterIt] { ranAfterIt = true; });
        queue.waitUntilAllOperationsAreFinished();
        EXPECT_TRUE(ranAfterIt) << entryPoint;
    }
}

}  // namespace
}  // namespace neb
