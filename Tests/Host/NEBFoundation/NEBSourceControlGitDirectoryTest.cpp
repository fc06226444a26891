#include "NEBFoundation/NEBSourceControlGitDirectory.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "Support/TemporaryFolder.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

TEST(GitDirectory, OfAWorkingCopyIsFoundFromItsFolders) {
    const test::TestRepository repository;
    std::filesystem::create_directories(repository.path("a/b"));
    for (const char* folder : {"", "a", "a/b", "a/missing/folders"}) {
        const auto found = NEBSourceControlFindGitDirectory(repository.path(folder));
        ASSERT_TRUE(found) << folder;
        EXPECT_EQ(found->path, repository.path(".git"));
        EXPECT_EQ(found->commonPath, found->path);
        EXPECT_EQ(found->workingCopy, repository.path());
    }
}

TEST(GitDirectory, OfALinkedWorktreeSharesTheCommonFolder) {
    const test::TestRepository repository;
    repository.commitFile("a", "a\n");
    const test::TemporaryFolder folder;
    repository.git({"worktree", "add", "--quiet", folder.path("w"), "HEAD"});
    const auto found = NEBSourceControlFindGitDirectory(folder.path("w"));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->path, repository.path(".git/worktrees/w"));
    EXPECT_EQ(found->commonPath, repository.path(".git"));
    EXPECT_EQ(found->workingCopy, folder.path("w"));
}

TEST(GitDirectory, OfASubmoduleIsItsOwn) {
    const test::TestRepository source;
    source.commitFile("a", "a\n");
    const test::TestRepository repository;
    repository.git(
        {"-c", "protocol.file.allow=always", "submodule", "--quiet", "add", source.path(), "sub"});
    const auto found = NEBSourceControlFindGitDirectory(repository.path("sub"));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->path, repository.path(".git/modules/sub"));
    EXPECT_EQ(found->commonPath, found->path);
}

TEST(GitDirectory, OfABareRepositoryIsTheFolder) {
    const test::TestRepository repository;
    repository.git({"init", "--quiet", "--bare", "bare.git"});
    const auto found = NEBSourceControlFindGitDirectory(repository.path("bare.git"));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->path, repository.path("bare.git"));
    EXPECT_EQ(found->workingCopy, "");
}

TEST(GitDirectory, IsAbsentOutsideARepository) {
    const test::TemporaryFolder folder;
    EXPECT_FALSE(NEBSourceControlFindGitDirectory(folder.path()));
    EXPECT_FALSE(NEBSourceControlFindGitDirectory(""));
    folder.write("w/.git", "gitdir:\n");
    EXPECT_FALSE(NEBSourceControlFindGitDirectory(folder.path("w")));
}

}  // namespace
}  // namespace neb
