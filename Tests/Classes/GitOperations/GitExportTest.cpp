#include "GitOperations/GitExport.h"

#include <gmock/gmock.h>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Support/Matchers.h"
#include "Support/TemporaryFolder.h"

namespace neb {
namespace {

using test::IsSourceControlError;
using test::ReportCollector;
using test::requestFor;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

std::shared_ptr<NEBSourceControlRequest> exportRequest(std::string file, NEBValue destination = {},
                                                       NEBValue revision = "abc") {
    auto request = requestFor(NEBSourceControlRequestExportFiles, "/w");
    request->files = {NEBValue(std::move(file))};
    request->destination = std::move(destination);
    request->startingRevision = std::move(revision);
    return request;
}

std::vector<std::string> exportArguments(const std::shared_ptr<NEBSourceControlRequest>& request) {
    return GitExportFileOperation(request).arguments();
}

// ---- git's half -------------------------------------------------------------------------------

TEST(ExportCommand, NamesTheTreeOfTheFolderAndTheFile) {
    EXPECT_THAT(exportArguments(exportRequest("/w/src/io/main.c", "/out/main.c")),
                ElementsAre("archive", "abc:src/io", "main.c"));
    EXPECT_THAT(exportArguments(exportRequest("/w/main.c", "/out/main.c")),
                ElementsAre("archive", "abc", "main.c"))
        << "at the top there is no folder to name";
    EXPECT_EQ(GitExportFileOperation(exportRequest("/w/a")).currentDirectoryPath(), "/w");
}

TEST(ExportCommand, PrefixesTheFileForTheTargetName) {
    EXPECT_THAT(exportArguments(exportRequest("/w/main.c", "/out/8F3A-main.c")),
                ElementsAre("archive", "--prefix=8F3A-", "abc", "main.c"));
    EXPECT_THAT(exportArguments(exportRequest("/w/src/main.c", "/main.c/8F3A-main.c")),
                ElementsAre("archive", "--prefix=8F3A-", "abc:src", "main.c"));
    EXPECT_THAT(exportArguments(exportRequest("/w/main.c", "/out/copy.txt")),
                ElementsAre("archive", "abc", "main.c"))
        << "the file's name does not occur";
    EXPECT_THAT(exportArguments(exportRequest("/w/main.c", "/main.c/copy.txt")),
                ElementsAre("archive", "abc", "main.c"))
        << "only the last component counts";
    // Up to the first occurrence.
    EXPECT_THAT(exportArguments(exportRequest("/w/a", "/out/banana")),
                ElementsAre("archive", "--prefix=b", "abc", "a"));
}

TEST(ExportCommand, ReadsHEADAndBASEAsHEAD) {
    for (const NEBValue& name :
         {NEBValue(NEBSourceControlHEADRevisionName), NEBValue(NEBSourceControlBASERevisionName)}) {
        EXPECT_THAT(exportArguments(exportRequest("/w/a", "/out/a", name)),
                    ElementsAre("archive", "HEAD", "a"));
        EXPECT_THAT(exportArguments(exportRequest("/w/d/a", "/out/a", name)),
                    ElementsAre("archive", "HEAD:d", "a"));
    }
    EXPECT_THAT(exportArguments(exportRequest("/w/a", "/out/a", NEBSourceControlLocalRevisionName)),
                ElementsAre("archive", "NEBSourceControlLocalRevisionName", "a"));
    EXPECT_THAT(exportArguments(exportRequest("/w/d/a", "/out/a", {})), ElementsAre("archive", "a"))
        << "without a revision its argument is missing";
}

TEST(ExportCommand, UsesTheFileUnchangedWithARepositoryPath) {
    auto request = exportRequest("src/main.c", "/out/main.c");
    request->options = NEBDictionary{{NEBSourceControlRequestOptionRepositoryPath, "/r"},
                                     {NEBSourceControlRequestOptionWorkingCopyPath, "/w"}};
    const ReportCollector collector;
    EXPECT_THAT(exportArguments(request),
                ElementsAre("--git-dir=/r", "--work-tree=/w", "archive", "abc:src", "main.c"));
    request->files = {NEBValue("/w/src/main.c")};
    EXPECT_THAT(exportArguments(request),
                ElementsAre("--git-dir=/r", "--work-tree=/w", "archive", "abc:/w/src", "main.c"));
    EXPECT_TRUE(collector.reports().empty());
}

TEST(ExportCommand, UsesATemporaryFileWithoutADestination) {
    const auto request = exportRequest("/w/src/main.c");
    const auto arguments = exportArguments(request);
    const LOMFilePath* target = request->option(NEBSourceControlOperationPathKey).filePath();
    ASSERT_NE(target, nullptr);
    EXPECT_THAT(target->lastPathComponent(), MatchesRegex("[0-9A-F]{16}-main\\.c"));
    EXPECT_THAT(arguments,
                ElementsAre("archive", "--prefix=" + target->lastPathComponent().substr(0, 17),
                            "abc:src", "main.c"));
}

TEST(ExportCommand, StoresTheTargetInACopyOfTheOptions) {
    auto request = exportRequest("/w/a", "/out/a");
    const GitExportFileOperation withoutOptions(request);
    EXPECT_EQ(request->options->size(), 1U);
    EXPECT_EQ(request->option(NEBSourceControlOperationPathKey),
              NEBValue(LOMFilePath::filePathForPathString("/out/a")));
    request->options = NEBDictionary{{NEBSourceControlRequestOptionBranch, "main"},
                                     {NEBSourceControlOperationPathKey, "before"}};
    const GitExportFileOperation withOptions(request);
    EXPECT_EQ(request->options->size(), 2U);
    EXPECT_EQ(request->option(NEBSourceControlRequestOptionBranch), NEBValue("main"));
    EXPECT_EQ(request->option(NEBSourceControlOperationPathKey),
              NEBValue(LOMFilePath::filePathForPathString("/out/a")));
}

struct InvalidPath {
    const char* name;
    NEBValue file;
    std::optional<std::string> location;
    std::vector<std::string> arguments;
};

class ExportOfInvalidPath : public testing::TestWithParam<InvalidPath> {};

TEST_P(ExportOfInvalidPath, IsReportedAndConstructionContinues) {
    auto request = requestFor(NEBSourceControlRequestExportFiles, GetParam().location);
    request->files = {GetParam().file};
    request->destination = "/out/a";
    request->startingRevision = "abc";
    const ReportCollector collector;
    EXPECT_EQ(exportArguments(request), GetParam().arguments);
    ASSERT_EQ(collector.reports().size(), 1U);
    const LOMAssertionReport& report = collector.reports().front();
    EXPECT_EQ(report.message,
              "Attempt to show a file from an invalid path: " + GetParam().file.description());
    EXPECT_EQ(report.condition, "[relativePathString length] != 0");
    EXPECT_EQ(report.function, "-[GitExportFileOperation initWithRequest:]");
    EXPECT_EQ(report.file, "Classes/GitOperations");
    EXPECT_EQ(report.line, 48);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, ExportOfInvalidPath,
    testing::Values(InvalidPath{"Outside", "/elsewhere/a", "/w", {"archive", "abc"}},
                    InvalidPath{"TheLocationItself", "/w", "/w", {"archive", "abc"}},
                    InvalidPath{"NoLocation", "/w/a", std::nullopt, {"archive", "abc"}},
                    InvalidPath{"NoFile", {}, "/w", {"archive", "abc"}},
                    // An empty path is one path argument.
                    InvalidPath{"OneCharacterMore", "/w/", "/w", {"archive", "abc", ""}}),
    [](const auto& parameter) { return parameter.param.name; });

/// The character after the location is removed, whatever it is.
TEST(ExportCommand, RemovesTheLocationAndOneCharacter) {
    EXPECT_THAT(exportArguments(exportRequest("/wide/a", "/out/a")),
                ElementsAre("archive", "abc:de", "a"));
    EXPECT_THAT(exportArguments(exportRequest("/w\xC3\xA4/a", "/out/a")),
                ElementsAre("archive", "abc:/", "a"));
    auto request = exportRequest("file:///w/d/a", "/out/a");
    request->sourceTree->location = "file:///w";
    EXPECT_THAT(exportArguments(request), ElementsAre("archive", "abc:d", "a"));
}

TEST(ExportCommand, KeepsTheFirstByteOfANameThatIsNotUTF8) {
    EXPECT_THAT(exportArguments(exportRequest("/w/\x80-x", "/out/a")),
                ElementsAre("archive", "abc", "\x80-x"))
        << "or git would read an option";
}

TEST(ExportCommand, IgnoresATrailingSlashOfTheLocation) {
    auto request = exportRequest("/w/d/a", "/out/a");
    request->sourceTree->location = "/w/";
    EXPECT_THAT(exportArguments(request), ElementsAre("archive", "abc:d", "a"));
}

/// An empty list of files counts as none: the destination is the folder for the whole revision.
TEST(ExportTar, ExtractsIntoTheDestinationForAnEmptyListOfFiles) {
    auto request = exportRequest("/w/a", "/out/folder");
    request->files->clear();
    const ReportCollector collector;
    EXPECT_THAT(GitTarOperation(request).arguments(), ElementsAre("-C", "/out/folder", "-xf", "-"));
}

// ---- tar's half -------------------------------------------------------------------------------

TEST(ExportTar, IsTheSameObjectEachTime) {
    const auto request = exportRequest("/w/a", "/out/a");
    GitExportFileOperation operation(request);
    const auto tar = operation.pipeToOperation();
    EXPECT_EQ(tar->className(), "GitTarOperation");
    EXPECT_EQ(tar->request(), request);
    EXPECT_EQ(tar->launchPath(), "/usr/bin/tar");
    EXPECT_EQ(tar->currentDirectoryPath(), std::nullopt);
    EXPECT_EQ(operation.pipeToOperation(), tar);
}

TEST(ExportTar, ExtractsIntoTheTargetsFolder) {
    const auto argumentsFor = [](const std::shared_ptr<NEBSourceControlRequest>& request) {
        return GitExportFileOperation(request).pipeToOperation()->arguments();
    };
    EXPECT_THAT(argumentsFor(exportRequest("/w/a", "/out/x/a")),
                ElementsAre("-C", "/out/x", "-xf", "-"));
    EXPECT_THAT(argumentsFor(exportRequest("/w/a", "/a")), ElementsAre("-C", "/", "-xf", "-"));
    EXPECT_THAT(argumentsFor(exportRequest("/w/a", "x/a")), ElementsAre("-C", "x", "-xf", "-"));
    EXPECT_THAT(argumentsFor(exportRequest("/w/a", "a")), ElementsAre("-C", ".", "-xf", "-"));
    auto request = exportRequest("/w/a", "/out/folder");
    request->files.reset();
    const ReportCollector collector;
    EXPECT_THAT(argumentsFor(request), ElementsAre("-C", "/out/folder", "-xf", "-"))
        << "without files the destination is the folder itself";
    EXPECT_THAT(GitTarOperation(request).arguments(), ElementsAre("-C", "/out/folder", "-xf", "-"));
}

TEST(ExportTar, ReportsAMissingTarget) {
    const ReportCollector collector;
    EXPECT_THAT(GitTarOperation(exportRequest("/w/a", "/out/a")).arguments(), ElementsAre("-C"));
    ASSERT_EQ(collector.reports().size(), 1U);
    const LOMAssertionReport& report = collector.reports().front();
    EXPECT_EQ(report.message, "(chDir) should not be nil.");
    EXPECT_EQ(report.condition, "((chDir)) != nil");
    EXPECT_EQ(report.function, "-[GitTarOperation initWithRequest:]");
    EXPECT_EQ(report.line, 112);
    EXPECT_EQ(report.file, "Classes/GitOperations");
}

TEST(ExportTar, HasTheTargetAsResultIfItExists) {
    const test::TemporaryFolder folder;
    const auto request = exportRequest("/w/main.c", NEBValue(folder.write("main.c", "x")));
    const GitExportFileOperation half(request);
    GitTarOperation operation(request);
    operation.parseData();
    EXPECT_EQ(operation.error(), std::nullopt);
    EXPECT_EQ(
        operation.result(),
        (NEBSourceControlResult{{{NEBSourceControlOperationPathKey,
                                  LOMFilePath::filePathForPathString(folder.path("main.c"))}}}));
}

TEST(ExportTar, ReportsARevisionThatWasNotFound) {
    const auto errorFor = [](NEBValue revision) {
        const auto request = exportRequest("/w/src/main.c", "/nosuch/main.c", std::move(revision));
        const GitExportFileOperation half(request);
        GitTarOperation operation(request);
        operation.parseData();
        EXPECT_EQ(operation.result(), std::nullopt);
        return operation.error();
    };
    EXPECT_THAT(
        errorFor("abc"),
        IsSourceControlError(-1, "The revision abc was not found for the file \"/w/src/main.c\"."));
    EXPECT_THAT(errorFor(NEBSourceControlBASERevisionName),
                IsSourceControlError(
                    -1, "The revision HEAD was not found for the file \"/w/src/main.c\"."));
}

// ---- the whole tree ---------------------------------------------------------------------------

TEST(ExportTreeCommand, WritesBelowTheDestination) {
    auto request = requestFor(NEBSourceControlRequestExportTree, "/w");
    request->destination = "/out/tree";
    request->startingRevision = "abc";
    EXPECT_THAT(GitExportTreeOperation(request).arguments(),
                ElementsAre("checkout-index", "-a", "-f", "--prefix=/out/tree/"));
    request->destination = "/out/tree/";
    EXPECT_THAT(GitExportTreeOperation(request).arguments(),
                ElementsAre("checkout-index", "-a", "-f", "--prefix=/out/tree/"));
    request->options = NEBDictionary{{NEBSourceControlRequestOptionRepositoryPath, "/r"},
                                     {NEBSourceControlRequestOptionWorkingCopyPath, "/w"}};
    EXPECT_THAT(GitExportTreeOperation(request).arguments(),
                ElementsAre("--git-dir=/r", "--work-tree=/w", "checkout-index", "-a", "-f",
                            "--prefix=/out/tree/"));
    EXPECT_EQ(GitExportTreeOperation(request).currentDirectoryPath(), "/w");
}

/// The request does not name "/" or the folder "(null)".
TEST(ExportTreeCommand, RunsNothingWithoutADestination) {
    for (const NEBValue& destination : {NEBValue(), NEBValue("")}) {
        auto request = requestFor(NEBSourceControlRequestExportTree, "/no/such/folder");
        request->destination = destination;
        GitExportTreeOperation operation(request);
        operation.setCommandLog(std::make_shared<NEBSourceControlCommandLog>());
        operation.start();
        EXPECT_THAT(operation.error(),
                    IsSourceControlError(-1, testing::HasSubstr("no destination")));
        EXPECT_THAT(operation.commandLog()->runs(), IsEmpty());
    }
}

}  // namespace
}  // namespace neb
