#include "GitExtensions/GitChangeWorktrees.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "Classes/GitExtensions/ChangeRequests.h"

namespace neb::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ChangeWorktrees : public ChangeTest {
protected:
    void SetUp() override {
        ChangeTest::SetUp();
        repository.commitFile("a.c", "1\n");
        repository.commitFile("a.c", "2\n");
    }
    [[nodiscard]] Operation changed(const char* action, const std::string& path,
                                    NEBDictionary options = {},
                                    const std::string& revision = "") const {
        options.set(NEBSourceControlRequestOptionAction, action);
        const auto request = requestOf(NEBSourceControlRequestWorktrees, std::move(options));
        if (!path.empty()) {
            request->destination = NEBValue(Data(path));
        }
        if (!revision.empty()) {
            request->startingRevision = revision;
        }
        return performed(request);
    }
    [[nodiscard]] Operation removed(const std::string& name, NEBDictionary options = {}) const {
        return changed("remove", folder.path(name), std::move(options));
    }
    /// Adds a worktree with this new branch.
    void addWorktree(const std::string& branch) const {
        repository.git({"worktree", "add", "-q", "-b", branch, folder.path(branch)});
    }
    [[nodiscard]] std::string headIn(const std::string& name) const {
        return git({"-C", folder.path(name), "rev-parse", "HEAD"});
    }
    [[nodiscard]] bool isThere(const std::string& name) const {
        return std::filesystem::exists(folder.path(name));
    }

    TemporaryFolder folder;
};

NEBDictionary newBranch(const std::string& name) {
    return {{NEBSourceControlRequestOptionBranch, name},
            {NEBSourceControlRequestOptionCreateBranch, true}};
}

TEST_F(ChangeWorktrees, AreAddedWithANewBranch) {
    for (const std::string name : {"new", "b\xe4r", " sp ace"}) {
        const std::string branch = "of/" + std::string(trimmed(name)).substr(0, 1);
        const auto added = changed("add", folder.path(name), newBranch(branch), "HEAD~1");
        ASSERT_EQ(added->error(), std::nullopt);
        ASSERT_EQ(added->result()->size(), 1U);
        const NEBDictionary& record = added->result()->front();
        EXPECT_EQ(nameIn(record, NEBSourceControlOperationWorktreeKey,
                         NEBSourceControlOperationWorktreeBytesKey),
                  folder.path(name));
        EXPECT_EQ(record.text(NEBSourceControlOperationBranchKey), "refs/heads/" + branch);
        EXPECT_EQ(headIn(name), git({"rev-parse", "HEAD~1"}));
    }
}

TEST_F(ChangeWorktrees, AreAddedWithAnExistingBranchOrNone) {
    repository.git({"branch", "side"});
    EXPECT_EQ(
        changed("add", folder.path("w"), {{NEBSourceControlRequestOptionBranch, "side"}})->error(),
        std::nullopt);
    EXPECT_EQ(git({"-C", folder.path("w"), "symbolic-ref", "HEAD"}), "refs/heads/side");
    const auto detached = changed("add", folder.path("d"), {}, "HEAD~1");
    EXPECT_EQ(detached->error(), std::nullopt);
    EXPECT_TRUE(detached->result()->front().contains(NEBSourceControlOperationIsDetachedKey));
    EXPECT_EQ(headIn("d"), git({"rev-parse", "HEAD~1"}));
}

/// git itself would create the branch.
TEST_F(ChangeWorktrees, AreNotAddedWithTheBranchOfARemote) {
    repository.git({"update-ref", "refs/remotes/origin/topic", "HEAD"});
    repository.git({"config", "remote.origin.url", "."});
    repository.git({"config", "remote.origin.fetch", "+refs/heads/*:refs/remotes/origin/*"});
    EXPECT_THAT(
        changed("add", folder.path("w"), {{NEBSourceControlRequestOptionBranch, "topic"}})->error(),
        HasErrorClass(NEBSourceControlBranchUnknownErrorClass));
    EXPECT_EQ(git({"branch"}), "* main");
}

/// What names a commit, or several branches, is not the name of a branch.
TEST_F(ChangeWorktrees, AreNotAddedWithARevision) {
    repository.git({"branch", "topic/a"});
    for (const char* name :
         {"main~1", "main@{1}", "main^{commit}", "mai*", "topic", "topic/", ""}) {
        EXPECT_THAT(changed("add", folder.path("w"), {{NEBSourceControlRequestOptionBranch, name}})
                        ->error(),
                    HasErrorClass(NEBSourceControlBranchUnknownErrorClass))
            << name;
        EXPECT_FALSE(isThere("w")) << name;
    }
}

