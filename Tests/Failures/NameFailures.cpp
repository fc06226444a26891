// Files, revisions, branches and remotes that do not exist, or exist already.

#include <cerrno>
#include <filesystem>

#include "Failure.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

namespace neb::test {

namespace {

Request about(Scene& scene, std::int32_t type, const std::string& destination) {
    return scene.request(type).to(destination);
}

Request branch(Scene& scene, const std::string& name, const std::string& start = "HEAD") {
    return scene.request(NEBSourceControlRequestCreateBranch)
        .to(name)
        .with(NEBSourceControlRequestOptionSourceLocation, start);
}

const Failure failures[] = {
    // files
    {.how = "an add of a file that does not exist",
     .errorClass = NEBSourceControlPathUnknownErrorClass,
     .code = NEBSourceControlNotVersionedError,
     .exitStatus = 128,
     .files = {"no such"},
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestAdd).on({"no such"});
     }},
    {.how = "an add of an ignored file",
     .errorClass = NEBSourceControlPathIgnoredErrorClass,
     .exitStatus = 1,
     .files = {"b.o"},
     .provoke = [](Scene& scene) -> Request {
         scene.work().write(".gitignore", "*.o\n");
         scene.work().write("b.o", "");
         return scene.request(NEBSourceControlRequestAdd).on({"b.o"});
     }},
    {.how = "an add of a file outside the working copy",
     .errorClass = NEBSourceControlPathOutsideErrorClass,
     .exitStatus = 128,
     .files = {"/etc/passwd"},
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestAdd).on({"/etc/passwd"});
     }},
    {.how = "an add of a file behind a symbolic link",
     .errorClass = NEBSourceControlPathOutsideErrorClass,
     .exitStatus = 128,
     .files = {"link/b"},
     .provoke = [](Scene& scene) -> Request {
         scene.work().write("d/b", "");
         std::filesystem::create_directory_symlink("d", scene.work().path("link"));
         return scene.request(NEBSourceControlRequestAdd).on({"link/b"});
     }},
    {.how = "an add of a file of a submodule",
     .errorClass = NEBSourceControlPathInSubmoduleErrorClass,
     .exitStatus = 128,
     .files = {"sub/s"},
     .provoke = [](Scene& scene) -> Request {
         const std::string commit = scene.work().git({"rev-parse", "HEAD"});
         scene.work().git({"clone", "--quiet", ".", "sub"});
         scene.work().git({"update-index", "--add", "--cacheinfo",
                           "160000," + commit.substr(0, commit.size() - 1) + ",sub"});
         scene.work().write("sub/s", "");
         return scene.request(NEBSourceControlRequestAdd).on({"sub/s"});
     }},
    {.how = "a removal of an empty name",
     .errorClass = NEBSourceControlPathInvalidErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestRemove).on({""});
     }},
    {.how = "a removal of an untracked file",
     .errorClass = NEBSourceControlPathUnknownErrorClass,
     .code = NEBSourceControlNotVersionedError,
     .exitStatus = 128,
     .files = {"new"},
     .provoke = [](Scene& scene) -> Request {
         scene.work().write("new", "");
         return scene.request(NEBSourceControlRequestRemove).on({"new"});
     }},
    {.how = "a revert of an untracked file",
     .errorClass = NEBSourceControlPathUnknownErrorClass,
     .code = NEBSourceControlNotVersionedError,
     .exitStatus = 1,
     .files = {"it's new"},
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestRevert).on({"it's new"});
     }},
    {.how = "a commit of an untracked file",
     .errorClass = NEBSourceControlPathUnknownErrorClass,
     .code = NEBSourceControlNotVersionedError,
     .exitStatus = 1,
     .files = {"new"},
     .provoke = [](Scene& scene) -> Request {
         scene.work().write("new", "");
         return scene.commit({"new"});
     }},
    {.how = "a move of a file that does not exist",
     .errorClass = NEBSourceControlPathUnknownErrorClass,
     .code = NEBSourceControlNotVersionedError,
     .exitStatus = 128,
     .files = {"nosuch"},
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestMove).on({"nosuch"}).to("b");
     }},
    {.how = "a move of an untracked file",
     .errorClass = NEBSourceControlPathUnknownErrorClass,
     .code = NEBSourceControlNotVersionedError,
     .exitStatus = 128,
     .files = {"new"},
     .provoke = [](Scene& scene) -> Request {
         scene.work().write("new", "");
         return scene.request(NEBSourceControlRequestMove).on({"new"}).to("b");
     }},
    {.how = "a move onto an existing file",
     .errorClass = NEBSourceControlDestinationExistsErrorClass,
     .code = NEBSourceControlRenameTargetExistsError,
     .exitStatus = 128,
     .files = {"b"},
     .provoke = [](Scene& scene) -> Request {
         scene.work().commitFile("b", "2\n");
         return scene.request(NEBSourceControlRequestMove).on({"a"}).to("b");
     }},
    {.how = "a move into a folder that does not exist",
     .errorClass = NEBSourceControlDestinationMissingErrorClass,
     .exitStatus = 128,
     .files = {"nosuch/"},
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestMove).on({"a"}).to("nosuch/");
     }},
    {.how = "a move of an empty folder",
     .errorClass = NEBSourceControlSourceDirectoryEmptyErrorClass,
     .code = NEBSourceControlSourceDirectoryEmptyError,
     .exitStatus = 128,
     .files = {"d"},
     .provoke = [](Scene& scene) -> Request {
         std::filesystem::create_directory(scene.work().path("d"));
         return scene.request(NEBSourceControlRequestMove).on({"d"}).to("e");
     }},
    {.how = "a blame of an untracked file",
     .errorClass = NEBSourceControlPathUnknownErrorClass,
     .code = NEBSourceControlFileMissingAtRevisionError,
     .exitStatus = 128,
     .files = {"nosuch"},
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestBlame).on({"nosuch"});
     }},
    {.how = "a blame of a file at a revision without it",
     .errorClass = NEBSourceControlPathUnknownErrorClass,
     .code = NEBSourceControlFileMissingAtRevisionError,
     .exitStatus = 128,
     .files = {"b"},
     .provoke = [](Scene& scene) -> Request {
         scene.work().commitFile("b", "2\n");
         return scene.request(NEBSourceControlRequestBlame).on({"b"}).between("HEAD~1");
     }},
    {.how = "a blame of a file that was deleted from disk",
     .errorClass = NEBSourceControlPathUnknownErrorClass,
     .code = NEBSourceControlFileMissingAtRevisionError,
     .exitStatus = 128,
     .files = {"a"},
     .provoke = [](Scene& scene) -> Request {
         std::filesystem::remove(scene.work().path("a"));
         return scene.request(NEBSourceControlRequestBlame).on({"a"});
     }},
    {.how = "an export of a file at a revision without it",
     .errorClass = NEBSourceControlPathUnknownErrorClass,
     .exitStatus = 128,
     .files = {"nosuch"},
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestExport)
             .on({scene.work().path("nosuch")})
             .between("HEAD")
             .to(scene.folder().path("copy"));
     }},
    {.how = "a copy of a file that does not exist",
     .errorClass = NEBSourceControlPathUnknownErrorClass,
     .code = ENOENT,
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestCopy)
             .on({scene.work().path("nosuch")})
             .to(scene.work().path("b"));
     }},
    // revisions
    {.how = "a log of a revision that does not exist",
     .errorClass = NEBSourceControlRevisionUnknownErrorClass,
     .code = NEBSourceControlFileMissingAtRevisionError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestLog).between("nosuch");
     }},
    {.how = "a log from a revision that does not exist",
     .errorClass = NEBSourceControlRevisionUnknownErrorClass,
     .code = NEBSourceControlFileMissingAtRevisionError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestLog).between("nosuch", "HEAD");
     }},
    {.how = "a log of a commit that does not exist",
     .errorClass = NEBSourceControlRevisionUnknownErrorClass,
     .code = NEBSourceControlFileMissingAtRevisionError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestLog)
             .between("0123456789012345678901234567890123456789");
     }},
    {.how = "a diff against a revision that does not exist",
     .errorClass = NEBSourceControlRevisionUnknownErrorClass,
     .code = NEBSourceControlFileMissingAtRevisionError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestDiff).between("nosuch", "HEAD");
     }},
    {.how = "a blame at a revision that does not exist",
     .errorClass = NEBSourceControlRevisionUnknownErrorClass,
     .code = NEBSourceControlFileMissingAtRevisionError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestBlame).on({"a"}).between("nosuch");
     }},
    {.how = "a listing of a branch that does not exist",
     .errorClass = NEBSourceControlRevisionUnknownErrorClass,
     .code = NEBSourceControlFileMissingAtRevisionError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestList)
             .on({"."})
             .with(NEBSourceControlRequestOptionBranch, "nosuch");
     }},
    {.how = "an export at a revision that does not exist",
     .errorClass = NEBSourceControlRevisionUnknownErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestExport)
             .on({scene.work().path("a")})
             .between("nosuch")
             .to(scene.folder().path("copy"));
     }},
    {.how = "a merge of a branch that does not exist",
     .errorClass = NEBSourceControlRevisionUnknownErrorClass,
     .code = NEBSourceControlFileMissingAtRevisionError,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         return about(scene, NEBSourceControlRequestMerge, "nosuch");
     }},
    {.how = "a merge base of a revision that does not exist",
     .errorClass = NEBSourceControlRevisionUnknownErrorClass,
     .code = NEBSourceControlFileMissingAtRevisionError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestMergeBase).between("HEAD", "nosuch");
     }},
    {.how = "a checkout of a branch that does not exist",
     .errorClass = NEBSourceControlRevisionUnknownErrorClass,
     .code = NEBSourceControlFileMissingAtRevisionError,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         return about(scene, NEBSourceControlRequestCheckout, "nosuch");
     }},
    {.how = "a log before the first commit",
     .errorClass = NEBSourceControlNoCommitsYetErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return RequestBuilder(NEBSourceControlRequestLog, scene.empty().path());
     }},
    {.how = "a new branch before the first commit",
     .errorClass = NEBSourceControlRevisionUnknownErrorClass,
     .code = NEBSourceControlFileMissingAtRevisionError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return RequestBuilder(NEBSourceControlRequestCreateBranch, scene.empty().path())
             .to("topic");
     }},
    // branches
    {.how = "a new branch that already exists",
     .errorClass = NEBSourceControlBranchExistsErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request { return branch(scene, "main"); }},
    {.how = "a new branch with an invalid name",
     .errorClass = NEBSourceControlBranchNameInvalidErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request { return branch(scene, "a..b"); }},
    {.how = "a new branch from a revision that does not exist",
     .errorClass = NEBSourceControlRevisionUnknownErrorClass,
     .code = NEBSourceControlFileMissingAtRevisionError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request { return branch(scene, "topic", "nosuch"); }},
    {.how = "a new branch below an existing branch",
     .errorClass = NEBSourceControlReferenceInTheWayErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request { return branch(scene, "main/below"); }},
    {.how = "a new branch while another process creates it",
     .errorClass = NEBSourceControlRefLockedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().write(".git/refs/heads/topic.lock", "");
         return branch(scene, "topic");
     }},
    {.how = "a removal of an unmerged branch",
     .errorClass = NEBSourceControlBranchNotMergedErrorClass,
     .code = NEBSourceControlBranchRemovalError,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.withTopic("b", "2\n");
         return about(scene, NEBSourceControlRequestDeleteBranch, "topic");
     }},
    {.how = "a removal of a branch that does not exist",
     .errorClass = NEBSourceControlBranchUnknownErrorClass,
     .code = NEBSourceControlBranchRemovalError,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         return about(scene, NEBSourceControlRequestDeleteBranch, "nosuch");
     }},
    {.how = "a removal of the current branch",
     .errorClass = NEBSourceControlBranchInUseErrorClass,
     .code = NEBSourceControlBranchRemovalError,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         return about(scene, NEBSourceControlRequestDeleteBranch, "main");
     }},
    {.how = "a removal of a branch that another worktree has checked out",
     .errorClass = NEBSourceControlBranchInUseErrorClass,
     .code = NEBSourceControlBranchRemovalError,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git(
             {"worktree", "add", "--quiet", "-b", "topic", scene.folder().path("tree")});
         return about(scene, NEBSourceControlRequestDeleteBranch, "topic");
     }},
    {.how = "a checkout of a branch that another worktree has checked out",
     .errorClass = NEBSourceControlBranchInUseErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git(
             {"worktree", "add", "--quiet", "-b", "topic", scene.folder().path("tree")});
         return about(scene, NEBSourceControlRequestCheckout, "topic");
     }},
    {.how = "a removal of a locked worktree",
     .errorClass = NEBSourceControlWorktreeLockedErrorClass,
     .provoke = [](Scene& scene) -> Request {
         const std::string tree = scene.folder().path("tree");
         scene.work().git({"worktree", "add", "--quiet", tree});
         scene.work().git({"worktree", "lock", "--reason", "on a stick", tree});
         const Request request = about(scene, NEBSourceControlRequestWorktrees, tree);
         request->options = NEBDictionary{{NEBSourceControlRequestOptionAction, "remove"}};
         return request;
     }},
    // remotes
    {.how = "a new remote that already exists",
     .errorClass = NEBSourceControlRemoteExistsErrorClass,
     .exitStatus = 3,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"remote", "add", "origin", "/x"});
         return scene.request(NEBSourceControlRequestAddRemote).to("origin").on({"/y"});
     }},
    {.how = "a new remote with an invalid name",
     .errorClass = NEBSourceControlRemoteNameInvalidErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestAddRemote).to("a..b").on({"/y"});
     }},
    {.how = "a removal of a remote that does not exist",
     .errorClass = NEBSourceControlRemoteUnknownErrorClass,
     .exitStatus = 2,
     .provoke = [](Scene& scene) -> Request {
         return about(scene, NEBSourceControlRequestRemoveRemote, "nosuch");
     }},
    {.how = "a new remote while another process writes the configuration",
     .errorClass = NEBSourceControlRefLockedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().write(".git/config.lock", "");
         return scene.request(NEBSourceControlRequestAddRemote).to("origin").on({"/y"});
     }},
    {.how = "the branches of a remote that does not exist",
     .errorClass = NEBSourceControlRemoteUnknownErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestListRemoteBranches);
     }},
};

}  // namespace

Failures nameFailures() {
    return failures;
}

}  // namespace neb::test
