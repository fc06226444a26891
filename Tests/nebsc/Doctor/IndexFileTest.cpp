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

TEST_F(IndexFile, EndsWithItsHash) {
    using nebsc::hasIntactHash;
    EXPECT_FALSE(nebsc::indexBytesAt(repository.path("nosuch")).has_value());
    repository.write("a", "");
    repository.git({"add", "."});
    const std::string bytes = nebsc::indexBytesAt(repository.path(".git/index")).value_or("");
    EXPECT_TRUE(hasIntactHash(bytes));
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        std::string damaged = bytes;
        damaged[i] = static_cast<char>(damaged[i] ^ 1);
        EXPECT_FALSE(hasIntactHash(damaged)) << i;
        EXPECT_FALSE(hasIntactHash(bytes.substr(0, i))) << i;
    }
    EXPECT_TRUE(hasIntactHash(bytes.substr(0, bytes.size() - 20) + std::string(20, '\0')));
}

TEST(IndexFileOfSHA256, EndsWithItsHash) {
    const TestRepository repository;
    repository.git({"init", "--quiet", "--object-format=sha256", "inner"});
    repository.write("inner/a", "");
    repository.git({"-C", repository.path("inner"), "add", "."});
    std::string bytes = nebsc::indexBytesAt(repository.path("inner/.git/index")).value_or("");
    EXPECT_TRUE(nebsc::hasIntactHash(bytes));
    bytes[20] = static_cast<char>(bytes[20] ^ 1);
    EXPECT_FALSE(nebsc::hasIntactHash(bytes));
}

}  // namespace
}  // namespace neb::test
