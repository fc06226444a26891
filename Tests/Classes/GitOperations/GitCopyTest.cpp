#include "GitOperations/GitCopy.h"

#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

namespace fs = std::filesystem;
using test::AsOrdinaryUser;
using test::commandLinesOf;
using test::HasErrorClass;
using test::perform;
using test::requestFor;
using test::TestRepository;
using testing::ElementsAre;
using testing::HasSubstr;

class FileSystemWork : public test::HygienicTest {
protected:
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> request(
        std::int32_t type, const std::vector<std::string>& names,
        const std::string& destination) const {
        auto made = requestFor(type, repository.path());
        made->files.emplace();
        for (const std::string& name : names) {
            made->files->emplace_back(repository.path(name));
        }
        made->destination = repository.path(destination);
        return made;
    }
    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> copy(
        const std::vector<std::string>& names, const std::string& destination) const {
        return perform(request(NEBSourceControlRequestCopy, names, destination));
    }
    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> makeDirectory(
        const std::string& destination) const {
        return perform(request(NEBSourceControlRequestMakeDirectory, {}, destination));
    }
    [[nodiscard]] std::string tracked() const { return repository.git({"ls-files"}); }
    [[nodiscard]] bool exists(const std::string& name) const {
        return fs::exists(repository.path(name));
    }

    TestRepository repository;
};

std::string description(const NEBSourceControlOperation& operation) {
    return operation.error() ? *operation.error()->localizedDescription() : "(no error)";
}

// ---- copying ----------------------------------------------------------------------------------

TEST_F(FileSystemWork, CopiesAndStagesConcurrently) {
    repository.commitFile("a", "the content");
    const auto operation = copy({"a"}, "b");
    EXPECT_EQ(operation->className(), "GitCopyOperation");
    EXPECT_EQ(description(*operation), "(no error)");
    EXPECT_EQ(operation->result(), std::nullopt) << "the add's, which has none";
    EXPECT_EQ(repository.git({"hash-object", "b"}), repository.git({"hash-object", "a"}));
    EXPECT_THAT(commandLinesOf(*operation), ElementsAre("add -- " + repository.path("b")));
}

/// A copy has one destination, so that further files are ignored on purpose.
TEST_F(FileSystemWork, CopiesOnlyTheFirstFile) {
    repository.commitFile("a", "a");
    repository.commitFile("b", "b");
    EXPECT_EQ(description(*copy({"a", "b", "nothing"}, "c")), "(no error)");
    EXPECT_EQ(repository.git({"hash-object", "c"}), repository.git({"hash-object", "a"}));
}

TEST_F(FileSystemWork, CopiesAWholeTree) {
    repository.write("tree/deep/a", "a");
    fs::permissions(repository.path("tree/deep/a"), fs::perms(0711));
    fs::create_directory(repository.path("tree/empty"));
    fs::create_symlink("deep/a", repository.path("tree/link"));
    EXPECT_EQ(description(*copy({"tree"}, "copy")), "(no error)");
    EXPECT_EQ(fs::status(repository.path("copy/deep/a")).permissions(), fs::perms(0711));
    EXPECT_TRUE(fs::is_empty(repository.path("copy/empty")));
    EXPECT_EQ(fs::read_symlink(repository.path("copy/link")), "deep/a");
}

TEST_F(FileSystemWork, ReportsAnExistingDestinationAndStagesIt) {
    repository.commitFile("a", "a");
    repository.write("there", "kept");
    const auto operation = copy({"a"}, "there");
    ASSERT_TRUE(operation->error());
    EXPECT_EQ(operation->error()->domain, "NEBPOSIXErrorDomain");
    EXPECT_EQ(operation->error()->code, EEXIST);
    EXPECT_EQ(description(*operation), "\"" + repository.path("a") +
                                           "\" could not be copied to \"" +
                                           repository.path("there") + "\": File exists.");
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlDestinationExistsErrorClass));
    EXPECT_EQ(tracked(), "a\nthere\n");
    repository.write("expected", "kept");
    EXPECT_EQ(repository.git({"hash-object", "there"}),
              repository.git({"hash-object", "expected"}));
}

