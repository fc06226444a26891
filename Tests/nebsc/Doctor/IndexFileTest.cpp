// Reading the properties of an index.

#include "Doctor/IndexFile.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "Support/TestRepository.h"

namespace neb::test {
namespace {

using nebsc::indexFileAt;
using nebsc::indexFileIn;

class IndexFile : public testing::Test {
protected:
    [[nodiscard]] std::optional<nebsc::IndexFile> index() const {
        return indexFileAt(repository.path(".git/index"), 20);
    }

    TestRepository repository;
};

TEST_F(IndexFile, HasTheVersionAndTheNumberOfEntries) {
    EXPECT_FALSE(index().has_value());
    repository.write("a", "");
    repository.write("b", "");
    repository.git({"add", "."});
    ASSERT_TRUE(index().has_value());
    EXPECT_EQ(index()->version, 2U);
    EXPECT_EQ(index()->entries, 2U);
    repository.git({"update-index", "--index-version", "4"});
    EXPECT_EQ(index()->version, 4U);
    EXPECT_EQ(index()->entries, 2U);
}

TEST_F(IndexFile, KnowsWhetherThereIsAnUntrackedCache) {
    // The names of files look like the extension.
    repository.write("UNTR", "");
    repository.write("UNTRUNTR", "");
    repository.git({"add", "."});
    EXPECT_FALSE(index()->hasUntrackedCache);
    repository.git({"update-index", "--force-untracked-cache"});
    EXPECT_TRUE(index()->hasUntrackedCache);
    repository.git({"status"});
    EXPECT_TRUE(index()->hasUntrackedCache);
    repository.git({"update-index", "--no-untracked-cache"});
    EXPECT_FALSE(index()->hasUntrackedCache);
}

TEST_F(IndexFile, IsAbsentForOtherBytes) {
    const std::string header("DIRC\0\0\0\2\0\0\0\0", 12);
    EXPECT_FALSE(indexFileIn("", 20).has_value());
    EXPECT_FALSE(indexFileIn(header, 20).has_value());
    EXPECT_FALSE(indexFileIn(std::string(40, 'x'), 20).has_value());
    EXPECT_TRUE(indexFileIn(header + std::string(20, 'x'), 20).has_value());
    EXPECT_FALSE(indexFileIn(header + std::string(20, 'x'), 32).has_value());
    // An extension whose size points outside.
    EXPECT_FALSE(
        indexFileIn(header + "UNTR\xff\xff\xff\xff" + std::string(20, 'x'), 20)->hasUntrackedCache);
    EXPECT_FALSE(indexFileIn(header + "UNTR" + std::string(20, 'x'), 20)->hasUntrackedCache);
}

}  // namespace
}  // namespace neb::test
