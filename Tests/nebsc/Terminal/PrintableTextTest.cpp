// Printable text, coloured text and error messages.

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Terminal/Colour.h"
#include "Terminal/ErrorText.h"
#include "Terminal/PrintableText.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace neb::nebsc {
namespace {

TEST(Printable, LeavesPrintableTextUnchanged) {
    EXPECT_EQ(printable("a \\ b/Grüße 漢字 😀\xC2\xA0"), "a \\ b/Grüße 漢字 😀\xC2\xA0");
    EXPECT_EQ(printable(""), "");
}

TEST(Printable, KeepsTabsAndTheLineEndOfALine) {
    EXPECT_EQ(printableLine("\tint a;\t// b\r"), "\tint a;\t// b\r");
    EXPECT_EQ(printableLine("a\rb\x1b[2J\t\xE4"), "a\\rb\\x1b[2J\t\\xe4");
    EXPECT_EQ(printableLine(""), "");
    EXPECT_EQ(printableLine("\r"), "\r");
    EXPECT_EQ(printableLine("\t"), "\t");
}

TEST(Printable, EscapesControlCharacters) {
    EXPECT_EQ(printable("a\nb\tc\rd"), "a\\nb\\tc\\rd");
    EXPECT_EQ(printable("\x1b[31m"), "\\x1b[31m");
    EXPECT_EQ(printable(std::string("\0\x01\x1f\x7f", 4)), "\\x00\\x01\\x1f\\x7f");
}

TEST(Printable, EscapesC1Characters) {
    EXPECT_EQ(printable("\xC2\x80\xC2\x9B\xC2\x9F"), "\\u0080\\u009b\\u009f");
}

TEST(Printable, EscapesDirectionControls) {
    EXPECT_EQ(printable("a\u202a\u202eb"), "a\\u202a\\u202eb");
    EXPECT_EQ(printable("\u2066\u2069"), "\\u2066\\u2069");
    EXPECT_EQ(printable("\u2029\u202f\u2065\u206a\u2026"), "\u2029\u202f\u2065\u206a\u2026");
    EXPECT_EQ(printableLine("\t\u202e"), "\t\\u202e");
}

TEST(Printable, EscapesBytesThatAreNotUTF8) {
    EXPECT_EQ(printable("a\x9b\xffz\xC2"), "a\\x9b\\xffz\\xc2");
    EXPECT_EQ(printable("\xE2\x82"), "\\xe2\\x82");
    EXPECT_EQ(printable("\xEF\xBF\xBD"), "\xEF\xBF\xBD") << "replaced before";
}

TEST(Coloured, AddsTheEscapeSequences) {
    EXPECT_EQ(coloured("x", Colour::green), "\x1b[32mx\x1b[0m");
    EXPECT_EQ(coloured("x", Colour::none), "x");
}

TEST(Coloured, FollowsTheOption) {
    EXPECT_TRUE(wantsColour(Colours::always, -1));
    EXPECT_FALSE(wantsColour(Colours::never, -1));
    EXPECT_FALSE(wantsColour(Colours::automatic, -1));
}

NEBSourceControlError errorWith(const std::string& description,
                                const std::optional<std::string>& suggestion,
                                std::optional<std::string> text) {
    auto error = NEBSourceControlError::withDescription(-1, description, suggestion);
    error.text = std::move(text);
    return error;
}

TEST(WithSingleQuotes, ReplacesTheQuotesAroundNames) {
    EXPECT_EQ(withSingleQuotes("There is no \"a b\"."), "There is no 'a b'.");
    EXPECT_EQ(withSingleQuotes("\"git branch\" and \"git tag\" list (\"x\"): \"y\""),
              "'git branch' and 'git tag' list ('x'): 'y'");
    EXPECT_EQ(withSingleQuotes("the file \"a\"b.c\" is"), "the file 'a\"b.c' is");
    for (const char* text : {"", "\"", "no quotes", "a\"b", "a \"b", "it's 5\" wide"}) {
        EXPECT_EQ(withSingleQuotes(text), text);
    }
}

TEST(ErrorLines, HaveSingleQuotesExceptInTheOutputOfGit) {
    EXPECT_EQ(errorLines(errorWith("No \"a\".", "Try \"b\".", "fatal: \"c\"")),
              "nebsc: no 'a'\nTry 'b'.\n    fatal: \"c\"\n");
    EXPECT_EQ(errorLines(errorWith("fatal: \"c\"", {}, "fatal: \"c\"")), "nebsc: \"c\"\n");
}

TEST(ErrorLines, HaveTheDescription) {
    EXPECT_EQ(errorLines(errorWith("It failed.", {}, {})), "nebsc: it failed\n");
}

TEST(ErrorLines, HaveTheSuggestionOnASeparateLine) {
    EXPECT_EQ(errorLines(errorWith("It failed.", "Try again.", {})),
              "nebsc: it failed\nTry again.\n");
}

TEST(ErrorLines, HaveTheToolOutputIndented) {
    EXPECT_EQ(errorLines(errorWith("It failed.", "Try again.", "fatal: a\r\nhint: b\n\n")),
              "nebsc: it failed\nTry again.\n    fatal: a\n    hint: b\n");
}

TEST(ErrorLines, HaveTheRestOfTheDescriptionAfterTheSuggestion) {
    EXPECT_EQ(errorLines(errorWith("fatal: no\nU\ta.c\n", "Try again.", {})),
              "nebsc: no\nTry again.\n    U\\ta.c\n");
}

TEST(ErrorLines, HaveTheFirstAndLastOfVeryManyLines) {
    std::string all;
    for (int i = 1; i <= 2000; ++i) {
        all += std::to_string(i) + "\n";
    }
    const std::string lines = errorLines(errorWith("It failed.", {}, all));
    EXPECT_TRUE(lines.starts_with("nebsc: it failed\n    1\n    2\n"));
    EXPECT_NE(lines.find("    500\n    [1000 lines are left out here]\n    1501\n"),
              std::string::npos);
    EXPECT_TRUE(lines.ends_with("    2000\n"));
    EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 1002);
}

