// Files and trees exported from real repositories.

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "GitController.h"
#include "GitOperations/GitExport.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Support/HygienicTest.h"
#include "Support/Matchers.h"
#include "Support/RequestRun.h"
#include "Support/TemporaryFolder.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

namespace fs = std::filesystem;
using test::HasErrorClass;
using test::IsSourceControlError;
using test::ReportCollector;
using test::requestFor;
using test::TestRepository;
using testing::HasSubstr;
using testing::IsEmpty;

std::string bytesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        names.push_back(fs::relative(entry.path(), folder).string());
    }
    return names;
}

class ExportOfRepository : public test::HygienicTest {
protected:
    ExportOfRepository() {
        fs::create_directory(folder.path("tmp"));
        fs::create_directory(folder.path("out"));
        ::setenv("TMPDIR", folder.path("tmp").c_str(), 1);
        binary = std::string("\0\1\xFF\r\n\x80", 6);
        for (int i = 0; i < 300000; ++i) {
            binary += static_cast<char>(i * 7 % 251);
        }
        repository.write("top.bin", binary);
        repository.write("src/io/main.c", "old\n");
        repository.git({"add", "."});
        repository.git({"commit", "-qm", "first"});
        repository.git({"tag", "first"});
        repository.commitFile("src/io/main.c", "new\n");
        repository.write("src/io/main.c", "not committed\n");
    }
    ~ExportOfRepository() override { ::unsetenv("TMPDIR"); }

    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> exportFile(
        const std::string& file, NEBValue revision, NEBValue destination = {},
        std::int32_t type = NEBSourceControlRequestExportFiles) const {
        auto request = requestFor(type, repository.path());
        request->files = {NEBValue(repository.path(file))};
        request->startingRevision = std::move(revision);
        request->destination = std::move(destination);
        auto operation = GitController().operationForRequest(request);
        operation->start();
        return operation;
    }
    /// The path that was written, of an export that must have succeeded.
    static std::string writtenPath(const NEBSourceControlOperation& operation) {
        EXPECT_EQ(operation.error(), std::nullopt);
        EXPECT_EQ(operation.result().value().size(), 1U);
        return operation.result()
            ->at(0)
            .value(NEBSourceControlOperationPathKey)
            .filePath()
            ->pathString();
    }
    [[nodiscard]] std::string out(std::string_view name) const {
        return folder.path(std::string("out/").append(name));
    }
    [[nodiscard]] std::vector<std::string> temporaryNames() const {
        return namesIn(folder.path("tmp"));
    }

    const test::TemporaryFolder folder;
    const TestRepository repository;
    std::string binary;
};

TEST_F(ExportOfRepository, WritesTheFileAsItWasAtTheRevision) {
    for (const std::int32_t type :
         {NEBSourceControlRequestExportFiles, NEBSourceControlRequestExport}) {
        EXPECT_EQ(bytesOf(writtenPath(*exportFile("src/io/main.c", "first", {}, type))), "old\n");
    }
    EXPECT_EQ(bytesOf(writtenPath(*exportFile("src/io/main.c", NEBSourceControlBASERevisionName))),
              "new\n");
    EXPECT_EQ(bytesOf(writtenPath(*exportFile("top.bin", "HEAD"))), binary);
}

TEST_F(ExportOfRepository, WritesToTheDestination) {
    EXPECT_EQ(writtenPath(*exportFile("src/io/main.c", "first", NEBValue(out("main.c")))),
              out("main.c"));
    EXPECT_EQ(bytesOf(out("main.c")), "old\n");
    EXPECT_EQ(writtenPath(*exportFile("src/io/main.c", "HEAD", NEBValue(out("8F3A-main.c")))),
              out("8F3A-main.c"));
    EXPECT_EQ(bytesOf(out("8F3A-main.c")), "new\n");
    EXPECT_EQ(bytesOf(out("main.c")), "old\n");
    EXPECT_THAT(temporaryNames(), IsEmpty());
    // What is there already is overwritten.
    EXPECT_EQ(writtenPath(*exportFile("src/io/main.c", "HEAD", NEBValue(out("main.c")))),
              out("main.c"));
    EXPECT_EQ(bytesOf(out("main.c")), "new\n");
}

TEST_F(ExportOfRepository, KeepsTheExecutableBitAndALink) {
    repository.write("run.sh", "#!/bin/sh\n");
    fs::permissions(repository.path("run.sh"), fs::perms::owner_exec, fs::perm_options::add);
    fs::create_symlink("nowhere", repository.path("link"));
    repository.git({"add", "."});
    repository.git({"commit", "-qm", "second"});
    const auto isExecutable = [](const std::string& path) {
        return (fs::status(path).permissions() & fs::perms::owner_exec) != fs::perms::none;
    };
    EXPECT_TRUE(isExecutable(writtenPath(*exportFile("run.sh", "HEAD"))));
    EXPECT_FALSE(isExecutable(writtenPath(*exportFile("top.bin", "HEAD"))));
    EXPECT_EQ(fs::read_symlink(writtenPath(*exportFile("link", "HEAD"))), "nowhere");
}

