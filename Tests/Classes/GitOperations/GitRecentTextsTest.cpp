#include "GitOperations/GitRecentTexts.h"

#include <gtest/gtest.h>

#include <string>

namespace neb {
namespace {

TEST(RecentTexts, ShareOneValueForEqualTexts) {
    GitRecentTexts texts(1000);
    const std::string text = "Ann Example of the long name";
    const NEBValue first = texts.value(text);
    EXPECT_EQ(first, NEBValue(text));
    EXPECT_EQ(texts.value(std::string(text)).string(), first.string()) << "the same one";
    EXPECT_EQ(texts.value(""), NEBValue(""));
}

TEST(RecentTexts, AreCorrectForAnyNumberOfTexts) {
    for (const std::size_t room : {std::size_t{0}, std::size_t{1000}, ~std::size_t{0} / 2}) {
        GitRecentTexts texts(room);
        for (int round = 0; round < 2; ++round) {
            for (int i = 0; i < 50000; ++i) {
                const std::string text = "path/number/" + std::to_string(i);
                ASSERT_EQ(texts.value(text), NEBValue(text));
            }
        }
    }
}

}  // namespace
}  // namespace neb