TEST(ErrorLines, DoNotRepeatToolOutputThatIsTheDescription) {
    EXPECT_EQ(errorLines(errorWith("fatal: no\n", {}, "fatal: no\n")), "nebsc: no\n");
}

TEST(ErrorLines, IndentTheOtherLinesOfTheDescription) {
    EXPECT_EQ(errorLines(errorWith("fatal: no\nhint: yes\n", {}, "fatal: no\nhint: yes\n")),
              "nebsc: no\n    hint: yes\n");
}

TEST(ErrorLines, KeepTheIndentationOfToolOutput) {
    EXPECT_EQ(errorLines(errorWith("fatal: no\n\n\tgit config a\tb\n", {}, {})),
              "nebsc: no\n\n        git config a\\tb\n");
}

TEST(ErrorLines, RemoveThePrefixesOfGit) {
    const auto sentence = [](const char* text) { return errorLines(errorWith(text, {}, text)); };
    EXPECT_EQ(sentence("fatal: no such path 'a' in HEAD\n"), "nebsc: no such path 'a' in HEAD\n");
    EXPECT_EQ(sentence("error: fatal: it failed!\n"), "nebsc: it failed!\n");
    EXPECT_EQ(sentence("a.c: needs merge"), "nebsc: a.c: needs merge\n");
    EXPECT_EQ(sentence("'topic' is checked out"), "nebsc: 'topic' is checked out\n");
    EXPECT_EQ(sentence("error: cannot take these:\n\ta.c\n"),
              "nebsc: cannot take these:\n        a.c\n");
    EXPECT_EQ(sentence("fatal: nothing behind the colon:"), "nebsc: nothing behind the colon\n");
    EXPECT_EQ(sentence("fatal: git is gone"), "nebsc: git is gone\n");
}

TEST(ErrorLines, OmitHowToDisableAHint) {
    auto error = errorWith("fatal: no", "Do this.\nDisable this message with 'git config x'", {});
    EXPECT_EQ(errorLines(error), "nebsc: no\nDo this.\n");
}

