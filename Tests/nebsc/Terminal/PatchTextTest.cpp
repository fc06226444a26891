#include "Terminal/PatchText.h"

#include <gtest/gtest.h>

namespace neb::test {
namespace {

using nebsc::patchText;

constexpr int noTerminal = -1;

TEST(PatchText, LeavesTheBytesUnchangedWithoutATerminal) {
    const std::string patch = "+a\x1b[31m\xff\r\nno line end";
    EXPECT_EQ(patchText(noTerminal, patch, false), patch);
}

TEST(PatchText, ColoursLinesAsGitDoes) {
    EXPECT_EQ(
        patchText(noTerminal,
                  "diff --git a/f b/f\n--- a/f\n+++ b/f\n@@ -1 +1 @@ main()\n-a\n+b\n c\n", true),
        "\x1b[1mdiff --git a/f b/f\x1b[0m\n\x1b[1m--- a/f\x1b[0m\n\x1b[1m+++ b/f\x1b[0m\n"
        "\x1b[36m@@ -1 +1 @@\x1b[0m main()\n\x1b[31m-a\x1b[0m\n\x1b[32m+b\x1b[0m\n c\n");
}

TEST(PatchText, DoesNotColourBinaryFiles) {
    EXPECT_EQ(patchText(noTerminal, "diff --git a/f b/f\nBinary files a/f and b/f differ\n", true),
              "\x1b[1mdiff --git a/f b/f\x1b[0m\nBinary files a/f and b/f differ\n");
}

}  // namespace
}  // namespace neb::test
