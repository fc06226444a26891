// What is found without git is what git finds.

#include "CommandFrame/OrdinaryWorkingCopy.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "Support/TestRepository.h"

namespace neb::nebsc {
namespace {

using test::TestRepository;

class OrdinaryWorkingCopy : public testing::Test {
protected:
    [[nodiscard]] static std::string contentOf(const std::string& path) {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    void SetUp() override {
        repository.commitFile("src/deep/a.c", "1\n");
        top = repository.path();
    }
    /// Returns the location; absent if there is any doubt.
    [[nodiscard]] static std::optional<std::string> topAround(const std::string& folder) {
        const auto found = ordinaryWorkingCopy(folder);
        return found ? std::optional(found->location) : std::nullopt;
    }
    [[nodiscard]] std::optional<std::string> branch() const {
        const auto found = ordinaryWorkingCopy(top);
        return found ? found->revisions.head : std::nullopt;
    }

    TestRepository repository;
    std::string top;
};

TEST_F(OrdinaryWorkingCopy, IsFoundFromEachOfItsFolders) {
    for (const char* folder : {"", "/src", "/src/deep"}) {
        EXPECT_EQ(topAround(top + folder), top) << folder;
    }
    const auto found = ordinaryWorkingCopy(top + "/src");
    ASSERT_TRUE(found);
    EXPECT_EQ(found->currentFolder, top + "/src");
    EXPECT_TRUE(found->isWorkingCopy && found->isRepository);
    EXPECT_FALSE(found->hasCommits);
}

TEST_F(OrdinaryWorkingCopy, HasTheBranchThatGitNames) {
    repository.git({"checkout", "-q", "-b", "topic/a_b-1.x"});
    EXPECT_EQ(branch(), "refs/heads/topic/a_b-1.x");
    repository.git({"checkout", "-q", "--orphan", "unborn"});
    EXPECT_EQ(branch(), "refs/heads/unborn");
    repository.git({"checkout", "-q", "--detach", "topic/a_b-1.x"});
    EXPECT_EQ(branch(), "HEAD");
}

TEST_F(OrdinaryWorkingCopy, IsNotFoundWhereASettingMovesIt) {
    for (const char* setting : {"core.worktree=/elsewhere", "core.bare=true", "include.path=more",
                                "extensions.worktreeConfig=true", "CORE.WorkTree=/elsewhere"}) {
        const std::string text = setting;
        const std::size_t end = text.find('=');
        const std::string before = contentOf(repository.path(".git/config"));
        repository.git(
            {"config", "--file", ".git/config", text.substr(0, end), text.substr(end + 1)});
        EXPECT_FALSE(topAround(top)) << setting;
        repository.write(".git/config", before);
        EXPECT_TRUE(topAround(top)) << setting;
    }
}

TEST_F(OrdinaryWorkingCopy, IsNotFoundWhereAVariableMovesIt) {
    for (const char* name : {"GIT_DIR", "GIT_WORK_TREE", "GIT_COMMON_DIR",
                             "GIT_CEILING_DIRECTORIES", "GIT_TEST_ASSUME_DIFFERENT_OWNER"}) {
        ::setenv(name, top.c_str(), 1);
        EXPECT_FALSE(topAround(top)) << name;
        ::unsetenv(name);
    }
    EXPECT_TRUE(topAround(top));
}

TEST_F(OrdinaryWorkingCopy, IsNotFoundInAnyOtherKindOfRepository) {
    repository.git({"worktree", "add", "-q", top + "/linked"});
    EXPECT_FALSE(topAround(top + "/linked"));
    EXPECT_FALSE(topAround(top + "/.git"));
    EXPECT_FALSE(topAround(top + "/.git/refs"));
    repository.git({"init", "-q", "--bare", "src/bare.git"});
    EXPECT_FALSE(topAround(top + "/src/bare.git"));
    EXPECT_FALSE(topAround(top + "/src/bare.git/objects"));
    std::filesystem::rename(top + "/.git", top + "/elsewhere");
    EXPECT_FALSE(topAround(top));
    std::filesystem::create_directory_symlink(top + "/elsewhere", top + "/.git");
    EXPECT_FALSE(topAround(top));
}

TEST_F(OrdinaryWorkingCopy, IsNotFoundWithAHEADThatGitMayRefuse) {
    for (const char* head : {"", "ref: refs/heads/.invalid\n", "ref: refs/heads/a..b\n", "abc\n",
                             "ref: refs/heads/\n", "ref: refs/tags/v1\n", "ref: refs/heads/main"}) {
        repository.write(".git/HEAD", head);
        EXPECT_FALSE(topAround(top)) << head;
    }
    repository.git({"symbolic-ref", "refs/heads/alias", "refs/heads/main"});
    repository.write(".git/HEAD", "ref: refs/heads/alias\n");
    EXPECT_FALSE(topAround(top));
    std::filesystem::remove(top + "/.git/HEAD");
    EXPECT_FALSE(topAround(top));
}

}  // namespace
}  // namespace neb::nebsc
