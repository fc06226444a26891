#include "Platform/FileManager.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <iterator>
#include <thread>

#include "Support/HygienicTest.h"
#include "Support/TemporaryFolder.h"

namespace neb {
namespace {

namespace fs = std::filesystem;
using test::AsOrdinaryUser;
using test::TemporaryFolder;

constexpr auto nothing = std::nullopt;

std::string textOf(const std::optional<FileFailure>& failure) {
    return failure ? failure->description : "(no failure)";
}

mode_t modeOf(const std::string& path) {
    struct stat information {};
    EXPECT_EQ(::lstat(path.c_str(), &information), 0) << path;
    return information.st_mode & 07777U;
}

class FileManagerTest : public test::HygienicTest {
protected:
    [[nodiscard]] std::string path(std::string_view name) const { return folder.path(name); }
    [[nodiscard]] std::optional<FileFailure> copy(std::string_view from, std::string_view to) {
        return manager.copyItem(path(from), path(to));
    }

    TemporaryFolder folder;
    FileManager manager;
};

// ---- copying ----------------------------------------------------------------------------------

TEST_F(FileManagerTest, CopiesAFileByteForByteWithItsPermissions) {
    const std::string bytes("\0a\r\n\xFF", 5);
    folder.write("a", bytes);
    fs::permissions(path("a"), fs::perms(0751));
    const mode_t mask = ::umask(077);
    EXPECT_EQ(textOf(copy("a", "b")), "(no failure)");
    ::umask(mask);
    EXPECT_EQ(folder.read("b"), bytes);
    EXPECT_EQ(modeOf(path("b")), 0751U);
}

TEST_F(FileManagerTest, CopiesALargeFile) {
    std::string bytes(3'000'001, 'x');
    for (std::size_t i = 0; i < bytes.size(); i += 997) {
        bytes[i] = static_cast<char>(i);
    }
    folder.write("a", bytes);
    EXPECT_EQ(textOf(copy("a", "b")), "(no failure)");
    EXPECT_TRUE(folder.read("b") == bytes);
}

TEST_F(FileManagerTest, DoesNotCopySetUserID) {
    folder.write("a", "x");
    ASSERT_EQ(::chmod(path("a").c_str(), 06755), 0);
    EXPECT_EQ(textOf(copy("a", "b")), "(no failure)");
    EXPECT_EQ(modeOf(path("b")), 0755U);
}

TEST_F(FileManagerTest, CopiesATreeWithLinksEmptyFoldersAndPermissions) {
    fs::create_directories(path("tree/deep/empty"));
    folder.write("tree/deep/a", "a");
    fs::permissions(path("tree/deep/a"), fs::perms(0600));
    fs::create_symlink("deep/a", path("tree/link"));
    fs::create_symlink("/nowhere/at all", path("tree/dangling"));
    fs::create_directory_symlink("deep", path("tree/folder link"));
    ASSERT_EQ(::chmod(path("tree/deep").c_str(), 02750), 0);

    EXPECT_EQ(textOf(copy("tree", "copy")), "(no failure)");
    EXPECT_EQ(folder.read("copy/deep/a"), "a");
    EXPECT_EQ(modeOf(path("copy/deep/a")), 0600U);
    EXPECT_EQ(modeOf(path("copy/deep")), 02750U);
    EXPECT_TRUE(fs::is_empty(path("copy/deep/empty")));
    EXPECT_EQ(fs::read_symlink(path("copy/link")), "deep/a");
    EXPECT_EQ(fs::read_symlink(path("copy/dangling")), "/nowhere/at all");
    EXPECT_EQ(fs::read_symlink(path("copy/folder link")), "deep");
}

TEST_F(FileManagerTest, CopiesALinkAsALinkAlsoWithATrailingSlash) {
    fs::create_directory(path("folder"));
    fs::create_directory_symlink("folder", path("link"));
    EXPECT_EQ(textOf(copy("link/", "copy/")), "(no failure)");
    EXPECT_EQ(fs::read_symlink(path("copy")), "folder");
}

TEST_F(FileManagerTest, CopiesAReadOnlyFolder) {
    const AsOrdinaryUser user;
    const TemporaryFolder own;
    fs::create_directory(own.path("tree"));
    own.write("tree/a", "a");
    fs::permissions(own.path("tree"), fs::perms(0555));
    EXPECT_EQ(textOf(manager.copyItem(own.path("tree"), own.path("copy"))), "(no failure)");
    EXPECT_EQ(own.read("copy/a"), "a");
    EXPECT_EQ(modeOf(own.path("copy")), 0555U);
    for (const char* name : {"tree", "copy"}) {
        fs::permissions(own.path(name), fs::perms(0755));
    }
}

TEST_F(FileManagerTest, NeverOverwrites) {
    folder.write("a", "a");
    folder.write("b", "b");
    fs::create_directory(path("folder"));
    fs::create_symlink("nowhere", path("dangling"));
    for (const char* there : {"b", "folder", "dangling"}) {
        const auto failure = copy("a", there);
        EXPECT_EQ(textOf(failure), "\"" + path("a") + "\" could not be copied to \"" + path(there) +
                                       "\": File exists.");
        EXPECT_EQ(failure->errorNumber, EEXIST);
    }
    EXPECT_EQ(folder.read("b"), "b");
    EXPECT_TRUE(fs::is_empty(path("folder")));
    EXPECT_FALSE(fs::exists(path("nowhere")));
    EXPECT_EQ(copy("folder", "b")->errorNumber, EEXIST);
    EXPECT_EQ(copy("a", "a")->errorNumber, EEXIST);
}

TEST_F(FileManagerTest, NamesBothPathsAndTheReason) {
    EXPECT_EQ(textOf(copy("missing", "b")), "\"" + path("missing") +
                                                "\" could not be copied to \"" + path("b") +
                                                "\": No such file or directory.");
    folder.write("a", "a");
    EXPECT_EQ(textOf(copy("a", "no folder/b")), "\"" + path("a") + "\" could not be copied to \"" +
                                                    path("no folder/b") +
                                                    "\": No such file or directory.");
    EXPECT_EQ(copy("a", "a/b")->errorNumber, ENOTDIR);
}

TEST_F(FileManagerTest, DoesNotCopyAFolderIntoItself) {
    fs::create_directories(path("tree/sub"));
    fs::create_directory_symlink("tree", path("link"));
    for (const char* inside : {"tree/copy", "tree/sub/copy", "link/copy", "tree/../tree/copy"}) {
        const auto failure = copy("tree", inside);
        ASSERT_NE(failure, nothing) << inside;
        EXPECT_EQ(failure->errorNumber, EINVAL);
        EXPECT_EQ(textOf(failure), "\"" + path("tree") + "\" could not be copied to \"" +
                                       path(inside) + "\": a folder cannot be copied into itself.");
    }
    EXPECT_EQ(textOf(copy("tree", "tree2")), "(no failure)");
    EXPECT_EQ(textOf(copy("tree/sub", "tree/sub2")), "(no failure)");
}

TEST_F(FileManagerTest, RefusesDevicesAndPipesByName) {
    fs::create_directory(path("tree"));
    folder.write("tree/a", "a");
    ASSERT_EQ(::mkfifo(path("tree/pipe").c_str(), 0600), 0);
    EXPECT_EQ(textOf(copy("tree", "copy")),
              "\"" + path("tree/pipe") +
                  "\" could not be copied: it is neither a file nor a folder nor a symbolic link.");
    EXPECT_FALSE(fs::exists(path("copy"))) << "an incomplete copy is left";
}

TEST_F(FileManagerTest, RemovesAnIncompleteCopy) {
    const AsOrdinaryUser user;
    const TemporaryFolder own;
    fs::create_directories(own.path("tree/locked"));
    own.write("tree/locked/a", "a");
    own.write("tree/secret", "s");
    fs::permissions(own.path("tree/locked"), fs::perms(0555));
    fs::permissions(own.path("tree/secret"), fs::perms::none);
    const auto failure = manager.copyItem(own.path("tree"), own.path("copy"));
    EXPECT_EQ(textOf(failure), "\"" + own.path("tree/secret") + "\" could not be copied to \"" +
                                   own.path("copy/secret") + "\": Permission denied.");
    EXPECT_FALSE(fs::exists(own.path("copy")));
    fs::permissions(own.path("tree/locked"), fs::perms(0755));
}

TEST_F(FileManagerTest, ACancelledCopyFailsAndLeavesNothing) {
    folder.write("a", std::string(1000, 'x'));
    manager.cancel();
    EXPECT_EQ(copy("a", "b")->errorNumber, ECANCELED);
    EXPECT_FALSE(fs::exists(path("b")));
}

TEST_F(FileManagerTest, CancelsARunningCopy) {
    // The file has no end, so only cancelling ends the copy.
    ASSERT_EQ(::truncate((folder.write("a", ""), path("a").c_str()), off_t{1} << 40), 0);
    const auto count = [this] {
        return std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator());
    };
    std::thread canceller([&] {
        while (count() == 1) {
            std::this_thread::yield();
        }
        EXPECT_FALSE(fs::exists(path("b"))) << "an incomplete copy is visible";
        manager.cancel();
    });
    const auto failure = copy("a", "b");
    canceller.join();
    ASSERT_NE(failure, nothing);
    EXPECT_EQ(failure->errorNumber, ECANCELED);
    EXPECT_EQ(count(), 1) << "something is left";
}

TEST_F(FileManagerTest, APathWithANULCharacterIsRefused) {
    folder.write("a", "a");
    const std::string withNUL = path("b") + std::string("\0c", 2);
    const std::string sentence = "The path \"" + path("b") + "\" holds a NUL character.";
    EXPECT_EQ(textOf(manager.copyItem(path("a"), withNUL)), sentence);
    EXPECT_EQ(textOf(manager.copyItem(withNUL, path("c"))), sentence);
    EXPECT_EQ(textOf(manager.createDirectory(withNUL)), sentence);
    EXPECT_EQ(textOf(manager.writeText(withNUL, "x")), sentence);
    EXPECT_EQ(manager.createDirectory(withNUL)->errorNumber, EINVAL);
    EXPECT_FALSE(fs::exists(path("b")));
}

TEST_F(FileManagerTest, ACopyIntoAFolderWithoutPermissionNamesTheDestination) {
    const AsOrdinaryUser user;
    const TemporaryFolder own;
    own.write("a", "a");
    fs::create_directory(own.path("locked"));
    fs::permissions(own.path("locked"), fs::perms(0555));
    const auto failure = manager.copyItem(own.path("a"), own.path("locked/b"));
    EXPECT_EQ(textOf(failure), "\"" + own.path("a") + "\" could not be copied to \"" +
                                   own.path("locked/b") + "\": Permission denied.");
}

// ---- folders ----------------------------------------------------------------------------------

TEST_F(FileManagerTest, CreatesAFolderAndItsParents) {
    EXPECT_EQ(textOf(manager.createDirectory(path("a/b/c/"))), "(no failure)");
    EXPECT_TRUE(fs::is_directory(path("a/b/c")));
    EXPECT_EQ(textOf(manager.createDirectory(path("x/../y"))), "(no failure)");
    EXPECT_TRUE(fs::is_directory(path("y")));
}

TEST_F(FileManagerTest, AcceptsAnExistingFolder) {
    fs::create_directory(path("a"));
    fs::create_directory_symlink("a", path("link"));
    for (const char* there : {"a", "a/", "link", "a/."}) {
        EXPECT_EQ(textOf(manager.createDirectory(path(there))), "(no failure)") << there;
    }
    EXPECT_EQ(textOf(manager.createDirectory("/")), "(no failure)");
}

TEST_F(FileManagerTest, NamesAFolderThatCannotBeCreatedAndTheReason) {
    folder.write("file", "x");
    fs::create_symlink("nowhere", path("dangling"));
    const auto failure = manager.createDirectory(path("file"));
    EXPECT_EQ(textOf(failure),
              "The folder \"" + path("file") + "\" could not be made: File exists.");
    EXPECT_EQ(failure->errorNumber, EEXIST);
    EXPECT_EQ(manager.createDirectory(path("file/a"))->errorNumber, ENOTDIR);
    EXPECT_NE(manager.createDirectory(path("dangling/a")), nothing);
    EXPECT_EQ(manager.createDirectory("")->errorNumber, ENOENT);
    EXPECT_EQ(folder.read("file"), "x");
}

TEST_F(FileManagerTest, ConcurrentCreationOfTheSameFoldersSucceeds) {
    for (int round = 0; round < 50; ++round) {
        const std::string deep = path(std::to_string(round) + "/a/b/c/d/e");
        std::string other;
        std::thread thread([&] { other = textOf(FileManager().createDirectory(deep)); });
        EXPECT_EQ(textOf(manager.createDirectory(deep)), "(no failure)");
        thread.join();
        EXPECT_EQ(other, "(no failure)");
    }
}

// ---- texts ------------------------------------------------------------------------------------

TEST_F(FileManagerTest, ReplacesTheTextOfAFileInPlace) {
    EXPECT_EQ(textOf(manager.writeText(path("a"), "one\ntwo")), "(no failure)");
    EXPECT_EQ(folder.read("a"), "one\ntwo");
    fs::create_hard_link(path("a"), path("same file"));
    EXPECT_EQ(textOf(manager.writeText(path("a"), "x")), "(no failure)");
    EXPECT_EQ(folder.read("same file"), "x") << "the file was not replaced in place";
}

TEST_F(FileManagerTest, FailsImmediatelyForAPipeWithoutReader) {
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(manager.writeText(path("pipe"), "x")->errorNumber, ENXIO);
}

TEST_F(FileManagerTest, NamesAFileThatCannotBeWrittenAndTheReason) {
    const auto failure = manager.writeText(path("no folder/a"), "x");
    EXPECT_EQ(textOf(failure), "The file \"" + path("no folder/a") +
                                   "\" could not be written: No such file or directory.");
    EXPECT_EQ(failure->errorNumber, ENOENT);
    if (fs::exists("/dev/full")) {
        EXPECT_EQ(manager.writeText("/dev/full", "x")->errorNumber, ENOSPC);
    }
}

}  // namespace
}  // namespace neb
