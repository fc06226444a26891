// Push, fetch, pull, clone and Subversion.

#include <filesystem>

#include "Failure.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

namespace neb::test {

namespace {

void addServerHook(Scene& scene, const std::string& name, const std::string& script) {
    const std::string file = scene.shared() + "/hooks/" + name;
    std::filesystem::copy_file(scene.folder().writeProgram(name, "#!/bin/sh\n" + script + "\n"),
                               file, std::filesystem::copy_options::overwrite_existing);
    Scene::setPermissions(file, 0755);
}

/// Adds an uncommitted submodule "sub" to work(); returns the repository of the submodule.
const TestRepository& addSubmodule(Scene& scene, TestRepository& other) {
    other.commitFile("s", "1\n");
    scene.work().git({"submodule", "--quiet", "add", other.path(), "sub"});
    return other;
}

const Failure failures[] = {
    {.how = "a push of a branch to which another user pushed",
     .errorClass = NEBSourceControlRemoteAheadErrorClass,
     .code = NEBSourceControlRemoteAheadError,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.pushFromOtherClone("b", "2\n");
         scene.work().commitFile("c", "3\n");
         return scene.push("main", "main");
     }},
    {.how = "a push of a branch that is behind the remote's",
     .errorClass = NEBSourceControlRemoteAheadErrorClass,
     .code = NEBSourceControlRemoteAheadError,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.pushFromOtherClone("b", "2\n");
         scene.work().git({"fetch", "--quiet"});
         scene.work().commitFile("c", "3\n");
         return scene.push("main", "main");
     }},
    {.how = "a push that a pre-receive hook of the server refuses",
     .errorClass = NEBSourceControlRemoteHookRefusedErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         addServerHook(scene, "pre-receive", "echo 'fatal: index.lock says no'; exit 1");
         scene.work().commitFile("c", "3\n");
         return scene.push("main", "main");
     }},
    {.how = "a push that an update hook of the server refuses",
     .errorClass = NEBSourceControlRemoteHookRefusedErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         addServerHook(scene, "update", "exit 1");
         scene.work().commitFile("c", "3\n");
         return scene.push("main", "main");
     }},
    {.how = "a push that a local hook refuses",
     .errorClass = NEBSourceControlLocalHookRefusedErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.shared();
         scene.addHook(scene.work(), "pre-push", "echo 'not on a Friday' >&2; exit 1");
         return scene.push("main", "other");
     }},
    {.how = "a push to the branch that is checked out in the remote repository",
     .errorClass = NEBSourceControlBranchCheckedOutThereErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         const TestRepository& there = scene.work();
         there.git({"remote", "add", "self", there.path()});
         there.git({"checkout", "--quiet", "-b", "other"});
         there.commitFile("b", "2\n");
         there.git({"checkout", "--quiet", "main"});
         return scene.push("other", "main", "self");
     }},
    {.how = "a push of a branch that does not exist",
     .errorClass = NEBSourceControlNothingToPushFromErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.shared();
         return scene.push("nosuch", "nosuch");
     }},
    {.how = "a push to an invalid branch name",
     .errorClass = NEBSourceControlBranchNameInvalidErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.shared();
         return scene.push("main", "a..b");
     }},
    {.how = "a push of a tag that the remote already has",
     .errorClass = NEBSourceControlTagExistsErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.shared();
         scene.work().git({"tag", "v1"});
         scene.work().git({"push", "--quiet", "origin", "v1"});
         scene.work().commitFile("b", "2\n");
         return scene.push("main", "refs/tags/v1");
     }},
    {.how = "a push to a branch below an existing remote branch",
     .errorClass = NEBSourceControlRemoteRefusedErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.shared();
         return scene.push("main", "refs/heads/main/below");
     }},
    {.how = "a push to a branch that is locked in the remote repository",
     .errorClass = NEBSourceControlRemoteRefusedErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.folder().write("shared.git.note", "");
         std::filesystem::copy_file(scene.folder().path("shared.git.note"),
                                    scene.shared() + "/refs/heads/main.lock");
         scene.work().commitFile("b", "2\n");
         return scene.push("main", "main");
     }},
    {.how = "a push to a reference that the server hides",
     .errorClass = NEBSourceControlRemoteRefusedErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"-C", scene.shared(), "config", "receive.hideRefs", "refs/heads/no"});
         return scene.push("main", "refs/heads/no/1");
     }},
    {.how = "a push to a read-only repository",
     .errorClass = NEBSourceControlRemoteRefusedErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         const std::string shared = scene.shared();
         scene.work().commitFile("b", "2\n");
         scene.actAsOrdinaryUser();
         Scene::setPermissions(shared + "/objects", 0555);
         return scene.push("main", "main");
     }},
    {.how = "a push to an unknown remote",
     .errorClass = NEBSourceControlRepositoryNotFoundErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request { return scene.push("main", "main", "nosuch"); }},
    {.how = "a fetch from an unknown remote",
     .errorClass = NEBSourceControlRepositoryNotFoundErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request { return scene.fetch("nosuch"); }},
    {.how = "a fetch from a repository of another user",
     .errorClass = NEBSourceControlOwnerNotTrustedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.skipSinceGit(48, "git trusts the owner of a repository that it only fetches from");
         scene.shared();
         scene.setSSH(
             "export GIT_TEST_ASSUME_DIFFERENT_OWNER=1\n"
             "for word; do :; done; eval \"$word\"");
         scene.work().git({"remote", "set-url", "origin", "example.invalid:" + scene.shared()});
         return scene.fetch();
     }},
    {.how = "a fetch of a tag that differs from the local one",
     .errorClass = NEBSourceControlReferenceRejectedErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.shared();
         scene.work().git({"tag", "v1"});
         scene.work().git({"push", "--quiet", "origin", "v1"});
         scene.work().git({"config", "remote.origin.fetch", "refs/tags/*:refs/tags/*"});
         scene.work().commitFile("b", "2\n");
         scene.work().git({"tag", "-f", "v1"});
         return scene.fetch();
     }},
    {.how = "a fetch while the remote-tracking branch is locked",
     .errorClass = NEBSourceControlRefLockedErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.pushFromOtherClone("b", "2\n");
         scene.work().write(".git/refs/remotes/origin/main.lock", "");
         return scene.fetch();
     }},
    {.how = "a fetch of a branch below an existing remote-tracking branch",
     .errorClass = NEBSourceControlReferenceInTheWayErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.shared();
         scene.work().git({"update-ref", "refs/remotes/origin/x", "HEAD"});
         scene.work().git({"-C", scene.shared(), "update-ref", "refs/heads/x/y", "main"});
         return scene.fetch();
     }},
    {.how = "a pull of a branch that the remote does not have",
     .errorClass = NEBSourceControlRemoteBranchUnknownErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.shared();
         return scene.pull("nosuch");
     }},
    {.how = "a pull without a branch from a remote that the current branch does not track",
     .errorClass = NEBSourceControlNoUpstreamErrorClass,
     .code = NEBSourceControlTrackingBranchNotFoundError,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"remote", "add", "other", scene.shared()});
         return scene.request(NEBSourceControlRequestUpdate)
             .with(NEBSourceControlRequestOptionPullByFastForwarding, true)
             .with(NEBSourceControlRequestOptionRemoteName, "other");
     }},
    {.how = "a pull without new commits",
     .errorClass = NEBSourceControlUpToDateErrorClass,
     .code = NEBSourceControlUpToDateError,
     .exitStatus = 0,
     .provoke = [](Scene& scene) -> Request {
         static_cast<void>(scene.shared());
         return scene.pull();
     }},
    {.how = "a pull of a diverged branch",
     .errorClass = NEBSourceControlDivergedErrorClass,
     .code = NEBSourceControlFastForwardError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.pushFromOtherClone("b", "2\n");
         scene.work().commitFile("c", "3\n");
         return scene.pull();
     }},
    {.how = "a pull that would overwrite local changes",
     .errorClass = NEBSourceControlLocalChangesErrorClass,
     .code = NEBSourceControlUncommittedChangesError,
     .exitStatus = 1,
     .files = {"a"},
     .provoke = [](Scene& scene) -> Request {
         scene.pushFromOtherClone("a", "2\n");
         scene.work().write("a", "mine\n");
         return scene.pull();
     }},
    {.how = "a pull that would overwrite an untracked file",
     .errorClass = NEBSourceControlUntrackedInTheWayErrorClass,
     .exitStatus = 1,
     .files = {"b c"},
     .provoke = [](Scene& scene) -> Request {
         scene.pushFromOtherClone("b c", "2\n");
         scene.work().write("b c", "mine\n");
         return scene.pull();
     }},
    {.how = "a pull during a conflict",
     .errorClass = NEBSourceControlConflictUnresolvedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.shared();
         scene.inConflict();
         return scene.pull();
     }},
    {.how = "a pull during an uncommitted merge",
     .errorClass = NEBSourceControlMergeUnfinishedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.shared();
         scene.inConflict().git({"add", "a"});
         return scene.pull();
     }},
    {.how = "a pull into a bare repository",
     .errorClass = NEBSourceControlNoWorkTreeErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         const std::string shared = scene.shared();
         return RequestBuilder(NEBSourceControlRequestUpdate, shared)
             .to(scene.work().path())
             .with(NEBSourceControlRequestOptionPullByFastForwarding, true)
             .with(NEBSourceControlRequestOptionRemoteName, scene.work().path())
             .with(NEBSourceControlRequestOptionBranch, "main");
     }},
    {.how = "tracking a remote branch that does not exist",
     .errorClass = NEBSourceControlRemoteBranchUnknownErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.shared();
         return scene.request(NEBSourceControlRequestTrackRemoteBranch)
             .to("mine")
             .with(NEBSourceControlRequestOptionRemoteName, "origin")
             .with(NEBSourceControlRequestOptionBranch, "nosuch");
     }},
    {.how = "a clone of a branch that does not exist",
     .errorClass = NEBSourceControlRemoteBranchUnknownErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.clone(scene.work().path())
             .with(NEBSourceControlRequestOptionBranch, "nosuch");
     }},
    {.how = "a clone into a folder that is not empty",
     .errorClass = NEBSourceControlDestinationExistsErrorClass,
     .exitStatus = 128,
     .files = {"/tmp/clone"},
     .provoke = [](Scene& scene) -> Request {
         scene.folder().write("clone/file", "");
         return scene.clone(scene.work().path());
     }},
    {.how = "a clone into a read-only folder",
     .errorClass = NEBSourceControlPermissionDeniedErrorClass,
     .code = NEBSourceControlAuthenticationError,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         RequestBuilder ask = scene.clone(scene.work().path());
         scene.actAsOrdinaryUser();
         Scene::setPermissions(scene.folder().path("clone"), 0555);
         return ask;
     }},
    {.how = "a clone with a submodule without a URL",
     .errorClass = NEBSourceControlOtherToolsErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         const std::string commit = scene.work().git({"rev-parse", "HEAD"});
         scene.work().git({"update-index", "--add", "--cacheinfo",
                           "160000," + commit.substr(0, commit.size() - 1) + ",sub"});
         scene.work().write(".gitmodules", "[submodule \"sub\"]\n\tpath = sub\n");
         scene.work().git({"add", ".gitmodules"});
         scene.work().git({"commit", "--quiet", "-m", "submodule"});
         return scene.clone(scene.work().path());
     }},
    {.how = "a clone with a submodule that no longer exists",
     .errorClass = NEBSourceControlRepositoryNotFoundErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         {
             TestRepository other;
             addSubmodule(scene, other);
         }
         scene.work().git({"commit", "--quiet", "-m", "submodule"});
         return scene.clone(scene.work().path());
     }},
    {.how = "a clone with a submodule whose commit does not exist",
     .errorClass = NEBSourceControlOtherToolsErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.withTopic("b", "2\n");
         scene.work().git(
             {"-C", scene.folder().path(), "clone", "--quiet", scene.work().path(), "other"});
         scene.work().git({"submodule", "--quiet", "add", scene.folder().path("other"), "sub"});
         scene.work().git({"-C", scene.work().path("sub"), "commit", "--quiet", "--allow-empty",
                           "-m", "only here"});
         scene.work().git({"add", "sub"});
         scene.work().git({"commit", "--quiet", "-m", "submodule"});
         return scene.clone(scene.work().path());
     }},
    {.how = "a push to Subversion after a commit of another user",
     .errorClass = NEBSourceControlRemoteAheadErrorClass,
     .code = NEBSourceControlRemoteAheadError,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.cloneSubversion();
         scene.subversion().commitFile("trunk/a", "theirs\n");
         scene.work().commitFile("a", "ours\n");
         return scene.request(NEBSourceControlRequestPush).bySubversion();
     }},
    {.how = "a push to Subversion that a hook of the server refuses",
     .errorClass = NEBSourceControlRemoteHookRefusedErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.cloneSubversion();
         scene.subversion().refuseCommits("not today");
         scene.work().commitFile("a", "ours\n");
         return scene.request(NEBSourceControlRequestPush).bySubversion();
     }},
    {.how = "a push to Subversion with local changes",
     .errorClass = NEBSourceControlNeedsCleanTreeErrorClass,
     .code = NEBSourceControlUncommittedChangesError,
     .exitStatus = 1,
     .files = {"a"},
     .provoke = [](Scene& scene) -> Request {
         scene.cloneSubversion();
         scene.work().commitFile("b", "ours\n");
         scene.work().write("a", "changed\n");
         return scene.request(NEBSourceControlRequestPush).bySubversion();
     }},
};

}  // namespace

Failures exchangeFailures() {
    return failures;
}

}  // namespace neb::test
