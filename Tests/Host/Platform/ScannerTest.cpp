#include "Platform/Scanner.h"

#include <gtest/gtest.h>

namespace neb {
namespace {

TEST(Scanner, ReadsRunsOfCharacters) {
    Scanner scanner("  AM name");
    scanner.skip(CharacterSet::whitespace());
    EXPECT_EQ(scanner.take(CharacterSet("AM")), "AM");
    EXPECT_EQ(scanner.rest(), " name");
}

TEST(Scanner, DoesNotSkipUnasked) {
    Scanner scanner(" A");
    EXPECT_EQ(scanner.take(CharacterSet("A")), "");
    EXPECT_EQ(scanner.rest(), " A");
}

TEST(Scanner, StopsAtTheEnd) {
    Scanner scanner("AA");
    EXPECT_EQ(scanner.take(CharacterSet("A")), "AA");
    EXPECT_EQ(scanner.take(CharacterSet("A")), "");
    EXPECT_EQ(scanner.rest(), "");
}

TEST(Scanner, TakesUpToACharacter) {
    Scanner scanner("ab\tc");
    EXPECT_EQ(scanner.takeUpTo('\t'), "ab");
    EXPECT_EQ(scanner.takeUpTo('\t'), "") << "the scanner is at the character";
    scanner.skipOne('x');
    EXPECT_EQ(scanner.rest(), "\tc") << "another character is not skipped";
    scanner.skipOne('\t');
    EXPECT_EQ(scanner.takeUpTo('\t'), "c") << "the rest, because the character does not follow";
    scanner.skipOne('c');
    EXPECT_EQ(scanner.takeUpTo('\t'), "");
}

TEST(Scanner, SkipsOneCharacterOnce) {
    Scanner scanner("((x");
    scanner.skipOne('(');
    EXPECT_EQ(scanner.rest(), "(x");
}

TEST(Scanner, SkipsTheSpacesOfUnicode) {
    const std::string spaces =
        " \t\xC2\xA0\xE1\x9A\x80\xE2\x80\x80\xE2\x80\x8A\xE2\x80\xAF\xE2"
        "\x81\x9F\xE3\x80\x80";
    const std::string text = spaces + "x" + spaces;
    Scanner scanner(text);
    EXPECT_EQ(scanner.takeUpToSpace(), "");
    scanner.skipSpace();
    EXPECT_EQ(scanner.takeUpToSpace(), "x");
    EXPECT_EQ(scanner.rest(), spaces);
    scanner.skipSpace();
    EXPECT_EQ(scanner.takeUpToSpace(), "");
    for (const char* other : {"\n", "\r", "\v", "\f", "\xE2\x80\xA8", "\xE2\x80\x8B", "\xC2\x85",
                              "\xA0", "\xE2\x80", "x"}) {
        Scanner stays(other);
        stays.skipSpace();
        EXPECT_EQ(stays.rest(), other);
        EXPECT_EQ(stays.takeUpToSpace(), other);
    }
}

TEST(Scanner, ClampsAnIntegerToItsRange) {
    const auto taken = [](std::string_view text, std::optional<std::int32_t> value,
                          std::string_view rest) {
        Scanner scanner(text);
        EXPECT_EQ(scanner.takeInteger(), value) << text;
        EXPECT_EQ(scanner.rest(), rest) << text;
    };
    taken("12 x", 12, " x");
    taken("-12", -12, "");
    taken("+12", 12, "");
    taken("0", 0, "");
    taken("2147483647", 2147483647, "");
    taken("2147483648", 2147483647, "");
    taken("-2147483649", -2147483647 - 1, "");
    taken("123456789012345678901234567890.", 2147483647, ".");
    taken("-123456789012345678901234567890", -2147483647 - 1, "");
    taken("x1", std::nullopt, "x1");
    taken("-x", std::nullopt, "-x");
    taken("--1", std::nullopt, "--1");
    taken(" 1", std::nullopt, " 1");
    taken("", std::nullopt, "");
    taken("-", std::nullopt, "-");
}

TEST(CharacterSet, ContainsExactlyItsMembers) {
    EXPECT_TRUE(CharacterSet::whitespace().contains('\t'));
    EXPECT_FALSE(CharacterSet::whitespace().contains('\n'));
    const CharacterSet set = CharacterSet::uppercaseLetters() | CharacterSet("?");
    for (const char member : {'A', 'Z', '?'}) {
        EXPECT_TRUE(set.contains(member));
    }
    for (const char other : {'a', '@', '[', '!', ' ', '\xC3'}) {
        EXPECT_FALSE(set.contains(other));
    }
}

}  // namespace
}  // namespace neb
