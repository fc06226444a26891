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

TEST(WorkingCopyLocation, TheTopIsProbablyTheNearestFolderWithARepository) {
    const test::TemporaryFolder folder;
    std::filesystem::create_directories(folder.path("a/b/.git/hooks"));
    std::filesystem::create_directories(folder.path("a/b/c/d"));
    folder.write("a/b/c/.git", "gitdir: elsewhere\n");
    EXPECT_EQ(probableTop(folder.path("a/b/c/d")), folder.path("a/b/c"));
    EXPECT_EQ(probableTop(folder.path("a/b")), folder.path("a/b"));
    EXPECT_EQ(probableTop(folder.path("a")), std::nullopt);
    EXPECT_EQ(probableTop(folder.path("a/b/.git")), std::nullopt);
    EXPECT_EQ(probableTop(folder.path("a/b/.git/hooks")), std::nullopt);
}

}  // namespace
}  // namespace neb::nebsc