TEST_F(ExportOfRepository, OfAFileWithAnyNameIsOfThatFile) {
    const std::string names[] = {"A",
                                 "0F-",
                                 "-",
                                 "-x",
                                 "--prefix=y",
                                 "with blank",
                                 "a[1].c",
                                 "\xC3\xA4\n\t\"'$(x)",
                                 ":(top)magic",
                                 "!x",
                                 "back\\s",
                                 std::string(255, 'n'),
                                 std::string(239, 'm'),
                                 std::string(238, 'm')};
    for (const std::string& name : names) {
        repository.write("d/" + name, "content of " + name);
    }
    repository.write("d/a1.c", "matched by the pattern");
    repository.git({"add", "."});
    repository.git({"commit", "-qm", "names"});
    for (const std::string& name : names) {
        // A name that begins like an option is the host's to refuse: no "--" stands before it.
        if (name[0] == '-' && name.size() > 1) {
            continue;
        }
        const std::string path = writtenPath(*exportFile("d/" + name, "HEAD"));
        EXPECT_EQ(bytesOf(path), "content of " + name);
        EXPECT_EQ(fs::path(path).parent_path().string().find(folder.path("tmp")), 0U);
    }
    for (const std::string& name : temporaryNames()) {
        EXPECT_THAT(name, testing::Not(HasSubstr("a1.c")));
    }
}