TEST_F(FileSystemWork, ReportsAMissingFileByName) {
    const auto operation = copy({"nothing"}, "b");
    EXPECT_EQ(description(*operation), "\"" + repository.path("nothing") +
                                           "\" could not be copied to \"" + repository.path("b") +
                                           "\": No such file or directory.");
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlPathUnknownErrorClass));
    auto unnamed = requestFor(NEBSourceControlRequestCopy, repository.path());
    unnamed->destination = repository.path("c");
    EXPECT_EQ(perform(unnamed)->error()->code, ENOENT);
}

TEST_F(FileSystemWork, IgnoresAFailedAdd) {
    repository.commitFile("a", "a");
    repository.write(".gitignore", "b\n");
    const auto operation = copy({"a"}, "b");
    EXPECT_EQ(description(*operation), "(no error)");
    EXPECT_TRUE(exists("b"));
    EXPECT_EQ(operation->commandLog()->runs().size(), 1U) << "the add ran";

    const test::TemporaryFolder outside;
    outside.write("x", "x");
    auto elsewhere = requestFor(NEBSourceControlRequestCopy, outside.path());
    elsewhere->files = test::valuesOf({outside.path("x")});
    elsewhere->destination = outside.path("y");
    const auto inNoRepository = perform(elsewhere);
    EXPECT_EQ(inNoRepository->error(), std::nullopt);
    EXPECT_EQ(outside.read("y"), "x");
    EXPECT_EQ(inNoRepository->commandLog()->runs()[0].terminationStatus, 128);
}

// ---- making a folder --------------------------------------------------------------------------

TEST_F(FileSystemWork, CreatesAFolderAndItsParents) {
    const auto operation = makeDirectory("one/two/three");
    EXPECT_EQ(operation->className(), "GitMakeDirectoryOperation");
    EXPECT_EQ(description(*operation), "(no error)");
    EXPECT_EQ(operation->result(), std::nullopt);
    EXPECT_TRUE(fs::is_directory(repository.path("one/two/three")));
    EXPECT_THAT(commandLinesOf(*operation),
                ElementsAre("add -- " + repository.path("one/two/three")));
    EXPECT_EQ(tracked(), "") << "git does not track an empty folder";
}

TEST_F(FileSystemWork, AcceptsAnExistingFolder) {
    repository.write("there/a", "a");
    EXPECT_EQ(description(*makeDirectory("there")), "(no error)");
    EXPECT_EQ(tracked(), "there/a\n");
}

TEST_F(FileSystemWork, ReportsAFolderThatCannotBeCreated) {
    repository.write("file", "x");
    const auto operation = makeDirectory("file/folder");
    ASSERT_TRUE(operation->error());
    EXPECT_EQ(operation->error()->domain, "NEBPOSIXErrorDomain");
    EXPECT_EQ(operation->error()->code, ENOTDIR);
    EXPECT_EQ(description(*operation), "The folder \"" + repository.path("file/folder") +
                                           "\" could not be made: Not a directory.");
    EXPECT_EQ(makeDirectory("file")->error()->code, EEXIST);
    EXPECT_EQ(
        perform(requestFor(NEBSourceControlRequestMakeDirectory, repository.path()))->error()->code,
        ENOENT)
        << "no destination";
}

TEST_F(FileSystemWork, ReportsMissingPermission) {
    const AsOrdinaryUser user;
    const auto operation = [&] {
        auto made = requestFor(NEBSourceControlRequestMakeDirectory, "/");
        made->destination = "/proc/folder";
        return perform(made);
    }();
    ASSERT_TRUE(operation->error());
    EXPECT_THAT(description(*operation), HasSubstr("\"/proc/folder\""));
}

/// Either the whole copy is staged, or nothing.
TEST_F(FileSystemWork, NeverStagesAPartialCopy) {
    repository.write("a", std::string(20'000'000, 'x'));
    fs::permissions(repository.path("a"), fs::perms(0644));
    EXPECT_EQ(description(*copy({"a"}, "b")), "(no error)");
    if (!tracked().empty()) {
        EXPECT_EQ(repository.git({"ls-files", "--stage", "b"}).substr(0, 6), "100644");
        EXPECT_EQ(repository.git({"status", "--porcelain", "b"}), "A  b\n");
    }
}

