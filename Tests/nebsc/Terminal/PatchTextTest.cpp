#include "Terminal/PatchText.h"

#include <gtest/gtest.h>

namespace neb::test {
namespace {

using nebsc::PatchText;

constexpr int noTerminal = -1;

TEST(PatchText, LeavesTheBytesUnchangedWithoutATerminal) {
    const std::string patch = "+a\x1b[31m\xff\r\nno line end";
    EXPECT_EQ(PatchText(noTerminal, false).textOf(patch), patch);
}

TEST(PatchText, ColoursLinesAsGitDoes) {
    EXPECT_EQ(PatchText(noTerminal, true)
                  .textOf("diff --git a/f b/f\n--- a/f\n+++ b/f\n@@ -1 +1 @@ main()\n-a\n+b\n c\n"),
              "\x1b[1mdiff --git a/f b/f\x1b[0m\n\x1b[1m--- a/f\x1b[0m\n\x1b[1m+++ b/f\x1b[0m\n"
              "\x1b[36m@@ -1 +1 @@\x1b[0m main()\n\x1b[31m-a\x1b[0m\n\x1b[32m+b\x1b[0m\n c\n");
}

TEST(PatchText, ColoursTheSignsOfEachSideOfAMerge) {
    EXPECT_EQ(
        PatchText(noTerminal, true)
            .textOf(
                "diff --cc f\n--- a/f\n+++ b/f\n@@@@ -1 -1 -1 +1,3 @@@@\n  -a\n + b\n+++c\n   +d"),
        "\x1b[1mdiff --cc f\x1b[0m\n\x1b[1m--- a/f\x1b[0m\n\x1b[1m+++ b/f\x1b[0m\n"
        "\x1b[36m@@@@ -1 -1 -1 +1,3 @@@@\x1b[0m\n\x1b[31m  -a\x1b[0m\n\x1b[32m + b\x1b[0m\n"
        "\x1b[32m+++c\x1b[0m\n   +d\n");
}

TEST(PatchText, DoesNotColourBinaryFiles) {
    EXPECT_EQ(
        PatchText(noTerminal, true).textOf("diff --git a/f b/f\nBinary files a/f and b/f differ\n"),
        "\x1b[1mdiff --git a/f b/f\x1b[0m\nBinary files a/f and b/f differ\n");
}

TEST(PatchText, AHeaderMayArriveInParts) {
    PatchText patch(noTerminal, true);
    EXPECT_EQ(patch.textOf("diff --git a/f b/f\n"), "\x1b[1mdiff --git a/f b/f\x1b[0m\n");
    EXPECT_EQ(patch.textOf("--- a/f\n"), "\x1b[1m--- a/f\x1b[0m\n");
    EXPECT_EQ(patch.textOf(""), "");
    EXPECT_EQ(patch.textOf("@@ -1 +0,0 @@\n"), "\x1b[36m@@ -1 +0,0 @@\x1b[0m\n");
    EXPECT_EQ(patch.textOf("-a"), "\x1b[31m-a\x1b[0m\n");
}

}  // namespace
}  // namespace neb::test