TEST(ErrorLines, DoNotRepeatHintsThatAreTheSuggestion) {
    const std::string text = "hint: Pull first.\nhint:\nhint:   git pull\nfatal: no\n";
    auto error = errorWith(text, "Pull first.\n\n  git pull", text);
    error.hints = {"Pull first.", "", "  git pull"};
    EXPECT_EQ(errorLines(error), "nebsc: no\nPull first.\n\n  git pull\n");
}

TEST(ErrorLines, BeginWithTheLineThatReportsTheFailure) {
    EXPECT_EQ(errorLines(errorWith("From /r\n   1..2  main -> main\nfatal: no\n", {}, {})),
              "nebsc: no\n    From /r\n       1..2  main -> main\n");
    EXPECT_EQ(errorLines(errorWith("remote: No.\nTo /r\n ! [remote rejected] a (hook)\nerror: no\n",
                                   {}, {})),
              "nebsc: ! [remote rejected] a (hook)\n    remote: No.\n    To /r\n    error: no\n");
    EXPECT_EQ(errorLines(errorWith("warning: a\nerror: b\n", {}, {})),
              "nebsc: b\n    warning: a\n");
    EXPECT_EQ(errorLines(errorWith("To whom\nit may concern\n", {}, {})),
              "nebsc: to whom\n    it may concern\n");
    EXPECT_EQ(errorLines(errorWith("odd\nfatal: no\n", {}, {})), "nebsc: odd\n    fatal: no\n");
}

TEST(ErrorLines, OmitOverwrittenProgress) {
    EXPECT_EQ(errorLines(errorWith("Rebasing (1/2)\rRebasing (2/2)\rerror: no\r\nx\n", {}, {})),
              "nebsc: no\n    x\n");
}

TEST(ErrorLines, ListFilesThatNoTextNames) {
    auto error = errorWith("a.c: needs merge", {}, "error: path 'b.c' is unmerged");
    error.errorClass = NEBSourceControlConflictUnresolvedErrorClass;
    error.files = {"a.c", "b.c", "c\n.c"};
    EXPECT_EQ(errorLines(error),
              "nebsc: a.c: needs merge\n    error: path 'b.c' is unmerged\n    c\\n.c\n");
}

TEST(ErrorLines, ListFilesThatOnlyOccurAsPartsOfTexts) {
    auto error = errorWith("fatal: cannot commit: unmerged files", {}, "fatal: settle 'conf'licts");
    error.errorClass = NEBSourceControlConflictUnresolvedErrorClass;
    error.files = {"file", "conf", "settle", "commit"};
    EXPECT_EQ(errorLines(error),
              "nebsc: cannot commit: unmerged files\n    fatal: settle 'conf'licts\n"
              "    file\n    conf\n    settle\n    commit\n");
}

TEST(MessageLine, LosesTheFullStopOfOneSentence) {
    EXPECT_EQ(messageLine("The file 'Mr. X' does not exist."), "the file 'Mr. X' does not exist");
    EXPECT_EQ(messageLine("git's file \"a. b\" is gone."), "git's file \"a. b\" is gone");
    EXPECT_EQ(messageLine("It failed. Try again."), "it failed. Try again.");
}

TEST(MessageLine, KeepsTheFirstLetterOfNames) {
    EXPECT_EQ(messageLine("HEAD is broken."), "HEAD is broken");
    EXPECT_EQ(messageLine("Subversion has no such commit."), "Subversion has no such commit");
}

TEST(MessageLine, MayBeginWithAnything) {
    for (const char* text : {"", " x", ", x", ". x", "'"}) {
        EXPECT_EQ(messageLine(text), text);
    }
}

TEST(ErrorLines, EscapeControlCharacters) {
    EXPECT_EQ(errorLines(errorWith("a\x1b[2J", "b\x07", "c\x9b")),
              "nebsc: a\\x1b[2J\nb\\x07\n    c\\x9b\n");
}

TEST(ErrorLines, HaveTheCodeOfAnErrorWithoutDescription) {
    NEBSourceControlError error;
    error.code = -32;
    EXPECT_EQ(errorLines(error),
              "nebsc: the operation failed with the error -32 of NEBSourceControlErrorDomain\n");
}

}  // namespace
}  // namespace neb::nebsc
