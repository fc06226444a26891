// What somebody may have meant.

#include "CommandLine/SpellingSuggestions.h"

#include <gtest/gtest.h>

#include <vector>

namespace neb::nebsc {
namespace {

const std::vector<std::string> words{"status", "add", "rm", "remote", "checkout", "log", "ls"};

TEST(EditDistance, CountsSlips) {
    EXPECT_EQ(editDistance("", ""), 0U);
    EXPECT_EQ(editDistance("abc", ""), 3U);
    EXPECT_EQ(editDistance("", "abc"), 3U);
    EXPECT_EQ(editDistance("status", "status"), 0U);
    EXPECT_EQ(editDistance("stauts", "status"), 1U);
    EXPECT_EQ(editDistance("statu", "status"), 1U);
    EXPECT_EQ(editDistance("sttatus", "status"), 1U);
    EXPECT_EQ(editDistance("stetus", "status"), 1U);
    EXPECT_EQ(editDistance("kitten", "sitting"), 3U);
}

TEST(QuestionForSimilar, NamesTheNearest) {
    EXPECT_EQ(questionForSimilar("stauts", words), " Did you mean \"status\"?");
    EXPECT_EQ(questionForSimilar("check", words), " Did you mean \"checkout\"?");
    EXPECT_EQ(questionForSimilar("chekcuot", words), " Did you mean \"checkout\"?");
    EXPECT_EQ(questionForSimilar("lg", words), " Did you mean \"log\" or \"ls\"?");
    EXPECT_EQ(questionForSimilar("rn", words), " Did you mean \"rm\"?");
}

TEST(QuestionForSimilar, AsksNothingSillyFarOff) {
    for (const std::string& word : {std::string("push"), std::string("x"), std::string(""),
                                    std::string("statistics-of-it"), std::string(1000, 's')}) {
        EXPECT_EQ(questionForSimilar(word, words), "") << word;
    }
}

}  // namespace
}  // namespace neb::nebsc
