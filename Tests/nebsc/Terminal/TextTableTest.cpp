#include "Terminal/TextTable.h"

#include <gtest/gtest.h>

namespace neb::test {
namespace {

using nebsc::tableLines;

constexpr int noTerminal = -1;

TEST(TextTable, MakesAColumnAsWideAsItsWidestCell) {
    EXPECT_EQ(tableLines(noTerminal, {{"a", "b", "c"}, {"漢字", "x", "y"}}),
              "a     b  c\n漢字  x  y\n");
}

TEST(TextTable, HasNoBlanksAtTheEndOfLines) {
    EXPECT_EQ(tableLines(noTerminal, {{"name", ""}, {"a"}, {"b", "c"}, {""}}),
              "name\na\nb     c\n\n");
}

TEST(TextTable, IsEmptyWithoutRows) {
    EXPECT_EQ(tableLines(noTerminal, {}), "");
}

}  // namespace
}  // namespace neb::test
