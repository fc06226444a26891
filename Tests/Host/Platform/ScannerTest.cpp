#include "Platform/Scanner.h"

#include <gtest/gtest.h>

namespace neb {
namespace {

TEST(Scanner, ReadsATextRunByRun) {
    Scanner scanner("  AM name");
    scanner.skip(CharacterSet::whitespace());
    EXPECT_EQ(scanner.take(CharacterSet("AM")), "AM");
    EXPECT_EQ(scanner.rest(), " name");
}

TEST(Scanner, SkipsNothingByItself) {
    Scanner scanner(" A");
    EXPECT_EQ(scanner.take(CharacterSet("A")), "");
    EXPECT_EQ(scanner.rest(), " A");
}

TEST(Scanner, EndsAtTheEnd) {
    Scanner scanner("AA");
    EXPECT_EQ(scanner.take(CharacterSet("A")), "AA");
    EXPECT_EQ(scanner.take(CharacterSet("A")), "");
    EXPECT_EQ(scanner.rest(), "");
}

TEST(CharacterSet, HoldsItsMembersAlone) {
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
