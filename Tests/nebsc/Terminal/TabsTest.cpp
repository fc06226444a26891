#include "Terminal/Tabs.h"

#include <gtest/gtest.h>

namespace neb::test {
namespace {

using nebsc::expandTabs;

TEST(Tabs, ExtendToTheNextTabStop) {
    EXPECT_EQ(expandTabs("\tx"), "        x");
    EXPECT_EQ(expandTabs("ab\tx\t\ty"), "ab      x               y");
    EXPECT_EQ(expandTabs("12345678\tx"), "12345678        x");
}

TEST(Tabs, CountWideCharactersAsTwoColumns) {
    EXPECT_EQ(expandTabs("漢\tx"), "漢      x");
}

TEST(Tabs, LeaveALineWithoutTabsUnchanged) {
    EXPECT_EQ(expandTabs("a b"), "a b");
    EXPECT_EQ(expandTabs(""), "");
}

}  // namespace
}  // namespace neb::test
