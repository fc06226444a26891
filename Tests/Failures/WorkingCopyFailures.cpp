// The state of the working copy: local changes, conflicts, unfinished operations.

#include <filesystem>

#include "Failure.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

namespace neb::test {

namespace {

Request merge(Scene& scene, const std::string& what = "topic") {
    return scene.request(NEBSourceControlRequestMerge).to(what);
}

Request checkout(Scene& scene, const std::string& what = "topic") {
    return scene.request(NEBSourceControlRequestCheckout).to(what);
}

/// Adds a branch "topic" that renames "a" to "b"; main is checked out.
const TestRepository& withRenamedTopic(Scene& scene) {
    const TestRepository& work = scene.work();
    work.commitFile("a", "one\ntwo\nthree\nfour\n");
    work.git({"checkout", "--quiet", "-b", "topic"});
    work.git({"mv", "a", "b"});
    work.git({"commit", "--quiet", "-m", "rename"});
    work.git({"checkout", "--quiet", "main"});
    return work;
}

const Failure failures[] = {
    {.how = "a merge that would overwrite local changes",
     .errorClass = NEBSourceControlLocalChangesErrorClass,
     .code = NEBSourceControlUncommittedChangesError,
     .exitStatus = 1,
     .files = {"a", "sp ace\"s"},
     .provoke = [](Scene& scene) -> Request {
         scene.work().commitFile("sp ace\"s", "1\n");
         scene.withTopic("a", "topic\n");
         scene.work().git({"checkout", "--quiet", "topic"});
         scene.work().commitFile("sp ace\"s", "topic\n");
         scene.work().git({"checkout", "--quiet", "main"});
         scene.work().write("a", "mine\n");
         scene.work().write("sp ace\"s", "mine\n");
         return merge(scene);
     }},
    {.how = "a checkout that would lose staged changes",
     .errorClass = NEBSourceControlLocalChangesErrorClass,
     .code = NEBSourceControlUncommittedChangesError,
     .exitStatus = 128,
     .files = {"a"},
     .provoke = [](Scene& scene) -> Request {
         scene.skipSinceGit(55, "a checkout stashes local changes and applies them afterwards");
         scene.withTopic("a", "topic\n").write("a", "mine\n");
         scene.work().git({"add", "a"});
         scene.work().write("a", "mine again\n");
         return checkout(scene);
     }},
    {.how = "a checkout that would overwrite untracked files",
     .errorClass = NEBSourceControlUntrackedInTheWayErrorClass,
     .exitStatus = 128,
     .laterExitStatus = 1,
     .files = {"new\\file"},
     .provoke = [](Scene& scene) -> Request {
         scene.withTopic("new\\file", "topic\n").write("new\\file", "mine\n");
         return checkout(scene);
     }},
    {.how = "a merge that would overwrite untracked files",
     .errorClass = NEBSourceControlUntrackedInTheWayErrorClass,
     .exitStatus = 1,
     .files = {"new"},
     .provoke = [](Scene& scene) -> Request {
         scene.withTopic("new", "topic\n").write("new", "mine\n");
         return merge(scene);
     }},
    {.how = "an update that would overwrite untracked files",
     .errorClass = NEBSourceControlUntrackedInTheWayErrorClass,
     .exitStatus = 1,
     .files = {"new"},
     .provoke = [](Scene& scene) -> Request {
         scene.withTopic("new", "topic\n").write("new", "mine\n");
         return scene.request(NEBSourceControlRequestUpdate).to("topic");
     }},
    {.how = "a merge of a change and a removal",
     .errorClass = NEBSourceControlConflictErrorClass,
     .exitStatus = 1,
     .files = {"a"},
     .provoke = [](Scene& scene) -> Request {
         scene.withTopic("a", std::nullopt).commitFile("a", "main\n");
         return merge(scene);
     }},
    {.how = "an update that merges a change and a removal",
     .errorClass = NEBSourceControlConflictErrorClass,
     .exitStatus = 1,
     .files = {"a"},
     .provoke = [](Scene& scene) -> Request {
         scene.withTopic("a", std::nullopt).commitFile("a", "main\n");
         return scene.request(NEBSourceControlRequestUpdate).to("topic");
     }},
    {.how = "a merge of a rename and a removal",
     .errorClass = NEBSourceControlConflictErrorClass,
     .exitStatus = 1,
     .files = {"b"},
     .provoke = [](Scene& scene) -> Request {
         const TestRepository& work = withRenamedTopic(scene);
         work.git({"rm", "--quiet", "a"});
         work.git({"commit", "--quiet", "-m", "remove"});
         return merge(scene);
     }},
    {.how = "a merge of two renames",
     .errorClass = NEBSourceControlConflictErrorClass,
     .exitStatus = 1,
     .files = {"a", "c", "b"},
     .provoke = [](Scene& scene) -> Request {
         const TestRepository& work = withRenamedTopic(scene);
         work.git({"mv", "a", "c"});
         work.git({"commit", "--quiet", "-m", "rename otherwise"});
         return merge(scene);
     }},
    {.how = "a merge of a file and a folder of the same name",
     .errorClass = NEBSourceControlConflictErrorClass,
     .exitStatus = 1,
     .files = {"d"},
     .provoke = [](Scene& scene) -> Request {
         scene.withTopic("d/file", "topic\n").commitFile("d", "main\n");
         return merge(scene);
     }},
    {.how = "a merge of a file and a symbolic link of the same name",
     .errorClass = NEBSourceControlConflictErrorClass,
     .exitStatus = 1,
     .files = {"l"},
     .provoke = [](Scene& scene) -> Request {
         const TestRepository& work = scene.withTopic("l", "topic\n");
         work.git({"checkout", "--quiet", "main"});
         std::filesystem::create_symlink("a", work.path("l"));
         work.git({"add", "l"});
         work.git({"commit", "--quiet", "-m", "link"});
         return merge(scene);
     }},
    {.how = "a rebase onto Subversion that ends in a conflict",
     .errorClass = NEBSourceControlConflictErrorClass,
     .exitStatus = 1,
     .files = {"a"},
     .provoke = [](Scene& scene) -> Request {
         scene.cloneSubversion();
         scene.work().git({"rm", "--quiet", "a"});
         scene.work().git({"commit", "--quiet", "-m", "remove"});
         scene.subversion().commitFile("trunk/a", "theirs\n");
         scene.work().git({"svn", "fetch", "--quiet"});
         return scene.request(NEBSourceControlRequestUpdate)
             .to("refs/remotes/git-svn")
             .bySubversion();
     }},
    {.how = "a rebase onto Subversion with local changes",
     .errorClass = NEBSourceControlNeedsCleanTreeErrorClass,
     .code = NEBSourceControlUncommittedChangesError,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.cloneSubversion();
         scene.work().write("a", "mine\n");
         return scene.request(NEBSourceControlRequestUpdate)
             .to("refs/remotes/git-svn")
             .bySubversion();
     }},
    {.how = "a commit during a conflict",
     .errorClass = NEBSourceControlConflictUnresolvedErrorClass,
     .exitStatus = 128,
     .files = {"a"},
     .provoke = [](Scene& scene) -> Request {
         scene.inConflict();
         return RequestBuilder(NEBSourceControlRequestCommit, scene.work().path());
     }},
    {.how = "a merge during a conflict",
     .errorClass = NEBSourceControlConflictUnresolvedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.inConflict();
         return merge(scene);
     }},
    {.how = "a checkout during a conflict",
     .errorClass = NEBSourceControlConflictUnresolvedErrorClass,
     .exitStatus = 1,
     .files = {"a"},
     .provoke = [](Scene& scene) -> Request {
         scene.inConflict();
         return checkout(scene);
     }},
    {.how = "a revert of a file with conflicts",
     .errorClass = NEBSourceControlConflictUnresolvedErrorClass,
     .exitStatus = 0,
     .files = {"a"},
     .provoke = [](Scene& scene) -> Request {
         scene.inConflict();
         return scene.request(NEBSourceControlRequestRevert).on({scene.work().path("a")});
     }},
    {.how = "a merge during an uncommitted merge",
     .errorClass = NEBSourceControlMergeUnfinishedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.inConflict().git({"add", "a"});
         return merge(scene);
     }},
    {.how = "a commit of some files during an uncommitted merge",
     .errorClass = NEBSourceControlMergeUnfinishedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.inConflict().git({"add", "a"});
         return scene.commit({"a"});
     }},
    {.how = "a merge of an unrelated history",
     .errorClass = NEBSourceControlUnrelatedHistoriesErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"checkout", "--quiet", "--orphan", "other"});
         scene.work().git({"commit", "--quiet", "-m", "other"});
         scene.work().git({"checkout", "--quiet", "main"});
         return merge(scene, "other");
     }},
    {.how = "a diff against the common ancestor of unrelated histories",
     .errorClass = NEBSourceControlUnrelatedHistoriesErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"checkout", "--quiet", "--orphan", "other"});
         scene.work().git({"commit", "--quiet", "-m", "other"});
         return scene.request(NEBSourceControlRequestDiff)
             .between("main", "other")
             .with(NEBSourceControlRequestOptionDiffFromCommonAncestor, true);
     }},
    {.how = "a status in a folder without a repository",
     .errorClass = NEBSourceControlNotARepositoryErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return RequestBuilder(NEBSourceControlRequestStatus, scene.folder().path());
     }},
    {.how = "a log in a folder without a repository",
     .errorClass = NEBSourceControlNotARepositoryErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return RequestBuilder(NEBSourceControlRequestLog, scene.folder().path());
     }},
    {.how = "an info in a folder that does not exist",
     .errorClass = NEBSourceControlNotStartedErrorClass,
     .provoke = [](Scene& scene) -> Request {
         return RequestBuilder(NEBSourceControlRequestInfo, scene.folder().path("nosuch"));
     }},
    {.how = "a status of a worktree whose repository no longer exists",
     .errorClass = NEBSourceControlNotARepositoryErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"worktree", "add", "--quiet", scene.folder().path("tree")});
         std::filesystem::remove_all(scene.work().path(".git"));
         return RequestBuilder(NEBSourceControlRequestStatus, scene.folder().path("tree"));
     }},
    {.how = "a status with an invalid .git file",
     .errorClass = NEBSourceControlNotARepositoryErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.folder().write("odd/.git", "nothing of the kind\n");
         return RequestBuilder(NEBSourceControlRequestStatus, scene.folder().path("odd"));
     }},
    {.how = "a status of a bare repository",
     .errorClass = NEBSourceControlNoWorkTreeErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return RequestBuilder(NEBSourceControlRequestStatus, scene.shared());
     }},
    {.how = "an add to a bare repository",
     .errorClass = NEBSourceControlNoWorkTreeErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return RequestBuilder(NEBSourceControlRequestAdd, scene.shared()).on({"a"});
     }},
    {.how = "a checkout in a bare repository",
     .errorClass = NEBSourceControlNoWorkTreeErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return RequestBuilder(NEBSourceControlRequestCheckout, scene.shared()).to("main");
     }},
    {.how = "a status of a repository of another user",
     .errorClass = NEBSourceControlOwnerNotTrustedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         RequestBuilder ask = scene.request(NEBSourceControlRequestStatus);
         scene.setVariable("GIT_TEST_ASSUME_DIFFERENT_OWNER", "1");
         return ask;
     }},
};

}  // namespace

Failures workingCopyFailures() {
    return failures;
}

}  // namespace neb::test
