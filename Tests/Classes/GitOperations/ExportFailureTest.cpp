// Exports from real repositories that fail or are cancelled.

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "Classes/GitOperations/ExportOfRepository.h"
#include "GitController.h"
#include "GitOperations/GitExport.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Support/Matchers.h"
#include "Support/RequestRun.h"
#include "Support/TemporaryFolder.h"

namespace neb {
namespace {

namespace fs = std::filesystem;
using test::ExportOfRepository;
using test::HasErrorClass;
using test::IsSourceControlError;
using test::namesIn;
using test::ReportCollector;
using test::requestFor;
using testing::HasSubstr;
using testing::IsEmpty;

std::string bytesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class ExportFailure : public ExportOfRepository {};

TEST_F(ExportFailure, ReportsAMissingRevisionOrFileAndLeavesNothing) {
    const auto ofRevision = exportFile("src/io/main.c", "nosuch");
    EXPECT_THAT(ofRevision->error(),
                IsSourceControlError(-1, "The revision nosuch was not found for the file \"" +
                                             repository.path("src/io/main.c") + "\"."));
    EXPECT_THAT(ofRevision->error(), HasErrorClass(NEBSourceControlRevisionUnknownErrorClass));
    EXPECT_EQ(ofRevision->result(), std::nullopt);

    const auto ofFile = exportFile("src/io/nosuch.c", "HEAD", NEBValue(out("nosuch.c")));
    EXPECT_THAT(ofFile->error(), IsSourceControlError(-1, HasSubstr("The revision HEAD was not")));
    EXPECT_THAT(ofFile->error(), HasErrorClass(NEBSourceControlPathUnknownErrorClass));

    const auto ofFolder = exportFile("nosuch/main.c", "HEAD");
    EXPECT_THAT(ofFolder->error(),
                IsSourceControlError(-1, HasSubstr("The revision HEAD was not")));
    EXPECT_THAT(exportFile(std::string(255, 'n'), "HEAD")->error(),
                IsSourceControlError(-1, HasSubstr("was not found for the file")));
    EXPECT_THAT(temporaryNames(), IsEmpty());
    EXPECT_THAT(namesIn(folder.path("out")), IsEmpty());
}

/// The entry of the archive has the name of the file then, and is extracted beside the target.
TEST_F(ExportFailure, ReportsADestinationWithAnotherName) {
    const auto operation = exportFile("src/io/main.c", "HEAD", NEBValue(out("copy.txt")));
    EXPECT_THAT(operation->error(),
                IsSourceControlError(-1, HasSubstr("The revision HEAD was not")));
    EXPECT_FALSE(fs::exists(out("copy.txt")));
    EXPECT_EQ(bytesOf(out("main.c")), "new\n");
    // An existing target counts as the result.
    folder.write("out/copy.txt", "before");
    EXPECT_EQ(writtenPath(*exportFile("src/io/main.c", "HEAD", NEBValue(out("copy.txt")))),
              out("copy.txt"));
    EXPECT_EQ(bytesOf(out("copy.txt")), "before");
}

TEST_F(ExportFailure, KeepsAnExistingTargetAsTheResult) {
    folder.write("out/main.c", "before");
    EXPECT_EQ(writtenPath(*exportFile("src/io/main.c", "nosuch", NEBValue(out("main.c")))),
              out("main.c"));
    EXPECT_EQ(bytesOf(out("main.c")), "before");
}

TEST_F(ExportFailure, ReportsAMissingFolder) {
    const auto operation = exportFile("src/io/main.c", "HEAD", NEBValue(out("nosuch/main.c")));
    EXPECT_THAT(operation->error(),
                IsSourceControlError(-1, HasSubstr("The revision HEAD was not")));
}

TEST_F(ExportFailure, ReportsAFileThatArchivesLeaveOut) {
    repository.commitFile(".gitattributes", "top.bin export-ignore\n");
    EXPECT_THAT(exportFile("top.bin", "HEAD")->error(),
                IsSourceControlError(-1, HasSubstr("The revision HEAD was not found")));
    EXPECT_THAT(temporaryNames(), IsEmpty());
}

/// The archive would contain the whole tree and overwrite files beside the target.
TEST_F(ExportFailure, RefusesAFileOutsideTheWorkingCopy) {
    const ReportCollector collector;
    folder.write("out/top.bin", "mine");
    auto request = requestFor(NEBSourceControlRequestExportFiles, repository.path());
    request->files = {NEBValue("/elsewhere/main.c")};
    request->startingRevision = "HEAD";
    for (const NEBValue& destination : {NEBValue(), NEBValue(out("main.c"))}) {
        request->destination = destination;
        const auto operation = GitController().operationForRequest(request);
        operation->start();
        EXPECT_THAT(operation->error(),
                    IsSourceControlError(-1, HasSubstr("\"/elsewhere/main.c\" was not exported")));
        EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlPathOutsideErrorClass));
    }
    request->files.reset();
    request->destination = {};
    const auto ofNothing = GitController().operationForRequest(request);
    ofNothing->start();
    EXPECT_THAT(ofNothing->error(), IsSourceControlError(-1, HasSubstr("the request has no file")));
    EXPECT_EQ(bytesOf(out("top.bin")), "mine");
    EXPECT_THAT(temporaryNames(), IsEmpty());
    EXPECT_EQ(namesIn(folder.path("out")).size(), 1U);
}

