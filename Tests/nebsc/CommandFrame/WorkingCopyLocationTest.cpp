// How paths are shown from the current folder.

#include "CommandFrame/WorkingCopyLocation.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "Support/TemporaryFolder.h"

namespace neb::nebsc {
namespace {

TEST(WorkingCopyLocation, PathsAreShownFromTheCurrentFolder) {
    for (const char* folder : {"/", "/w", "/w/a", "/w/a/b", "/w/ab", "/w/c d/e"}) {
        const WorkingCopyLocation workingCopy{.location = "/", .currentFolder = folder};
        EXPECT_EQ(pathAsSeen(workingCopy, "/"), "/");
        for (const char* path : {"/w", "/w/a", "/w/a/b", "/w/a/b/c", "/w/abc", "/w/ab/x", "/w/c d",
                                 "/w/c", "/x", "/w/a/b.c", "/wa"}) {
            EXPECT_EQ(pathAsSeen(workingCopy, path),
                      std::filesystem::path(path).lexically_relative(folder).string())
                << path << " from " << folder;
        }
    }
}

TEST(WorkingCopyLocation, PathsFromTheTopAndFolders) {
    const WorkingCopyLocation workingCopy{.location = "/w", .currentFolder = "/w/src"};
    EXPECT_EQ(pathAsSeen(workingCopy, "a.c"), "../a.c");
    EXPECT_EQ(pathAsSeen(workingCopy, "src/a.c"), "a.c");
    EXPECT_EQ(pathAsSeen(workingCopy, "src/lib/"), "lib/");
    EXPECT_EQ(pathAsSeen(workingCopy, "src/"), "./");
    EXPECT_EQ(pathAsSeen(workingCopy, "source/"), "../source/");
    const WorkingCopyLocation atTop{.location = "/w", .currentFolder = "/w"};
    EXPECT_EQ(pathAsSeen(atTop, "src/a.c"), "src/a.c");
    EXPECT_EQ(pathAsSeen(atTop, "src/"), "src/");
    EXPECT_EQ(pathAsSeen(atTop, "/w/src/"), "src/");
    EXPECT_EQ(pathAsSeen(atTop, "/w"), ".");
    const WorkingCopyLocation elsewhere{.location = "/w", .currentFolder = "/v"};
    EXPECT_EQ(pathAsSeen(elsewhere, "a.c"), "/w/a.c");
    EXPECT_EQ(pathAsSeen(elsewhere, "/x/b/"), "/x/b/");
}

class ProbableWorkingCopy : public testing::Test {
protected:
    /// Returns the location; absent without a repository.
    [[nodiscard]] std::optional<std::string> topAround(std::string_view current) const {
        return locationAround(current, true);
    }
    [[nodiscard]] std::optional<std::string> bareAround(std::string_view current) const {
        return locationAround(current, false);
    }
    [[nodiscard]] std::optional<std::string> locationAround(std::string_view current,
                                                            bool isWorkingCopy) const {
        const auto found = probableWorkingCopy(folder.path(current));
        return found && found->isRepository && found->isWorkingCopy == isWorkingCopy
                   ? std::optional(found->location)
                   : std::nullopt;
    }
    void makeGitDirectory(const std::string& path) const {
        std::filesystem::create_directories(folder.path(path + "/objects"));
        std::filesystem::create_directories(folder.path(path + "/refs"));
        folder.write(path + "/HEAD", "ref: refs/heads/main\n");
    }

    test::TemporaryFolder folder;
};

TEST_F(ProbableWorkingCopy, IsTheNearestFolderWithARepository) {
    makeGitDirectory("a/b/.git");
    std::filesystem::create_directories(folder.path("a/b/c/d"));
    folder.write("a/b/c/.git", "gitdir: elsewhere\n");
    EXPECT_EQ(topAround("a/b/c/d"), folder.path("a/b/c"));
    EXPECT_EQ(topAround("a/b"), folder.path("a/b"));
    EXPECT_FALSE(probableWorkingCopy(folder.path("a")));
}

TEST_F(ProbableWorkingCopy, IsNoneInAGitDirectory) {
    makeGitDirectory("a/.git");
    makeGitDirectory("a/bare.git");
    EXPECT_EQ(bareAround("a/.git"), folder.path("a/.git"));
    EXPECT_EQ(bareAround("a/.git/objects"), folder.path("a/.git/objects"));
    EXPECT_EQ(bareAround("a/bare.git"), folder.path("a/bare.git"));
    EXPECT_EQ(bareAround("a/bare.git/refs"), folder.path("a/bare.git/refs"));
    std::filesystem::remove(folder.path("a/bare.git/HEAD"));
    EXPECT_EQ(topAround("a/bare.git"), folder.path("a"));
}

}  // namespace
}  // namespace neb::nebsc
