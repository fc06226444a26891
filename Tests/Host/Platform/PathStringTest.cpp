#include "Platform/PathString.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace neb {
namespace {

TEST(PathString, AbsoluteMeansASlashOrATilde) {
    EXPECT_TRUE(isAbsolutePath("/a"));
    EXPECT_TRUE(isAbsolutePath("~/a"));
    EXPECT_FALSE(isAbsolutePath("a/b"));
    EXPECT_FALSE(isAbsolutePath(""));
    EXPECT_FALSE(isAbsolutePath("file:///a"));
}

TEST(PathString, AppendingPutsOneSlashBetween) {
    EXPECT_EQ(pathByAppendingComponent("/w", "b.txt"), "/w/b.txt");
    EXPECT_EQ(pathByAppendingComponent("/w/", "b.txt"), "/w/b.txt");
    EXPECT_EQ(pathByAppendingComponent("/w//", "/b.txt"), "/w/b.txt");
    EXPECT_EQ(pathByAppendingComponent("/", "b"), "/b");
    EXPECT_EQ(pathByAppendingComponent("", "b"), "b");
    EXPECT_EQ(pathByAppendingComponent("/w", "d/"), "/w/d/");
}

TEST(PathString, TheLastComponentIgnoresTrailingSlashes) {
    constexpr std::string_view path = "/a/name/";
    EXPECT_EQ(lastPathComponentIn(path).data(), path.data() + 3) << "a view into the path";
    EXPECT_EQ(lastPathComponentIn(path), "name");
    EXPECT_EQ(lastPathComponent("/a/b"), "b");
    EXPECT_EQ(lastPathComponent("/a/b//"), "b");
    EXPECT_EQ(lastPathComponent("b"), "b");
    EXPECT_EQ(lastPathComponent("/"), "/");
    EXPECT_EQ(lastPathComponent("///"), "/");
    EXPECT_EQ(lastPathComponent(""), "");
}

TEST(PathString, DeletingTheLastComponentGivesTheFolder) {
    EXPECT_EQ(pathByDeletingLastComponent("/a/b"), "/a");
    EXPECT_EQ(pathByDeletingLastComponent("/a/b//"), "/a");
    EXPECT_EQ(pathByDeletingLastComponent("/a//b"), "/a");
    EXPECT_EQ(pathByDeletingLastComponent("a/b/c"), "a/b");
    EXPECT_EQ(pathByDeletingLastComponent("/a"), "/");
    EXPECT_EQ(pathByDeletingLastComponent("/"), "/");
    EXPECT_EQ(pathByDeletingLastComponent("b"), "");
    EXPECT_EQ(pathByDeletingLastComponent("b/"), "");
    EXPECT_EQ(pathByDeletingLastComponent(""), "");
}

TEST(PathString, APathLiesWithinItselfAndItsParents) {
    EXPECT_TRUE(liesWithin("/a/b", "/a"));
    EXPECT_TRUE(liesWithin("/a", "/a"));
    EXPECT_TRUE(liesWithin("/a", "/"));
    EXPECT_FALSE(liesWithin("/ab", "/a"));
    EXPECT_FALSE(liesWithin("/a", "/a/b"));
    EXPECT_FALSE(liesWithin("/c/a", "/a"));
}

TEST(PathString, OnlyTheTildeOfTheUserIsExpanded) {
    const std::string home = std::getenv("HOME");
    EXPECT_EQ(pathByExpandingTilde("~"), home);
    EXPECT_EQ(pathByExpandingTilde("~/repo/.git"), home + "/repo/.git");
    EXPECT_EQ(pathByExpandingTilde("~other/x"), "~other/x");
    EXPECT_EQ(pathByExpandingTilde("/a/~"), "/a/~");
    EXPECT_EQ(pathByExpandingTilde(""), "");
}

TEST(PathString, WithoutHOMETheUserDatabaseIsUsed) {
    const std::string home = std::getenv("HOME");
    ::unsetenv("HOME");
    const std::string expanded = pathByExpandingTilde("~");
    ::setenv("HOME", home.c_str(), 1);
    EXPECT_EQ(expanded.front(), '/');
    EXPECT_NE(expanded, home);
}

TEST(PathString, AFileURLHasAPath) {
    EXPECT_EQ(pathOfFileURL("file:///Users/x/project"), "/Users/x/project");
    EXPECT_EQ(pathOfFileURL("FILE:///a/"), "/a");
    EXPECT_EQ(pathOfFileURL("file://localhost/a%20b/%c3%A4"), "/a b/\xC3\xA4");
    EXPECT_EQ(pathOfFileURL("file:/a"), "/a");
    EXPECT_EQ(pathOfFileURL("file:///"), "/");
    EXPECT_EQ(pathOfFileURL("file:///a?q#f"), "/a");
    EXPECT_EQ(pathOfFileURL("file:///100%/%zz%4"), "/100%/%zz%4");
}

TEST(PathString, OtherURLsHaveNoPath) {
    for (const char* url : {"https://example.org/a", "ssh://h/a", "git@h:a", "file:a", "file://",
                            "file:", "/a", "", "files:///a", "file:///a%00b"}) {
        EXPECT_EQ(pathOfFileURL(url), std::nullopt) << url;
    }
}

TEST(PathString, ALocationIsAPathOrAFileURL) {
    EXPECT_EQ(pathOfLocation("/Users/x/project"), "/Users/x/project");
    EXPECT_EQ(pathOfLocation("~/project"), "~/project");
    EXPECT_EQ(pathOfLocation("file:///a%20b"), "/a b");
    EXPECT_EQ(pathOfLocation("https://example.org/a.git"), std::nullopt);
    EXPECT_EQ(pathOfLocation("relative/path"), std::nullopt);
}

}  // namespace
}  // namespace neb