/// The rest of such a path after the location names another file.
TEST_F(ExportFailure, RefusesAFileBesideTheWorkingCopy) {
    auto request = requestFor(NEBSourceControlRequestExportFiles, repository.path());
    request->files = {NEBValue(repository.path() + "Xtop.bin")};
    request->startingRevision = "HEAD";
    request->destination = out("top.bin");
    const auto operation = GitController().operationForRequest(request);
    operation->start();
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlPathOutsideErrorClass));
    EXPECT_EQ(operation->result(), std::nullopt);
    EXPECT_FALSE(std::filesystem::exists(out("top.bin")));
}

TEST_F(ExportFailure, MakesNoTemporaryFolder) {
    const std::string missing = folder.path("missing");
    ::setenv("TMPDIR", missing.c_str(), 1);
    const std::string path = writtenPath(*exportFile("top.bin", "HEAD"));
    EXPECT_EQ(bytesOf(path), binary);
    std::filesystem::remove(path);
    EXPECT_FALSE(std::filesystem::exists(missing));
}

TEST_F(ExportFailure, ExportsAWholeFolder) {
    EXPECT_EQ(writtenPath(*exportFile("src", "first", folder.path("out/src"))),
              folder.path("out/src"));
    EXPECT_EQ(bytesOf(out("src/io/main.c")), "old\n");
}

/// tar has started to write when the export is cancelled.
TEST_F(ExportFailure, LeavesNothingAfterCancellation) {
    repository.commitFile("big", std::string(3'000'000, 'x'));
    const std::string git =
        folder.writeProgram("bin/git", "#!/bin/sh\ngit \"$@\" | head -c 2000000\ntouch '" +
                                           folder.path("half") + "'\nexec sleep 3600\n");
    auto request = requestFor(NEBSourceControlRequestExportFiles, repository.path());
    request->files = {NEBValue(repository.path("big"))};
    request->startingRevision = "HEAD";
    request->destination = out("big");
    test::StandIn<GitExportFileOperation> operation(git, request);
    std::thread running([&operation] { operation.start(); });
    while (!std::filesystem::exists(folder.path("half"))) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    operation.cancel();
    running.join();
    EXPECT_THAT(operation.error(), HasErrorClass(NEBSourceControlCancelledErrorClass));
    EXPECT_EQ(operation.result(), std::nullopt);
    EXPECT_FALSE(std::filesystem::exists(out("big")));
}

TEST_F(ExportFailure, WritesTheWholeRevisionWithoutAFile) {
    const ReportCollector collector;
    auto request = requestFor(NEBSourceControlRequestExport, repository.path());
    request->startingRevision = "first";
    request->destination = folder.path("out");
    const auto operation = GitController().operationForRequest(request);
    operation->start();
    EXPECT_EQ(writtenPath(*operation), folder.path("out"));
    EXPECT_EQ(bytesOf(out("src/io/main.c")), "old\n");
    EXPECT_EQ(bytesOf(out("top.bin")), binary);
}