TEST_F(ChangeWorktrees, AreAddedOnlyWhereNothingIs) {
    folder.write("full/file", "mine");
    EXPECT_THAT(changed("add", folder.path("full"), newBranch("x"))->error(),
                HasErrorClass(NEBSourceControlDestinationExistsErrorClass));
    EXPECT_EQ(git({"branch"}), "* main") << "no branch is left behind";
    EXPECT_THAT(
        changed("add", folder.path("w"), {{NEBSourceControlRequestOptionBranch, "main"}})->error(),
        HasErrorClass(NEBSourceControlBranchInUseErrorClass));
    EXPECT_THAT(changed("add", folder.path("w"), newBranch("main"))->error(),
                HasErrorClass(NEBSourceControlBranchExistsErrorClass));
    EXPECT_THAT(changed("add", folder.path("w"), newBranch("x"), "nosuch")->error(),
                HasErrorClass(NEBSourceControlRevisionUnknownErrorClass));
    EXPECT_FALSE(isThere("w"));
}

TEST_F(ChangeWorktrees, AreRemovedIfNothingIsLost) {
    addWorktree("side");
    const auto gone = removed("side");
    EXPECT_EQ(gone->error(), std::nullopt);
    EXPECT_THAT(textsOf(*gone, NEBSourceControlOperationBranchKey), ElementsAre("refs/heads/side"));
    EXPECT_FALSE(isThere("side"));
    EXPECT_EQ(git({"rev-parse", "side"}), head()) << "the branch stays";
}

TEST_F(ChangeWorktrees, KeepFilesUnlessForced) {
    addWorktree("side");
    folder.write("side/a.c", "changed\n");
    folder.write("side/dir/new", "u\n");
    const auto refused = removed("side");
    EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlLocalChangesErrorClass));
    EXPECT_THAT(refused->error()->files, ElementsAre("a.c", "dir/new"));
    const auto listed = removed("side", {{NEBSourceControlRequestOptionDryRun, true}});
    EXPECT_THAT(textsOf(*listed, NEBSourceControlOperationStateKey),
                ElementsAre("modified", "untracked"));
    EXPECT_EQ(folder.read("side/a.c"), "changed\n");
    EXPECT_EQ(removed("side", {{NEBSourceControlRequestOptionForce, true}})->error(), std::nullopt);
    EXPECT_FALSE(isThere("side"));
}

/// git itself loses them.
TEST_F(ChangeWorktrees, KeepCommitsWithoutABranchUnlessForced) {
    repository.git({"worktree", "add", "-q", "--detach", folder.path("d")});
    repository.git({"-C", folder.path("d"), "commit", "-q", "--allow-empty", "-m", "Mine"});
    const std::string id = headIn("d");
    const auto refused = removed("d");
    EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlBranchNotMergedErrorClass));
    EXPECT_THAT(refused->error()->localizedDescription().value_or(""), HasSubstr(id));
    EXPECT_THAT(textsOf(*removed("d", {{NEBSourceControlRequestOptionDryRun, true}}),
                        NEBSourceControlOperationObjectIDKey),
                ElementsAre(id));
    repository.git({"branch", "saved", id});
    EXPECT_EQ(removed("d")->error(), std::nullopt);
}

TEST_F(ChangeWorktrees, ArePrunedIfTheirFolderIsMissing) {
    addWorktree("gone");
    addWorktree("stays");
    std::filesystem::remove_all(folder.path("gone"));
    EXPECT_THAT(textsOf(*changed("prune", ""), NEBSourceControlOperationWorktreeKey),
                ElementsAre(folder.path("gone")));
    EXPECT_THAT(*changed("prune", "")->result(), IsEmpty());
    EXPECT_TRUE(isThere("stays"));
    addWorktree("again");
    std::filesystem::remove_all(folder.path("again"));
    EXPECT_EQ(removed("again")->error(), std::nullopt);
}

TEST_F(ChangeWorktrees, SayWhyNot) {
    addWorktree("locked");
    repository.git({"worktree", "lock", "--reason", "on a stick", folder.path("locked")});
    const auto locked = removed("locked", {{NEBSourceControlRequestOptionForce, true}});
    EXPECT_THAT(locked->error(), HasErrorClass(NEBSourceControlWorktreeLockedErrorClass));
    EXPECT_THAT(locked->error()->localizedDescription().value_or(""),
                HasSubstr("locked (on a stick)"));
    EXPECT_THAT(changed("remove", repository.path())->error(),
                HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    EXPECT_THAT(removed("nosuch")->error(), HasErrorClass(NEBSourceControlPathUnknownErrorClass));
    EXPECT_THAT(changed("remove", "")->error(),
                HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    EXPECT_THAT(changed("move", "x")->error(),
                HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    EXPECT_THAT(
        changed("add", folder.path("w"), {{NEBSourceControlRequestOptionBranch, "main"}}, "HEAD")
            ->error(),
        HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    EXPECT_TRUE(isThere("locked"));
}

}  // namespace
}  // namespace neb::test
