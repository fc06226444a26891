// Each request type below 1000 has a command that performs it.

#include <set>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using Arguments = std::vector<std::string>;

/// A command that performs a request of the type, in a working copy with a remote "origin" that has
/// the branch "main". No arguments for an unsupported type.
struct Row {
    std::int32_t type;
    Arguments arguments;
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
        const bool isUnsupported = NEBSourceControlRequestTypeName(row.type) == "unsupported";
        EXPECT_EQ(row.arguments.empty(), isUnsupported) << row.type;
        if (isUnsupported) {
            continue;
        }
        Arguments arguments = row.arguments;
        arguments.emplace_back("--json");
        const NebscOutcome outcome = nebsc(arguments);
        ASSERT_EQ(outcome.exitStatus, 0) << testing::PrintToString(arguments) << outcome.errors;
        EXPECT_EQ(outcome.json()["type"], row.type);
    }
    for (const auto& type : NEBSourceControlAllRequestTypes()) {
        const bool isExtended = type.type >= NEBSourceControlFirstExtendedRequestType;
        EXPECT_EQ(types.contains(type.type), !isExtended) << type.name;
    }
}

}  // namespace
}  // namespace neb::test
