// What the files of git mean to a client that watches a repository.

#include "Server/Watch/RepositoryChanges.h"

#include <gtest/gtest.h>

#include <string_view>

namespace neb::test {
namespace {

using namespace neb::nebsc;

constexpr GitFolderRole onlyWorktree{.isOfWorktree = true, .isShared = true};
constexpr GitFolderRole linkedWorktree{.isOfWorktree = true, .isShared = false};
constexpr GitFolderRole sharedFolder{.isOfWorktree = false, .isShared = true};

TEST(RepositoryChanges, FollowFromThePathInTheGitFolder) {
    struct Row {
        std::string_view path;
        std::uint32_t ofWorktree;
        std::uint32_t shared;
    };
    constexpr Row rows[] = {
        {"HEAD", changedHead, changedNothing},
        {"logs/HEAD", changedHead, changedNothing},
        {"index", changedIndex, changedNothing},
        {"MERGE_HEAD", changedOperation, changedNothing},
        {"rebase-merge", changedOperation, changedNothing},
        {"rebase-merge/msgnum", changedOperation, changedNothing},
        {"refs/bisect/bad", changedOperation | changedReferences, changedNothing},
        {"refs/heads", changedNothing, changedReferences},
        {"refs/heads/topic/one", changedNothing, changedReferences},
        {"refs/tags/v1", changedNothing, changedReferences},
        {"packed-refs", changedNothing, changedReferences},
        {"refs/stash", changedNothing, changedStash},
        {"logs/refs/stash", changedNothing, changedStash},
        {"config", changedNothing, changedConfiguration},
        {"config.worktree", changedConfiguration, changedNothing},
        {"info/exclude", changedNothing, changedConfiguration},
        {"info/sparse-checkout", changedConfiguration, changedNothing},
        {"reftable/tables.list", changedHead | changedReferences | changedStash,
         changedHead | changedReferences | changedStash},
        {"index.lock", changedNothing, changedNothing},
        {"refs/heads/main.lock", changedNothing, changedNothing},
        {"reftable/0x000000000001-0x000000000002-3b1c.ref", changedNothing, changedNothing},
        {"FETCH_HEAD", changedNothing, changedNothing},
        {"COMMIT_EDITMSG", changedNothing, changedNothing},
        {"objects", changedNothing, changedNothing},
        {"indexes", changedNothing, changedNothing},
        {"refsfile", changedNothing, changedNothing},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(changesOfGitPath(row.path, linkedWorktree), row.ofWorktree) << row.path;
        EXPECT_EQ(changesOfGitPath(row.path, sharedFolder), row.shared) << row.path;
        EXPECT_EQ(changesOfGitPath(row.path, onlyWorktree), row.ofWorktree | row.shared)
            << row.path;
    }
}

TEST(RepositoryChanges, AreInFewFoldersOfGit) {
    for (const char* path : {"", "refs", "refs/heads", "refs/heads/a/b", "logs", "logs/refs",
                             "info", "reftable", "rebase-merge", "rebase-apply", "sequencer"}) {
        EXPECT_TRUE(isWatchedGitFolder(path)) << path;
    }
    for (const char* path :
         {"objects", "objects/ab", "hooks", "modules", "worktrees", "logs/refs/heads", "lfs"}) {
        EXPECT_FALSE(isWatchedGitFolder(path)) << path;
    }
}

TEST(RepositoryChanges, HaveANameEach) {
    std::uint32_t named = changedNothing;
    for (const RepositoryChangeName& row : repositoryChangeNames) {
        EXPECT_EQ(named & row.change, 0U) << row.name;
        named |= row.change;
    }
    EXPECT_EQ(named, changedGitFolder | changedWorkingTree);
}

}  // namespace
}  // namespace neb::test
