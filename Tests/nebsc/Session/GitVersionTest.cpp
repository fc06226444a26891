// Which version of git is installed, and what it has.

#include "Session/GitVersion.h"

#include <gtest/gtest.h>

namespace neb::nebsc {
namespace {

TEST(GitVersion, MergesInMemorySince238) {
    EXPECT_FALSE(canMergeInMemory({1, 99}));
    EXPECT_FALSE(canMergeInMemory({2, 37}));
    EXPECT_TRUE(canMergeInMemory({2, 38}));
    EXPECT_TRUE(canMergeInMemory({3, 0}));
}

}  // namespace
}  // namespace neb::nebsc
