// Suggestions for misspelt names.

#include "CommandLine/SpellingSuggestions.h"

#include <gtest/gtest.h>

#include <vector>

#include "Terminal/PrintableText.h"

namespace neb::nebsc {
namespace {

const std::vector<std::string> names{"status", "add", "rm", "remote", "checkout", "log", "ls"};

TEST(EditDistance, CountsEdits) {
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

std::string suggestion(const std::string& name) {
    return suggestionFor(name, names);
}

TEST(SuggestionFor, NamesTheNearest) {
    EXPECT_EQ(suggestion("stauts"), "; did you mean " + inQuotes("status") + "?");
    EXPECT_EQ(suggestion("check"), "; did you mean " + inQuotes("checkout") + "?");
    EXPECT_EQ(suggestion("chekcuot"), "; did you mean " + inQuotes("checkout") + "?");
    EXPECT_EQ(suggestion("lg"),
              "; did you mean " + inQuotes("log") + " or " + inQuotes("ls") + "?");
    EXPECT_EQ(suggestion("rn"), "; did you mean " + inQuotes("rm") + "?");
}

TEST(SuggestionFor, IsEmptyIfNothingIsNear) {
    for (const std::string& name : {std::string("push"), std::string("x"), std::string(""),
                                    std::string("statistics-of-it"), std::string(1000, 's')}) {
        EXPECT_EQ(suggestion(name), "") << name;
    }
}

}  // namespace
}  // namespace neb::nebsc
