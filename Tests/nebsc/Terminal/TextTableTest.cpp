#include "Terminal/TextTable.h"

#include <gtest/gtest.h>

namespace neb::test {
namespace {

using nebsc::tableLines;

constexpr int withoutTerminal = -1;

TEST(TextTable, MakesAColumnAsWideAsItsWidestCell) {
    EXPECT_EQ(tableLines(withoutTerminal, {{"a", "b", "c"}, {"漢字", "x", "y"}}),
              "a     b  c\n漢字  x  y\n");
}

TEST(TextTable, HasNoBlanksAtTheEndOfLines) {
    EXPECT_EQ(tableLines(withoutTerminal, {{"name", ""}, {"a"}, {"b", "c"}, {""}}),
              "name\na\nb     c\n\n");
}

TEST(TextTable, IsEmptyWithoutRows) {
    EXPECT_EQ(tableLines(withoutTerminal, {}), "");
}

}  // namespace
}  // namespace neb::test