TEST_F(ExportOfRepository, TwoOfOneFileAtOnceDoNotMeet) {
    std::vector<std::string> paths(8);
    std::vector<std::thread> threads;
    for (std::string& path : paths) {
        threads.emplace_back(
            [this, &path] { path = writtenPath(*exportFile("top.bin", "first")); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const std::string& path : paths) {
        EXPECT_EQ(bytesOf(path), binary);
        EXPECT_EQ(std::count(paths.begin(), paths.end(), path), 1);
    }
    EXPECT_EQ(temporaryNames().size(), paths.size());
}

// ---- what goes wrong --------------------------------------------------------------------------

TEST_F(ExportOfRepository, OfAMissingRevisionOrFileSaysSoAndLeavesNothing) {
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

/// The archive's entry goes by the file's own name then, and lands beside the target.
TEST_F(ExportOfRepository, ToADestinationWithoutTheFilesNameIsNotFound) {
    const auto operation = exportFile("src/io/main.c", "HEAD", NEBValue(out("copy.txt")));
    EXPECT_THAT(operation->error(),
                IsSourceControlError(-1, HasSubstr("The revision HEAD was not")));
    EXPECT_FALSE(fs::exists(out("copy.txt")));
    EXPECT_EQ(bytesOf(out("main.c")), "new\n");
    // Where something is at the target, that counts for the outcome.
    folder.write("out/copy.txt", "before");
    EXPECT_EQ(writtenPath(*exportFile("src/io/main.c", "HEAD", NEBValue(out("copy.txt")))),
              out("copy.txt"));
    EXPECT_EQ(bytesOf(out("copy.txt")), "before");
}

TEST_F(ExportOfRepository, OverAnExistingTargetThatFailsKeepsItAndCountsAsDone) {
    folder.write("out/main.c", "before");
    EXPECT_EQ(writtenPath(*exportFile("src/io/main.c", "nosuch", NEBValue(out("main.c")))),
              out("main.c"));
    EXPECT_EQ(bytesOf(out("main.c")), "before");
}

TEST_F(ExportOfRepository, ToAFolderThatIsNotThereSaysSo) {
    const auto operation = exportFile("src/io/main.c", "HEAD", NEBValue(out("nosuch/main.c")));
    EXPECT_THAT(operation->error(),
                IsSourceControlError(-1, HasSubstr("The revision HEAD was not")));
}

TEST_F(ExportOfRepository, OfAFileThatArchivesLeaveOutSaysSo) {
    repository.commitFile(".gitattributes", "top.bin export-ignore\n");
    EXPECT_THAT(exportFile("top.bin", "HEAD")->error(),
                IsSourceControlError(-1, HasSubstr("The revision HEAD was not found")));
    EXPECT_THAT(temporaryNames(), IsEmpty());
}

/// The archive would be the whole tree, and be unpacked over whatever lies beside the target.
TEST_F(ExportOfRepository, OfAFileOutsideTheWorkingCopyIsRefused) {
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
    EXPECT_THAT(ofNothing->error(), IsSourceControlError(-1, HasSubstr("no file was named")));
    EXPECT_EQ(bytesOf(out("top.bin")), "mine");
    EXPECT_THAT(temporaryNames(), IsEmpty());
    EXPECT_EQ(namesIn(folder.path("out")).size(), 1U);
}

/// What is left of such a path behind the location is another file's.
TEST_F(ExportOfRepository, OfAFileBesideTheWorkingCopyIsRefused) {
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

TEST_F(ExportOfRepository, MakesNoTemporaryFolder) {
    const std::string missing = folder.path("missing");
    ::setenv("TMPDIR", missing.c_str(), 1);
    const std::string path = writtenPath(*exportFile("top.bin", "HEAD"));
    EXPECT_EQ(bytesOf(path), binary);
    std::filesystem::remove(path);
    EXPECT_FALSE(std::filesystem::exists(missing));
}

TEST_F(ExportOfRepository, OfAFolderIsAllOfIt) {
    EXPECT_EQ(writtenPath(*exportFile("src", "first", folder.path("out/src"))),
              folder.path("out/src"));
    EXPECT_EQ(bytesOf(out("src/io/main.c")), "old\n");
}

/// tar has begun to write when the export is cancelled.
TEST_F(ExportOfRepository, ThatIsCancelledMidwayLeavesNothing) {
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

TEST_F(ExportOfRepository, WithADestinationAndNoFileWritesTheWholeRevisionThere) {
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

/// git stops in the middle of the archive, once tar has begun to write the file.
TEST_F(ExportOfRepository, OfHalfAnArchiveIsAnErrorAndLeavesNothing) {
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

TEST_F(ExportOfRepository, OfHalfAnArchiveHasTheErrorOfTheTable) {
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

TEST_F(ExportOfRepository, OfAPathThatStandsForATreeRunsNothing) {
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

TEST_F(ExportOfRepository, ThatIsCancelledLeavesNoTemporaryFile) {
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

TEST_F(ExportOfRepository, WhoseTemporaryFolderCannotBeMadeSaysSo) {
    ::setenv("TMPDIR", repository.path("top.bin").c_str(), 1);
    const auto operation = exportFile("src/io/main.c", "HEAD");
    EXPECT_THAT(operation->error(), testing::Ne(std::nullopt));
    EXPECT_EQ(operation->result(), std::nullopt);
    repository.commitFile(std::string(255, 'n'), "x");
    EXPECT_THAT(exportFile(std::string(255, 'n'), "HEAD")->error()->localizedDescription(),
                testing::Optional(HasSubstr(repository.path("top.bin"))));
}

// ---- the whole tree ---------------------------------------------------------------------------

/// git would put a folder in the file's place.
TEST_F(ExportOfRepository, OfTheTreeRemovesNoFileOnItsWay) {
    folder.write("out/file", "mine");
    for (const char* destination : {"file", "file/", "file/below", "file/below/deep/"}) {
        auto request = requestFor(NEBSourceControlRequestExportTree, repository.path());
        request->startingRevision = "HEAD";
        request->destination = out(destination);
        const auto operation = GitController().operationForRequest(request);
        operation->start();
        EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlDestinationExistsErrorClass))
            << destination;
    }
    EXPECT_EQ(bytesOf(out("file")), "mine");
}

TEST_F(ExportOfRepository, OfTheTreeIsOfTheIndexWhateverTheRevision) {
    repository.write("staged", "staged\n");
    repository.git({"add", "staged"});
    folder.write("out/top.bin", "in the way");
    auto request = requestFor(NEBSourceControlRequestExportTree, repository.path());
    request->startingRevision = "first";
    for (const std::string& destination : {folder.path("out"), folder.path("out/")}) {
        request->destination = destination;
        const auto operation = GitController().operationForRequest(request);
        operation->start();
        EXPECT_EQ(operation->error(), std::nullopt);
        EXPECT_EQ(operation->result(), std::nullopt);
        EXPECT_EQ(bytesOf(out("src/io/main.c")), "new\n") << "neither the revision nor the disk";
        EXPECT_EQ(bytesOf(out("top.bin")), binary);
        EXPECT_EQ(bytesOf(out("staged")), "staged\n");
    }
    EXPECT_EQ(fs::exists(out("../outsrc")), false);
}

TEST_F(ExportOfRepository, OfTheTreeIsGoodWhateverAFilterSays) {
    repository.git({"config", "filter.talks.smudge", "cat; echo Permission denied >&2"});
    repository.write(".git/info/attributes", "top.bin filter=talks\n");
    auto request = requestFor(NEBSourceControlRequestExportTree, repository.path());
    request->startingRevision = "HEAD";
    request->destination = folder.path("out");
    const auto operation = GitController().operationForRequest(request);
    operation->start();
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(bytesOf(out("top.bin")), binary);
}

TEST_F(ExportOfRepository, OfTheTreeWithoutAWorkingCopySaysSo) {
    repository.git({"config", "core.bare", "true"});
    auto request = requestFor(NEBSourceControlRequestExportTree, repository.path());
    request->destination = folder.path("out");
    request->startingRevision = "HEAD";
    const auto operation = GitController().operationForRequest(request);
    operation->start();
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlNoWorkTreeErrorClass));
    EXPECT_THAT(namesIn(folder.path("out")), IsEmpty());
}

}  // namespace
}  // namespace neb
