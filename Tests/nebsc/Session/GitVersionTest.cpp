// Features by the version of git.

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
