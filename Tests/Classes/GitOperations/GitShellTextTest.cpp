#include "GitOperations/GitShellText.h"

#include <gmock/gmock.h>

#include "Support/ChildLaunches.h"
#include "Support/TemporaryFolder.h"

namespace neb {
namespace {

TEST(ShellText, KeepsOrdinaryNames) {
    for (const char* name : {"", "src", "src/lib", "/home/me/project-1.0_x86+y/a,b@c:d=e%f^g",
                             "\xC3\xA4\xE6\x97\xA5", "a~", "a/~b", "-x", "."}) {
        EXPECT_EQ(gitShellPattern(name), name);
        EXPECT_EQ(gitShellWord(name), name);
    }
}

TEST(ShellText, LetsAPatternSplitAtBlanksAndExpand) {
    EXPECT_EQ(gitShellPattern("a b\tc*?[d]"), "a b\tc*?[d]");
    EXPECT_EQ(gitShellWord("a b\tc*?[d]"), "a\\ b\\\tc\\*\\?\\[d\\]");
}

TEST(ShellText, EscapesSpecialCharacters) {
    for (const char character : std::string(";&|<>()$`\"'\\#!{}")) {
        const std::string text = std::string("a") + character + "b";
        EXPECT_EQ(gitShellPattern(text), std::string("a\\") + character + "b");
        EXPECT_EQ(gitShellWord(text), std::string("a\\") + character + "b");
    }
    EXPECT_EQ(gitShellPattern("~/x"), "\\~/x");
    EXPECT_EQ(gitShellPattern("a ~root"), "a \\~root") << "at the beginning of any word";
    EXPECT_EQ(gitShellPattern("a\nb"), "a'\n'b");
    EXPECT_EQ(gitShellPattern("\n"), "'\n'");
}

/// Returns the arguments that the shell passes on, each in brackets.
std::string wordsByShell(const std::string& text) {
    return std::string(
        test::runOne(test::shell("for word in " + text + "; do printf '[%s]' \"$word\"; done"))
            .output);
}

TEST(ShellText, IsReadByTheShellAsIntended) {
    std::string everyByte;
    for (int byte = 1; byte < 256; ++byte) {
        everyByte += static_cast<char>(byte);
        const std::string one(1, static_cast<char>(byte));
        EXPECT_EQ(wordsByShell(gitShellWord("a" + one + "b")), "[a" + one + "b]") << byte;
        EXPECT_EQ(wordsByShell(gitShellWord(one + "b")), "[" + one + "b]") << byte;
        if (one != " " && one != "\t") {
            EXPECT_EQ(wordsByShell(gitShellPattern("a" + one + "b")), "[a" + one + "b]") << byte;
        }
    }
    EXPECT_EQ(wordsByShell(gitShellWord(everyByte)), "[" + everyByte + "]");
    EXPECT_EQ(wordsByShell(gitShellPattern("a b\tc")), "[a][b][c]");
    EXPECT_EQ(wordsByShell(gitShellPattern("{a,b}\\c${HOME}$((1+1))")),
              "[{a,b}\\c${HOME}$((1+1))]");
}

}  // namespace
}  // namespace neb
