// "sourceControl/watch": which changes of a repository the server reports.

#include "nebsc/Server/Watch/WatchTest.h"

#include <filesystem>
#include <fstream>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/Server/SlowGit.h"

namespace neb::test {
namespace {

using testing::IsEmpty;
using testing::IsSupersetOf;
using JSON = ServerClient::JSON;

// ---- the folders of git -----------------------------------------------------------------------

TEST_F(WatchTest, ReportsACommit) {
    const std::string name = watch(repository.path());
    repository.commitFile("b", "1");
    const JSON message = client.receive();
    EXPECT_EQ(message["method"], "sourceControl/didChange");
    EXPECT_EQ(message["params"]["watch"], name);
    EXPECT_EQ(message["params"]["location"], repository.path());
    EXPECT_THAT(reportedChanges(repository), testing::IsSubsetOf({"head", "references", "index"}));
}

TEST_F(WatchTest, NamesWhatHasChanged) {
    repository.git({"checkout", "-q", "-b", "topic"});
    repository.commitFile("a", "2\n");
    repository.git({"checkout", "-q", "main"});
    repository.commitFile("a", "3\n");
    watch(repository.path());
    repository.write("a", "4\n");
    repository.git({"add", "a"});
    EXPECT_EQ(reportedChanges(repository), Changes({"index"}));
    repository.git({"stash"});
    EXPECT_THAT(reportedChanges(repository), IsSupersetOf({"stash", "index"}));
    repository.git({"stash", "drop"});
    EXPECT_THAT(reportedChanges(repository), IsSupersetOf({"stash"}));
    repository.git({"tag", "v1"});
    EXPECT_EQ(reportedChanges(repository), Changes({"references"}));
    EXPECT_EQ(repository.gitStatus({"merge", "-q", "topic"}), 1);
    EXPECT_THAT(reportedChanges(repository), IsSupersetOf({"operation", "index"}));
    repository.git({"merge", "--abort"});
    EXPECT_THAT(reportedChanges(repository), IsSupersetOf({"operation"}));
    EXPECT_EQ(repository.gitStatus({"rebase", "-q", "topic"}), 1);
    EXPECT_THAT(reportedChanges(repository), IsSupersetOf({"operation", "head"}));
    repository.git({"rebase", "--abort"});
    EXPECT_THAT(reportedChanges(repository), IsSupersetOf({"operation", "head"}));
    repository.git({"checkout", "-q", "topic"});
    EXPECT_THAT(reportedChanges(repository), IsSupersetOf({"head"}));
}

TEST_F(WatchTest, FollowsReferencesInFoldersThatAppearAndDisappear) {
    watch(repository.path());
    for (const char* branch : {"deep/er/one", "deep/two", "deep/er/three"}) {
        repository.git({"branch", branch});
        EXPECT_EQ(reportedChanges(repository), Changes({"references"})) << branch;
        repository.git({"branch", "-q", "-D", branch});
        EXPECT_EQ(reportedChanges(repository), Changes({"references"})) << branch;
    }
    repository.git({"pack-refs", "--all"});
    EXPECT_THAT(reportedChanges(repository), IsSupersetOf({"references"}));
    repository.git({"update-ref", "refs/heads/deep/er/one", "HEAD"});
    EXPECT_EQ(reportedChanges(repository), Changes({"references"}));
}

TEST_F(WatchTest, SeesCommitsOfABranchWithoutReflog) {
    repository.git({"config", "core.logAllRefUpdates", "false"});
    std::filesystem::remove_all(repository.path(".git/logs"));
    repository.git({"checkout", "-q", "-b", "new/branch"});
    watch(repository.path());
    for (const bool isPacked : {false, true}) {
        if (isPacked) {
            repository.git({"pack-refs", "--all"});
            reportedChanges(repository);
        }
        repository.git({"commit", "-q", "--allow-empty", "-m", "message"});
        EXPECT_THAT(reportedChanges(repository), IsSupersetOf({"head", "references"})) << isPacked;
    }
}

TEST_F(WatchTest, OfALinkedWorktreeLeavesOutTheOthers) {
    const TemporaryFolder folder;
    repository.git({"worktree", "add", "-q", folder.path("linked")});
    watch(folder.path("linked"));
    repository.write("b", "1");
    repository.git({"add", "b"});
    EXPECT_THAT(reportedChanges(repository), IsEmpty());
    repository.git({"commit", "-q", "-m", "b"});
    EXPECT_EQ(reportedChanges(repository), Changes({"references"}));
    repository.git({"-C", folder.path("linked"), "commit", "-q", "--allow-empty", "-m", "c"});
    EXPECT_THAT(reportedChanges(repository), IsSupersetOf({"head", "references"}));
}

TEST_F(WatchTest, WorksInSubmodulesAndBareRepositories) {
    const TestRepository outer;
    outer.git({"-c", "protocol.file.allow=always", "submodule", "--quiet", "add", repository.path(),
               "inner"});
    watch(outer.path("inner"), true);
    outer.git({"-C", "inner", "tag", "v1"});
    EXPECT_EQ(changesUpTo({"references"}), Changes({"references"}));
    const TestRepository bare;
    bare.git({"init", "-q", "--bare", bare.path("bare.git")});
    watch(bare.path("bare.git"));
    repository.git({"push", "-q", bare.path("bare.git"), "main"});
    EXPECT_THAT(changesUpTo({"references"}), IsSupersetOf({"references"}));
}

TEST_F(WatchTest, IsNotWokenByBackgroundRequests) {
    watch(repository.path(), true);
    // A file with a new time: a status in the foreground would refresh the index.
    std::filesystem::last_write_time(
        repository.path("a"),
        std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
    changesUpTo({"workingTree"});
    const auto perform = [this](std::int32_t type) {
        JSON request = requestAbout(type, repository.path());
        request["background"] = true;
        EXPECT_EQ(call("sourceControl/perform", request)["result"]["error"], nullptr);
    };
    perform(NEBSourceControlRequestStatus);
    perform(NEBSourceControlRequestWorkingCopyState);
    EXPECT_THAT(client.others(), IsEmpty());
    EXPECT_THAT(reportedChanges(repository), IsEmpty());
    // git-diff(1) refreshes the index in the background, too; the second time, it is up to date.
    perform(NEBSourceControlRequestChanges);
    reportedChanges(repository);
    perform(NEBSourceControlRequestChanges);
    EXPECT_THAT(client.others(), IsEmpty());
    EXPECT_THAT(reportedChanges(repository), IsEmpty());
}

// ---- the working tree -------------------------------------------------------------------------

TEST_F(WatchTest, IncludesTheWorkingTreeOnRequest) {
    repository.write("folder/deep/b", "1");
    repository.write("ignored/c", "1");
    repository.write(".gitignore", "ignored\n");
    watch(repository.path(), true);
    const auto expectChange = [this] {
        EXPECT_EQ(reportedChanges(repository), Changes({"workingTree"}));
    };
    repository.write("a", "2");
    expectChange();
    repository.write("folder/deep/b", "2");
    expectChange();
    repository.write("ignored/c", "2");
    EXPECT_THAT(reportedChanges(repository), IsEmpty());
    std::filesystem::remove(repository.path("folder/deep/b"));
    expectChange();
}

TEST_F(WatchTest, FollowsFoldersThatAreNoLongerIgnored) {
    repository.write("first/a", "1");
    repository.write("second/a", "1");
    repository.write(".gitignore", "first\n");
    repository.write(".git/info/exclude", "second\n");
    watch(repository.path(), true);
    repository.write(".gitignore", "");
    reportedChanges(repository);
    repository.write("first/a", "2");
    EXPECT_EQ(reportedChanges(repository), Changes({"workingTree"}));
    repository.write("second/a", "2");
    EXPECT_THAT(reportedChanges(repository), IsEmpty());
    repository.write(".git/info/exclude", "");
    reportedChanges(repository);
    repository.write("second/a", "3");
    EXPECT_EQ(reportedChanges(repository), Changes({"workingTree"}));
}

TEST_F(WatchTest, LeavesTheWorkingTreeOutOtherwise) {
    watch(repository.path());
    repository.write("a", "2");
    repository.write("new/b", "2");
    EXPECT_THAT(reportedChanges(repository), IsEmpty());
}

TEST_F(WatchTest, FollowsNewAndMovedFolders) {
    repository.write(".gitignore", "out\n");
    watch(repository.path(), true);
    repository.write("new/deep/out/b", "1");
    repository.write("new/deep/b", "1");
    EXPECT_EQ(reportedChanges(repository), Changes({"workingTree"}));
    repository.write("new/deep/out/b", "2");
    EXPECT_THAT(reportedChanges(repository), IsEmpty());
    repository.write("new/deep/b", "2");
    EXPECT_EQ(reportedChanges(repository), Changes({"workingTree"}));
    std::filesystem::rename(repository.path("new"), repository.path("moved"));
    EXPECT_EQ(reportedChanges(repository), Changes({"workingTree"}));
    repository.write("moved/deep/b", "3");
    EXPECT_EQ(reportedChanges(repository), Changes({"workingTree"}));
    repository.write("out/b", "1");
    reportedChanges(repository);
    repository.write("out/b", "2");
    EXPECT_THAT(reportedChanges(repository), IsEmpty());
}

TEST_F(WatchTest, ReportsEverythingWhenTheSystemDropsEvents) {
    std::ifstream setting("/proc/sys/fs/inotify/max_queued_events");
    int limit = 0;
    setting >> limit;
    ASSERT_GT(limit, 0);
    watch(repository.path(), true);
    client.signal(SIGSTOP);
    for (int i = 0; i <= limit / 2; ++i) {
        repository.write(i % 2 == 0 ? "even" : "odd", "1");
    }
    client.signal(SIGCONT);
    EXPECT_THAT(changesUpTo({"workingTree", "head", "references", "index", "stash", "operation",
                             "configuration"}),
                testing::SizeIs(7));
    repository.commitFile("b", "1");
    EXPECT_THAT(reportedChanges(repository), IsSupersetOf({"head", "workingTree"}));
}

}  // namespace
}  // namespace neb::test