/// git stops in the middle of the archive, when tar has started to write the file.
TEST_F(ExportFailure, ReportsAnIncompleteArchiveAndLeavesNothing) {
    const std::string big(3'000'000, 'x');
    repository.commitFile("big", big);
    const std::string git = folder.writeProgram(
        "bin/git",
        "#!/bin/sh\ngit \"$@\" | head -c 2000000\necho 'fatal: disk on fire' >&2\nexit 128\n");
    for (const bool hasDestination : {true, false}) {
        auto request = requestFor(NEBSourceControlRequestExportFiles, repository.path());
        request->files = {NEBValue(repository.path("big"))};
        request->startingRevision = "HEAD";
        if (hasDestination) {
            request->destination = folder.path("out/big");
        }
        test::StandIn<GitExportFileOperation> operation(git, request);
        operation.start();
        EXPECT_EQ(operation.result(), std::nullopt);
        ASSERT_TRUE(operation.error());
        EXPECT_THAT(*operation.error()->localizedDescription(), HasSubstr("disk on fire"));
        EXPECT_FALSE(std::filesystem::exists(folder.path("out/big")));
    }
    EXPECT_THAT(temporaryNames(), IsEmpty());
}

TEST_F(ExportFailure, ReportsAnIncompleteArchiveWithTheErrorTable) {
    const std::string git = folder.writeProgram(
        "bin/git", "#!/bin/sh\ngit \"$@\"\necho 'error: a: Permission denied' >&2\nexit 128\n");
    auto request = requestFor(NEBSourceControlRequestExportFiles, repository.path());
    request->files = {NEBValue(repository.path("top.bin"))};
    request->startingRevision = "HEAD";
    request->destination = folder.path("out/top.bin");
    test::StandIn<GitExportFileOperation> operation(git, request);
    operation.start();
    EXPECT_EQ(operation.result(), std::nullopt);
    EXPECT_THAT(operation.error(),
                IsSourceControlError(
                    -21, "Authentication failed because the name or password was incorrect."));
    EXPECT_THAT(operation.error(), HasErrorClass(NEBSourceControlPermissionDeniedErrorClass));
    EXPECT_EQ(operation.error()->text, "error: a: Permission denied");
}

TEST_F(ExportFailure, RunsNothingForAPathThatStandsForATree) {
    const test::TemporaryFolder there;
    there.write("main.c", "mine");
    for (const char* name : {".", "src/.", "src/io/.."}) {
        auto request = requestFor(NEBSourceControlRequestExportFiles, repository.path());
        request->files = {NEBValue(repository.path() + "/" + name)};
        request->startingRevision = "HEAD";
        request->destination = there.path("target");
        auto operation = GitController().operationForRequest(request);
        operation->start();
        EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlPathInvalidErrorClass))
            << name;
    }
    EXPECT_EQ(there.read("main.c"), "mine");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(there.path()),
                            std::filesystem::directory_iterator()),
              1);
}

TEST_F(ExportFailure, LeavesNoTemporaryFileAfterCancellation) {
    auto request = requestFor(NEBSourceControlRequestExportFiles, repository.path());
    request->files = {NEBValue(repository.path("top.bin"))};
    request->startingRevision = "HEAD";
    const auto operation = GitController().operationForRequest(request);
    std::thread running([&operation] { operation->start(); });
    operation->cancel();
    running.join();
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlCancelledErrorClass));
    EXPECT_THAT(temporaryNames(), IsEmpty());
}

TEST_F(ExportFailure, ReportsATemporaryFolderThatCannotBeCreated) {
    ::setenv("TMPDIR", repository.path("top.bin").c_str(), 1);
    const auto operation = exportFile("src/io/main.c", "HEAD");
    EXPECT_THAT(operation->error(), testing::Ne(std::nullopt));
    EXPECT_EQ(operation->result(), std::nullopt);
    repository.commitFile(std::string(255, 'n'), "x");
    EXPECT_THAT(exportFile(std::string(255, 'n'), "HEAD")->error()->localizedDescription(),
                testing::Optional(HasSubstr(repository.path("top.bin"))));
}

}  // namespace
}  // namespace neb
