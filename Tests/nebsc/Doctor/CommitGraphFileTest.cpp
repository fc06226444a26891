// Reading commit-graph files that git has written.

#include "Doctor/CommitGraphFile.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "Support/TestRepository.h"

namespace neb::test {
namespace {

using nebsc::commitGraphIn;

class CommitGraphFile : public testing::TestWithParam<const char*> {
protected:
    CommitGraphFile() {
        repository.git({"init", "--quiet", std::string("--object-format=") + GetParam(), "r"});
        for (int i = 0; i < 20; ++i) {
            repository.git(
                {"-C", "r", "commit", "--quiet", "--allow-empty", "-m", std::to_string(i)});
        }
    }
    void writeGraph(const std::string& option) const {
        repository.git({"-C", "r", "commit-graph", "write", "--reachable", option});
    }
    [[nodiscard]] std::string commit(const std::string& revision) const {
        std::string id = repository.git({"-C", "r", "rev-parse", revision});
        id.pop_back();
        return id;
    }

    TestRepository repository;
    std::string objects = repository.path("r/.git/objects");
};

TEST_P(CommitGraphFile, ContainsTheCommitsThatGitHasWritten) {
    EXPECT_TRUE(commitGraphIn(objects).layers.empty());
    writeGraph("--no-changed-paths");
    repository.git({"-C", "r", "commit", "--quiet", "--allow-empty", "-m", "later"});
    const auto graph = commitGraphIn(objects);
    ASSERT_EQ(graph.layers.size(), 1U);
    EXPECT_FALSE(graph.isChain);
    EXPECT_FALSE(graph.hasChangedPaths());
    for (int i = 1; i <= 20; ++i) {
        EXPECT_TRUE(graph.contains(commit("HEAD~" + std::to_string(i)))) << i;
    }
    EXPECT_FALSE(graph.contains(commit("HEAD")));
    EXPECT_FALSE(graph.contains("no id"));
    EXPECT_FALSE(graph.contains(""));
}

TEST_P(CommitGraphFile, EveryLayerOfAChainIsRead) {
    writeGraph("--changed-paths");
    EXPECT_TRUE(commitGraphIn(objects).hasChangedPaths());
    std::filesystem::remove(objects + "/info/commit-graph");
    writeGraph("--split=no-merge");
    repository.git({"-C", "r", "commit", "--quiet", "--allow-empty", "-m", "later"});
    writeGraph("--split=no-merge");
    const auto graph = commitGraphIn(objects);
    EXPECT_EQ(graph.layers.size(), 2U);
    EXPECT_TRUE(graph.isChain);
    EXPECT_TRUE(graph.contains(commit("HEAD")));
    EXPECT_TRUE(graph.contains(commit("HEAD~20")));
}

TEST_P(CommitGraphFile, DamagedFilesHaveNoCommits) {
    writeGraph("--changed-paths");
    const std::string id = commit("HEAD");
    const std::string path = objects + "/info/commit-graph";
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    for (const std::uintmax_t size : {2000U, 1100U, 200U, 60U, 8U, 7U, 0U}) {
        std::filesystem::resize_file(path, size);
        const auto graph = commitGraphIn(objects);
        EXPECT_FALSE(!graph.layers.empty() && size < 1100 && graph.contains(id)) << size;
        EXPECT_EQ(graph.layers.empty(), size <= 8) << size;
    }
}

INSTANTIATE_TEST_SUITE_P(Hash, CommitGraphFile, testing::Values("sha1", "sha256"),
                         [](const auto& row) { return std::string(row.param); });

}  // namespace
}  // namespace neb::test
