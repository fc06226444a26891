// Folders made for work that may fail.

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
    [[nodiscard]] bool isThere(std::string_view name) const {
        return fs::exists(fs::symlink_status(top.path(name)));
    }

    test::TemporaryFolder top;
};

TEST_F(MissingFolderTest, MakesThoseOnTheWayAndTakesAllBack) {
    MissingFolder folder(top.path("a/b/c"));
    EXPECT_FALSE(folder.make());
    EXPECT_TRUE(fs::is_directory(top.path("a/b/c")));
    EXPECT_FALSE(folder.removeAgain());
    EXPECT_FALSE(isThere("a"));
    EXPECT_TRUE(fs::exists(top.path()));
}

TEST_F(MissingFolderTest, WhatWasPutIntoTheFolderGoesWithIt) {
    {
        MissingFolder folder(top.path("a/b/"));
        EXPECT_FALSE(folder.make());
        top.write("a/b/half/done", "x");
    }
    EXPECT_FALSE(isThere("a"));
}

TEST_F(MissingFolderTest, OneOnTheWayThatHoldsMoreStays) {
    {
        MissingFolder folder(top.path("a/b"));
        EXPECT_FALSE(folder.make());
        top.write("a/somebody's", "x");
        EXPECT_FALSE(folder.removeAgain());
    }
    EXPECT_FALSE(isThere("a/b"));
    EXPECT_EQ(top.read("a/somebody's"), "x");
}

TEST_F(MissingFolderTest, WhatWasThereIsNeverRemoved) {
    top.write("a/file", "x");
    fs::create_directory(top.path("empty"));
    for (const char* name : {"a", "empty", "a/file"}) {
        MissingFolder folder(top.path(name));
        EXPECT_FALSE(folder.make()) << name;
        EXPECT_FALSE(folder.removeAgain()) << name;
    }
    EXPECT_EQ(top.read("a/file"), "x");
    EXPECT_TRUE(isThere("empty"));
}

TEST_F(MissingFolderTest, KeptOnesStay) {
    {
        MissingFolder folder(top.path("a/b"));
        EXPECT_FALSE(folder.make());
        folder.keep();
    }
    EXPECT_TRUE(isThere("a/b"));
}

TEST_F(MissingFolderTest, AFailureNamesTheFolderAndTheCause) {
    top.write("file", "x");
    MissingFolder folder(top.path("new/../file/a/b"));
    const auto failure = folder.make();
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->errorNumber, ENOTDIR);
    EXPECT_EQ(failure->description,
              "The folder '" + top.path("new/../file/a") + "' could not be made: Not a directory.");
    EXPECT_FALSE(folder.removeAgain());
    EXPECT_FALSE(isThere("new"));
}

TEST_F(MissingFolderTest, AFolderThatCannotBeRemovedIsTold) {
    const test::AsOrdinaryUser user;
    const test::TemporaryFolder own;
    MissingFolder folder(own.path("a/b"));
    EXPECT_FALSE(folder.make());
    fs::permissions(own.path("a"), fs::perms::owner_read | fs::perms::owner_exec);
    const auto failure = folder.removeAgain();
    fs::permissions(own.path("a"), fs::perms::owner_all);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->description, "The folder '" + own.path("a/b") +
                                        "' could not be removed again: Permission denied.");
}

}  // namespace
}  // namespace neb::nebsc