TEST_F(FileSystemWork, ResolvesARelativePathInTheSourceTree) {
    repository.commitFile("a", "a");
    auto asked = request(NEBSourceControlRequestCopy, {}, "");
    asked->files = test::valuesOf({"a"});
    asked->destination = "b";
    EXPECT_EQ(perform(asked)->error(), std::nullopt);
    EXPECT_TRUE(exists("b"));
    asked->type = NEBSourceControlRequestMakeDirectory;
    asked->destination = "folder/inside";
    EXPECT_EQ(perform(asked)->error(), std::nullopt);
    EXPECT_TRUE(exists("folder/inside"));
    asked->type = NEBSourceControlRequestAddFiles;
    asked->destination = NEBValue();
    asked->files = test::valuesOf({"folder"});
    EXPECT_THAT(commandLinesOf(*perform(asked)), ElementsAre("add -- folder/"));
}

TEST_F(FileSystemWork, StagesNothingWithoutADestination) {
    repository.write("secret", "x");
    const auto operation =
        perform(requestFor(NEBSourceControlRequestMakeDirectory, repository.path()));
    EXPECT_EQ(operation->error()->code, ENOENT);
    EXPECT_TRUE(operation->commandLog()->runs().empty());
    EXPECT_EQ(tracked(), "");
}

// ---- both -------------------------------------------------------------------------------------

TEST_F(FileSystemWork, DoesNothingAfterAnError) {
    GitMakeDirectoryOperation operation(
        request(NEBSourceControlRequestMakeDirectory, {}, "folder"));
    operation.setError(NEBSourceControlError::withDescription(-7, "before"));
    operation.start();
    EXPECT_EQ(operation.error()->code, -7);
    EXPECT_FALSE(exists("folder"));
}

TEST_F(FileSystemWork, LeavesNothingAfterCancellation) {
    // A practically endless file.
    repository.write("a", "");
    fs::resize_file(repository.path("a"), std::uintmax_t{1} << 40);
    GitCopyOperation operation(request(NEBSourceControlRequestCopy, {"a"}, "b"));
    const auto count = [this] {
        return std::distance(fs::directory_iterator(repository.path()), fs::directory_iterator());
    };
    std::thread canceller([&] {
        while (count() == 2) {
            std::this_thread::yield();
        }
        operation.cancel();
    });
    operation.start();
    canceller.join();
    EXPECT_THAT(operation.error(), HasErrorClass(NEBSourceControlCancelledErrorClass));
    EXPECT_EQ(count(), 2) << "something is left beside the file and the repository";
    EXPECT_FALSE(exists(".git/index.lock"));
    EXPECT_EQ(tracked(), "");
}

// ---- what is thrown ---------------------------------------------------------------------------

/// Throws when its description is read.
class Unreadable : public NEBObject {
public:
    [[nodiscard]] std::string descriptionForAssertionMessage() const override {
        throw std::runtime_error("no description");
    }
};

/// Works long enough for the main thread to leave.
class SlowWork : public GitFileSystemOperation {
public:
    using GitFileSystemOperation::GitFileSystemOperation;
    std::shared_ptr<std::atomic<bool>> isDone = std::make_shared<std::atomic<bool>>(false);

protected:
    std::optional<FileFailure> work(FileManager& /*manager*/) override {
        const auto done = isDone;
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        *done = true;
        return std::nullopt;
    }
};

TEST_F(FileSystemWork, FinishesIfTheAddCannotBeCreated) {
    const auto asked = request(NEBSourceControlRequestCopy, {}, "");
    asked->destination = NEBValue(std::make_shared<const Unreadable>());
    const auto operation = std::make_shared<SlowWork>(asked);
    operation->start();
    EXPECT_TRUE(*operation->isDone) << "or it works on in an operation that is gone";
    EXPECT_THAT(operation->error(), test::IsSourceControlError(-1, HasSubstr("no description")));
}

TEST_F(FileSystemWork, TurnsAnExceptionIntoAnError) {
    class Throwing : public GitFileSystemOperation {
    public:
        using GitFileSystemOperation::GitFileSystemOperation;

    protected:
        std::optional<FileFailure> work(FileManager& /*manager*/) override { throw 42; }
    };
    const auto operation =
        std::make_shared<Throwing>(request(NEBSourceControlRequestMakeDirectory, {}, "folder"));
    operation->start();
    EXPECT_THAT(operation->error(), test::IsSourceControlError(-1, HasSubstr("\"int\"")));
}

}  // namespace
}  // namespace neb
