// Names and paths in quotes, as git prints them.

#include "NEBFoundation/NEBSourceControlPathQuoting.h"

#include <gtest/gtest.h>

#include "Support/TestRepository.h"

namespace neb {
namespace {

TEST(PathQuoting, ResolvesEscapes) {
    EXPECT_EQ(NEBSourceControlUnquotedPath(""), "");
    EXPECT_EQ(NEBSourceControlUnquotedPath("a b.c"), "a b.c");
    EXPECT_EQ(NEBSourceControlUnquotedPath(R"("red\033[31m\t\"q\"\\")"), "red\x1b[31m\t\"q\"\\");
    EXPECT_EQ(NEBSourceControlUnquotedPath(R"("\344\377")"), "\xE4\xFF");
}

TEST(PathQuoting, AcceptsAMissingQuoteAtEitherEnd) {
    EXPECT_EQ(NEBSourceControlUnquotedPath(R"(a\nb)"), "a\nb");
    EXPECT_EQ(NEBSourceControlUnquotedPath(R"("a\nb)"), "a\nb");
    EXPECT_EQ(NEBSourceControlUnquotedPath(R"(a\")"), "a\"")
        << "an escaped quote is part of the name";
}

TEST(PathQuoting, KeepsInvalidEscapes) {
    EXPECT_EQ(NEBSourceControlUnquotedPath(R"(a\)"), R"(a\)");
    EXPECT_EQ(NEBSourceControlUnquotedPath(R"(\9\47)"), R"(\9\47)");
    EXPECT_EQ(NEBSourceControlUnquotedPath(R"(\477)"), R"(\477)");
}

TEST(PathQuoting, EqualsThatOfGitForEveryByte) {
    const test::TestRepository repository;
    std::string name;
    for (int byte = 1; byte < 256; ++byte) {
        if (byte != '/') {
            name += static_cast<char>(byte);
        }
        if (name.size() == 100 || byte == 255) {
            repository.write(name, "");
            repository.git({"add", "."});
            const std::string quoted =
                repository.git({"-c", "core.quotePath=true", "ls-files", "--", "."});
            EXPECT_NE(("\n" + quoted).find("\n" + NEBSourceControlQuotedPath(name) + "\n"),
                      std::string::npos)
                << NEBSourceControlQuotedPath(name) << quoted;
            EXPECT_EQ(NEBSourceControlUnquotedPath(NEBSourceControlQuotedPath(name)), name);
            name.clear();
        }
    }
}

}  // namespace
}  // namespace neb
