// File names as git quotes them.

#include "Terminal/GitQuoting.h"

#include <gtest/gtest.h>

#include "Support/TestRepository.h"

namespace neb::nebsc {
namespace {

TEST(GitQuoting, UnquotesWhatGitHasQuoted) {
    EXPECT_EQ(unquotedName(""), "");
    EXPECT_EQ(unquotedName("a b.c"), "a b.c");
    EXPECT_EQ(unquotedName(R"("red\033[31m\t\"q\"\\")"), "red\x1b[31m\t\"q\"\\");
    EXPECT_EQ(unquotedName(R"("\344\377")"), "\xE4\xFF");
}

TEST(GitQuoting, AQuoteMayBeMissingAtEitherEnd) {
    EXPECT_EQ(unquotedName(R"(a\nb)"), "a\nb");
    EXPECT_EQ(unquotedName(R"("a\nb)"), "a\nb");
    EXPECT_EQ(unquotedName(R"(a\")"), "a\"") << "this one is a part of the name";
}

TEST(GitQuoting, WhatIsNoEscapeStays) {
    EXPECT_EQ(unquotedName(R"(a\)"), R"(a\)");
    EXPECT_EQ(unquotedName(R"(\9\47)"), R"(\9\47)");
    EXPECT_EQ(unquotedName(R"(\477)"), R"(\477)");
}

/// Every byte that a name can have, quoted by git itself.
TEST(GitQuoting, IsThatOfGit) {
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
            EXPECT_NE(("\n" + quoted).find("\n" + quotedName(name) + "\n"), std::string::npos)
                << quotedName(name) << quoted;
            EXPECT_EQ(unquotedName(quotedName(name)), name);
            name.clear();
        }
    }
}

}  // namespace
}  // namespace neb::nebsc
