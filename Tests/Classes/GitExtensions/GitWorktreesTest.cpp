#include "GitExtensions/GitWorktrees.h"

#include <filesystem>

#include "Classes/GitExtensions/ExtensionTest.h"

namespace neb::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(WorktreeParser, ReadsAttributes) {
    using std::string_literals::operator""s;
    const auto records = recordsOf<GitWorktreesOperation>(
        requestFor(NEBSourceControlRequestWorktrees, "/w"),
        "worktree /b.git\0bare\0\0worktree /w\nx\0HEAD "s + a40 +
            "\0branch refs/heads/\xe4\0locked\0\0worktree /y\0HEAD "s + std::string(40, '0') +
            "\0detached\0locked a reason\0prunable gitdir gone\0\0"s);
    EXPECT_THAT(
        records,
        ElementsAre(NEBDictionary{{NEBSourceControlOperationWorktreeKey, "/b.git"},
                                  {NEBSourceControlOperationIsBareKey, true},
                                  {NEBSourceControlOperationIsMainKey, true}},
                    NEBDictionary{{NEBSourceControlOperationWorktreeKey, "/w\nx"},
                                  {NEBSourceControlOperationObjectIDKey, a40},
                                  {NEBSourceControlOperationBranchKey, "refs/heads/\uFFFD"},
                                  {NEBSourceControlOperationBranchBytesKey,
                                   NEBValue::ofBytes("refs/heads/\xe4")},
                                  {NEBSourceControlOperationIsLockedKey, true}},
                    NEBDictionary{{NEBSourceControlOperationWorktreeKey, "/y"},
                                  {NEBSourceControlOperationIsDetachedKey, true},
                                  {NEBSourceControlOperationIsLockedKey, true},
                                  {NEBSourceControlOperationLockReasonKey, "a reason"},
                                  {NEBSourceControlOperationIsPrunableKey, true},
                                  {NEBSourceControlOperationPruneReasonKey, "gitdir gone"}}));
}

class Worktrees : public ExtensionTest {};

TEST_F(Worktrees, AreAllOfTheRepository) {
    repository.commitFile("a", "1");
    const TemporaryFolder folder;
    const std::string name = "li\nn\xe4";
    repository.git({"worktree", "add", "-q", "-b", "side", folder.path(name)});
    repository.git({"worktree", "add", "-q", "--detach", folder.path("gone")});
    repository.git({"worktree", "lock", "--reason", "mine", folder.path(name)});
    std::filesystem::remove_all(folder.path("gone"));
    const auto records = recordsOf(requestFor(NEBSourceControlRequestWorktrees, folder.path(name)));
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[0].text(NEBSourceControlOperationWorktreeKey), repository.path());
    EXPECT_TRUE(records[0].contains(NEBSourceControlOperationIsMainKey));
    const std::string commit = lineOf(repository, {"rev-parse", "HEAD"});
    for (const NEBDictionary& record : records) {
        EXPECT_EQ(record.text(NEBSourceControlOperationObjectIDKey), commit);
        const std::string path = nameIn(record, NEBSourceControlOperationWorktreeKey,
                                        NEBSourceControlOperationWorktreeBytesKey);
        if (path == folder.path(name)) {
            EXPECT_EQ(record.text(NEBSourceControlOperationBranchKey), "refs/heads/side");
            EXPECT_EQ(record.text(NEBSourceControlOperationLockReasonKey), "mine");
        } else if (path == folder.path("gone")) {
            EXPECT_TRUE(record.contains(NEBSourceControlOperationIsPrunableKey));
            EXPECT_TRUE(record.contains(NEBSourceControlOperationIsDetachedKey));
        }
    }
}

/// git before 2.36 does not know -z.
TEST_F(Worktrees, NameTheVersionOfGitThatTheyNeed) {
    const TemporaryFolder folder;
    const std::string old = folder.writeProgram(
        "git", "#!/bin/sh\necho \"error: unknown switch \\`z'\" >&2\nexit 129\n");
    StandIn<GitWorktreesOperation> operation(old, request(NEBSourceControlRequestWorktrees));
    operation.start();
    EXPECT_THAT(operation.error(), HasErrorClass("request-invalid"));
    EXPECT_THAT(operation.error()->localizedDescription().value_or(""),
                HasSubstr("git 2.36 or later"));
}

}  // namespace
}  // namespace neb::test
