#include "Platform/Text.h"

#include <gtest/gtest.h>

#include <vector>

namespace neb {
namespace {

struct Case {
    const char* name;
    std::string bytes;
    std::string text;
};

class Decoding : public testing::TestWithParam<Case> {};

TEST_P(Decoding, KeepsUTF8AndReplacesTheRest) {
    EXPECT_EQ(textReplacingInvalidBytes(GetParam().bytes), GetParam().text);
    EXPECT_EQ(isUTF8(GetParam().bytes), GetParam().bytes == GetParam().text);
    // The fast path for ASCII must not depend on the position.
    EXPECT_EQ(textReplacingInvalidBytes("1234567" + GetParam().bytes + "12345678"),
              "1234567" + GetParam().text + "12345678");
}

const std::string r = "\xEF\xBF\xBD";

INSTANTIATE_TEST_SUITE_P(
    Text, Decoding,
    testing::Values(Case{"Empty", "", ""}, Case{"Ascii", "plain", "plain"},
                    Case{"NUL", std::string("a\0b", 3), std::string("a\0b", 3)},
                    Case{"TwoThreeFour", "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80",
                         "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"},
                    Case{"Edges",
                         "\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF\xF0\x90"
                         "\x80\x80\xF4\x8F\xBF\xBF",
                         "\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF\xF0\x90"
                         "\x80\x80\xF4\x8F\xBF\xBF"},
                    Case{"Latin1", "J\xFCrgen", "J" + r + "rgen"},
                    Case{"LoneContinuation", "a\x80\xBFz", "a" + r + r + "z"},
                    Case{"Overlong", "\xC0\xAF\xE0\x80\xAF", r + r + r + r + r},
                    Case{"Surrogate", "\xED\xA0\x80", r + r + r},
                    Case{"AboveTheLast", "\xF4\x90\x80\x80", r + r + r + r},
                    Case{"NoFirstByte", "\xF5\xFE\xFF", r + r + r},
                    Case{"IncompleteCharacterIsOne", "a\xE2\x82z", "a" + r + "z"},
                    Case{"IncompleteBeforeAnother", "\xF0\x9F\x98\xC3\xA4", r + "\xC3\xA4"}),
    [](const auto& parameter) { return parameter.param.name; });

TEST(Text, AnIncompleteCharacterAtTheEndIsReplacedOnce) {
    EXPECT_EQ(textReplacingInvalidBytes("a\xF0\x9F\x98"), "a" + r);
    EXPECT_FALSE(isUTF8("a\xE2\x82"));
}

TEST(Text, AnOctalEscapeHasThreeDigits) {
    EXPECT_EQ(octalEscape('\xe4'), R"(\344)");
    EXPECT_EQ(octalEscape('\xff'), R"(\377)");
    EXPECT_EQ(octalEscape('\n'), R"(\012)");
    EXPECT_EQ(octalEscape('\0'), R"(\000)");
}

TEST(Text, LineEndsOfAllKindsAreTrimmedAtBothEnds) {
    const std::string ends = "\n\r\v\f\xC2\x85\xE2\x80\xA8\xE2\x80\xA9";
    EXPECT_EQ(textByTrimmingLineEnds(ends + "a" + ends + "b" + ends), "a" + ends + "b");
    EXPECT_EQ(textByTrimmingLineEnds(ends), "");
    EXPECT_EQ(textByTrimmingLineEnds(""), "");
    for (const char* other : {" a ", "\ta\t", "\xE2\x80\xA7", "\x85", "\xC3\xA8", "\xE2\x80\xAA"}) {
        EXPECT_EQ(textByTrimmingLineEnds(other), other);
    }
}

TEST(Text, ThereIsOneMoreSubstringThanSeparators) {
    const auto piecesOf = [](std::string_view text) {
        std::vector<std::string_view> pieces;
        forEachField(text, '\n', [&pieces](std::string_view piece) { pieces.push_back(piece); });
        return pieces;
    };
    using Pieces = std::vector<std::string_view>;
    EXPECT_EQ(piecesOf("a\nb"), (Pieces{"a", "b"}));
    EXPECT_EQ(piecesOf("a\n"), (Pieces{"a", ""}));
    EXPECT_EQ(piecesOf("\n\na"), (Pieces{"", "", "a"}));
    EXPECT_EQ(piecesOf(""), (Pieces{""}));
}

TEST(Text, LinesEndWithALineFeedExceptPerhapsTheLast) {
    const auto linesOf = [](std::string_view text) {
        std::vector<std::string_view> lines;
        forEachLine(text, [&lines](std::string_view line) { lines.push_back(line); });
        return lines;
    };
    using Lines = std::vector<std::string_view>;
    EXPECT_EQ(linesOf("a\nb"), (Lines{"a", "b"}));
    EXPECT_EQ(linesOf("a\nb\n"), (Lines{"a", "b"}));
    EXPECT_EQ(linesOf("a\n\n"), (Lines{"a", ""}));
    EXPECT_EQ(linesOf("\n"), (Lines{""}));
    EXPECT_EQ(linesOf(""), Lines());
}

TEST(Text, TrimmingRemovesTheGivenCharactersAtBothEnds) {
    EXPECT_EQ(trimmed(" \t\r\na b\n"), "a b");
    EXPECT_EQ(trimmed("[a] ", "[] "), "a");
    EXPECT_EQ(trimmed("\ra\n", " \t"), "\ra\n");
    EXPECT_EQ(trimmed(" \n "), "");
    EXPECT_EQ(trimmed(""), "");
}

TEST(Text, OnlyASCIILettersHaveACase) {
    EXPECT_EQ(lowercaseASCII("AZaz09@[`{"), "azaz09@[`{");
    EXPECT_EQ(lowercaseASCII("\xC3\x84"), "\xC3\x84");
    EXPECT_TRUE(equalIgnoringASCIICase("Fatal: X", "fatal: x"));
    EXPECT_FALSE(equalIgnoringASCIICase("\xC3\x84", "\xC3\xA4"));
    EXPECT_FALSE(equalIgnoringASCIICase("a", "ab"));
    EXPECT_FALSE(equalIgnoringASCIICase("@", "`"));
    EXPECT_TRUE(equalIgnoringASCIICase("", ""));
}

}  // namespace
}  // namespace neb
