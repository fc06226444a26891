// Folders that are created for work and removed if it fails.

#include "Session/MissingFolder.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "Support/HygienicTest.h"
#include "Support/TemporaryFolder.h"

namespace neb::nebsc {
namespace {

namespace fs = std::filesystem;

class MissingFolderTest : public test::HygienicTest {
protected:
    [[nodiscard]] bool exists(std::string_view name) const {
        return fs::exists(fs::symlink_status(top.path(name)));
    }

    test::TemporaryFolder top;
};

TEST_F(MissingFolderTest, CreatesAndRemovesTheParents) {
    MissingFolder folder(top.path("a/b/c"));
    EXPECT_FALSE(folder.make());
    EXPECT_TRUE(fs::is_directory(top.path("a/b/c")));
    EXPECT_FALSE(folder.rollBack());
    EXPECT_FALSE(exists("a"));
    EXPECT_TRUE(fs::exists(top.path()));
}

TEST_F(MissingFolderTest, RemovesTheContentsOfACreatedFolder) {
    {
        MissingFolder folder(top.path("a/b/"));
        EXPECT_FALSE(folder.make());
        top.write("a/b/half/done", "x");
    }
    EXPECT_FALSE(exists("a"));
}

TEST_F(MissingFolderTest, KeepsAParentThatIsNotEmpty) {
    {
        MissingFolder folder(top.path("a/b"));
        EXPECT_FALSE(folder.make());
        top.write("a/other", "x");
        EXPECT_FALSE(folder.rollBack());
    }
    EXPECT_FALSE(exists("a/b"));
    EXPECT_EQ(top.read("a/other"), "x");
}

TEST_F(MissingFolderTest, NeverRemovesWhatExistedBefore) {
    top.write("a/file", "x");
    fs::create_directory(top.path("empty"));
    for (const char* name : {"a", "empty", "a/file"}) {
        MissingFolder folder(top.path(name));
        EXPECT_FALSE(folder.make()) << name;
        EXPECT_FALSE(folder.rollBack()) << name;
    }
    EXPECT_EQ(top.read("a/file"), "x");
    EXPECT_TRUE(exists("empty"));
}

TEST_F(MissingFolderTest, KeepsTheFoldersAfterKeep) {
    {
        MissingFolder folder(top.path("a/b"));
        EXPECT_FALSE(folder.make());
        folder.keep();
    }
    EXPECT_TRUE(exists("a/b"));
}

TEST_F(MissingFolderTest, AFailureNamesTheFolderAndTheCause) {
    top.write("file", "x");
    MissingFolder folder(top.path("new/../file/a/b"));
    const auto failure = folder.make();
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->errorNumber, ENOTDIR);
    EXPECT_EQ(failure->description,
              "The folder '" + top.path("new/../file/a") + "' could not be made: Not a directory.");
    EXPECT_FALSE(folder.rollBack());
    EXPECT_FALSE(exists("new"));
}

TEST_F(MissingFolderTest, ReportsAFolderThatCannotBeRemoved) {
    const test::AsOrdinaryUser user;
    const test::TemporaryFolder own;
    MissingFolder folder(own.path("a/b"));
    EXPECT_FALSE(folder.make());
    fs::permissions(own.path("a"), fs::perms::owner_read | fs::perms::owner_exec);
    const auto failure = folder.rollBack();
    fs::permissions(own.path("a"), fs::perms::owner_all);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->description, "The folder '" + own.path("a/b") +
                                        "' could not be removed again: Permission denied.");
}

}  // namespace
}  // namespace neb::nebsc
