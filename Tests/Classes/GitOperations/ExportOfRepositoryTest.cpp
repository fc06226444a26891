// Files and trees exported from real repositories.

#include <gmock/gmock.h>
#include <sys/stat.h>

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

namespace neb {
namespace {

namespace fs = std::filesystem;
using test::ExportOfRepository;
using test::HasErrorClass;
using test::namesIn;
using test::requestFor;
using testing::HasSubstr;
using testing::IsEmpty;

std::string bytesOfFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST_F(ExportOfRepository, WritesTheFileAsItWasAtTheRevision) {
    for (const std::int32_t type :
         {NEBSourceControlRequestExportFiles, NEBSourceControlRequestExport}) {
        EXPECT_EQ(bytesOfFile(writtenPath(*exportFile("src/io/main.c", "first", {}, type))),
                  "old\n");
    }
    EXPECT_EQ(
        bytesOfFile(writtenPath(*exportFile("src/io/main.c", NEBSourceControlBASERevisionName))),
        "new\n");
    EXPECT_EQ(bytesOfFile(writtenPath(*exportFile("top.bin", "HEAD"))), binary);
}

TEST_F(ExportOfRepository, WritesToTheDestination) {
    EXPECT_EQ(writtenPath(*exportFile("src/io/main.c", "first", NEBValue(out("main.c")))),
              out("main.c"));
    EXPECT_EQ(bytesOfFile(out("main.c")), "old\n");
    EXPECT_EQ(writtenPath(*exportFile("src/io/main.c", "HEAD", NEBValue(out("8F3A-main.c")))),
              out("8F3A-main.c"));
    EXPECT_EQ(bytesOfFile(out("8F3A-main.c")), "new\n");
    EXPECT_EQ(bytesOfFile(out("main.c")), "old\n");
    EXPECT_THAT(temporaryNames(), IsEmpty());
    // An existing file is overwritten.
    EXPECT_EQ(writtenPath(*exportFile("src/io/main.c", "HEAD", NEBValue(out("main.c")))),
              out("main.c"));
    EXPECT_EQ(bytesOfFile(out("main.c")), "new\n");
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

TEST_F(ExportOfRepository, ExportsFilesWithAnyName) {
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
        // The host refuses a name that begins like an option, as no "--" precedes it.
        if (name[0] == '-' && name.size() > 1) {
            continue;
        }
        const std::string path = writtenPath(*exportFile("d/" + name, "HEAD"));
        EXPECT_EQ(bytesOfFile(path), "content of " + name);
        EXPECT_EQ(fs::path(path).parent_path().string().find(folder.path("tmp")), 0U);
    }
    for (const std::string& name : temporaryNames()) {
        EXPECT_THAT(name, testing::Not(HasSubstr("a1.c")));
    }
}

TEST_F(ExportOfRepository, ConcurrentExportsDoNotInterfere) {
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
        EXPECT_EQ(bytesOfFile(path), binary);
        EXPECT_EQ(std::count(paths.begin(), paths.end(), path), 1);
    }
    EXPECT_EQ(temporaryNames().size(), paths.size());
}

// ---- the whole tree ---------------------------------------------------------------------------

/// git would replace the file with a folder.
TEST_F(ExportOfRepository, TreeRemovesNoFile) {
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
    EXPECT_EQ(bytesOfFile(out("file")), "mine");
}

TEST_F(ExportOfRepository, TreeHasTheIndexWhateverTheRevision) {
    repository.write("staged", "staged\n");
    repository.git({"add", "staged"});
    folder.write("out/top.bin", "old content");
    auto request = requestFor(NEBSourceControlRequestExportTree, repository.path());
    request->startingRevision = "first";
    for (const std::string& destination : {folder.path("out"), folder.path("out/")}) {
        request->destination = destination;
        const auto operation = GitController().operationForRequest(request);
        operation->start();
        EXPECT_EQ(operation->error(), std::nullopt);
        EXPECT_EQ(operation->result(), std::nullopt);
        EXPECT_EQ(bytesOfFile(out("src/io/main.c")), "new\n")
            << "neither the revision nor the disk";
        EXPECT_EQ(bytesOfFile(out("top.bin")), binary);
        EXPECT_EQ(bytesOfFile(out("staged")), "staged\n");
    }
    EXPECT_EQ(fs::exists(out("../outsrc")), false);
}

TEST_F(ExportOfRepository, TreeIgnoresTheOutputOfAFilter) {
    repository.git({"config", "filter.talks.smudge", "cat; echo Permission denied >&2"});
    repository.write(".git/info/attributes", "top.bin filter=talks\n");
    auto request = requestFor(NEBSourceControlRequestExportTree, repository.path());
    request->startingRevision = "HEAD";
    request->destination = folder.path("out");
    const auto operation = GitController().operationForRequest(request);
    operation->start();
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(bytesOfFile(out("top.bin")), binary);
}

TEST_F(ExportOfRepository, TreeReportsAMissingWorkingCopy) {
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
