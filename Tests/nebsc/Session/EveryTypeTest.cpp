// Each request type has a command that performs it.

#include <set>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using Arguments = std::vector<std::string>;

/// A command that performs a request of the type, in a working copy with a remote "origin" that has
/// the branch "main". No arguments for a type that no command performs as its only request.
struct Row {
    std::int32_t type;
    Arguments arguments;
    /// The arguments of git that prepare the working copy; empty for none.
    Arguments preparation = {};
};

const Row rows[] = {
    {NEBSourceControlRequestAdd, {"add", "--all"}},
    {NEBSourceControlRequestCreateBranch, {"branch", "create", "new"}},
    {NEBSourceControlRequestDeleteBranch, {"branch", "delete", "spare"}},
    {NEBSourceControlRequestCommit, {"commit", "-m", "empty", "--allow-empty"}},
    {NEBSourceControlRequestIgnore, {"ignore", "build"}},
    {NEBSourceControlRequestRemove, {"rm", "b.c"}},
    {NEBSourceControlRequestAddFiles, {"add", "a.c"}},
    {NEBSourceControlRequestRevert, {"revert", "a.c"}},
    {NEBSourceControlRequestMakeDirectory, {"mkdir", "folder"}},
    {NEBSourceControlRequestMerge, {"merge", "main"}},
    {NEBSourceControlRequestCopy, {"cp", "a.c", "copy.c"}},
    {NEBSourceControlRequestMove, {"mv", "c.c", "d.c"}},
    {12, {}},
    {NEBSourceControlRequestUpdate, {"update", "--ff", "origin", "main"}},
    {NEBSourceControlRequestCheckout, {"checkout", "main"}},
    {NEBSourceControlRequestStatus, {"status"}},
    {16, {}},
    {NEBSourceControlRequestList, {"ls"}},
    {NEBSourceControlRequestLog, {"log"}},
    {NEBSourceControlRequestInfo, {"info"}},
    {NEBSourceControlRequestExportFiles, {"export", "HEAD", "a.c"}},
    {NEBSourceControlRequestExport, {"export", "HEAD", "a.c", "exported.c"}},
    {NEBSourceControlRequestExportTree, {"export-tree", "tree"}},
    {23, {}},
    {NEBSourceControlRequestListRemotes, {"remote", "list"}},
    {NEBSourceControlRequestListBranches, {"branch", "list"}},
    {NEBSourceControlRequestCurrentBranch, {"branch", "current"}},
    {NEBSourceControlRequestCreateRepository, {"init", "inner"}},
    {NEBSourceControlRequestBlame, {"blame", "a.c"}},
    {NEBSourceControlRequestClone, {"clone", ".", "clone"}},
    {NEBSourceControlRequestDiff, {"diff"}},
    {NEBSourceControlRequestListRemoteBranches, {"remote", "branches"}},
    {NEBSourceControlRequestListRemoteBranchesSecondForm, {"remote", "branches", "origin"}},
    {NEBSourceControlRequestPush, {"push", "origin", "main:other"}},
    {NEBSourceControlRequestAddRemote, {"remote", "add", "second", "/nowhere"}},
    {NEBSourceControlRequestRemoveRemote, {"remote", "rm", "spare"}},
    {NEBSourceControlRequestTrackRemoteBranch, {"branch", "track", "tracked", "origin/main"}},
    {NEBSourceControlRequestFetch, {"fetch", "origin"}},
    {NEBSourceControlRequestTrackingBranchName, {"branch", "tracking", "main"}},
    {NEBSourceControlRequestMergeBase, {"merge-base", "main", "main"}},
    {NEBSourceControlRequestWorkingCopyState, {"status", "--ignored"}},
    {NEBSourceControlRequestHistory, {"log", "--all"}},
    {NEBSourceControlRequestContent, {"cat", "HEAD:a.c"}},
    {NEBSourceControlRequestAnnotation, {"blame", "-L", "1,1", "a.c"}},
    {NEBSourceControlRequestChanges, {"diff", "--stat"}},
    {NEBSourceControlRequestStage, {"stage", "a.c"}},
    {NEBSourceControlRequestUnstage, {"unstage", "a.c"}},
    {NEBSourceControlRequestDiscard, {"discard", "--all"}, {"reset", "--quiet", "--hard"}},
    {NEBSourceControlRequestReferences, {"tag", "list"}},
    {NEBSourceControlRequestStash, {"stash", "list"}},
    // Part of status, continue, skip and abort.
    {NEBSourceControlRequestUnfinishedOperation, {}},
    {NEBSourceControlRequestCreateCommit, {"commit", "--amend", "--allow-empty"}},
    {NEBSourceControlRequestPublish, {"push", "-u", "origin", "main:published"}},
    {NEBSourceControlRequestIntegrate, {"pull", "origin", "main"}},
    {NEBSourceControlRequestPick, {"reset", "HEAD"}},
    {NEBSourceControlRequestTag, {"tag", "create", "v1"}},
    {NEBSourceControlRequestSubmodules, {"submodule", "list"}},
    {NEBSourceControlRequestWorktrees, {"worktree", "list"}},
    {NEBSourceControlRequestSettings, {"config", "list"}},
    {NEBSourceControlRequestTree, {"ls", "HEAD:"}},
    {NEBSourceControlRequestFinish, {"abort"}, {"revert", "--no-commit", "HEAD"}},
    {NEBSourceControlRequestChangeBranch, {"branch", "rename", "new", "renamed"}},
};

class EveryType : public CommandTest {
protected:
    void SetUp() override {
        for (const char* name : {"a.c", "b.c", "c.c"}) {
            repository.commitFile(name, "first\n");
        }
        repository.git({"clone", "--quiet", "--bare", ".", origin.path("origin.git")});
        repository.git({"remote", "add", "origin", origin.path("origin.git")});
        repository.git({"remote", "add", "spare", origin.path("origin.git")});
        repository.git({"fetch", "--quiet", "origin"});
        repository.git({"branch", "--quiet", "--set-upstream-to=origin/main", "main"});
        repository.git({"branch", "spare"});
    }

    TemporaryFolder origin;
};

TEST_F(EveryType, HasACommand) {
    std::set<std::int32_t> types;
    for (const Row& row : rows) {
        EXPECT_TRUE(types.insert(row.type).second) << row.type;
        const bool isPerformed = NEBSourceControlRequestTypeName(row.type) != "unsupported" &&
                                 row.type != NEBSourceControlRequestUnfinishedOperation;
        EXPECT_EQ(row.arguments.empty(), !isPerformed) << row.type;
        if (!isPerformed) {
            continue;
        }
        if (!row.preparation.empty()) {
            repository.git(row.preparation);
        }
        Arguments arguments = row.arguments;
        arguments.emplace_back("--json");
        const NebscOutcome outcome = nebsc(arguments);
        ASSERT_EQ(outcome.exitStatus, 0) << testing::PrintToString(arguments) << outcome.errors;
        EXPECT_EQ(outcome.json()["type"], row.type);
    }
    for (const auto& type : NEBSourceControlAllRequestTypes()) {
        EXPECT_TRUE(types.contains(type.type)) << type.name;
    }
}

}  // namespace
}  // namespace neb::test
