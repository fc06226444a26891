// Between two repositories: push, fetch, pull, clone, Subversion.

#include <filesystem>

#include "Failure.h"

namespace neb::test {

namespace {

void addServerHook(Scene& scene, const std::string& name, const std::string& script) {
    const std::string file = scene.shared() + "/hooks/" + name;
    std::filesystem::copy_file(scene.folder().writeProgram(name, "#!/bin/sh\n" + script + "\n"),
                               file, std::filesystem::copy_options::overwrite_existing);
    Scene::setRights(file, 0755);
}

/// work() with a submodule "sub", which is not committed; the submodule's repository.
const TestRepository& addSubmodule(Scene& scene, TestRepository& other) {
    other.commitFile("s", "1\n");
    scene.work().git({"submodule", "--quiet", "add", other.path(), "sub"});
    return other;
}

}  // namespace

Failures exchangeFailures() {
    return {
        {"a push of a branch to which others have pushed",
         "remote-ahead",
         -32,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.pushFromElsewhere("b", "2\n");
             scene.work().commitFile("c", "3\n");
             return scene.push("main", "main");
         }},
        {"a push of a branch that is behind the remote's",
         "remote-ahead",
         -32,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.pushFromElsewhere("b", "2\n");
             scene.work().git({"fetch", "--quiet"});
             scene.work().commitFile("c", "3\n");
             return scene.push("main", "main");
         }},
        {"a push that a pre-receive hook of the server refuses",
         "remote-hook-refused",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             addServerHook(scene, "pre-receive", "echo 'fatal: index.lock says no'; exit 1");
             scene.work().commitFile("c", "3\n");
             return scene.push("main", "main");
         }},
        {"a push that an update hook of the server refuses",
         "remote-hook-refused",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             addServerHook(scene, "update", "exit 1");
             scene.work().commitFile("c", "3\n");
             return scene.push("main", "main");
         }},
        {"a push that the repository's own hook refuses",
         "local-hook-refused",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.shared();
             scene.addHook(scene.work(), "pre-push", "echo 'not on a Friday' >&2; exit 1");
             return scene.push("main", "other");
         }},
        {"a push to the branch that is checked out there",
         "branch-checked-out-there",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             const TestRepository& there = scene.work();
             there.git({"remote", "add", "self", there.path()});
             there.git({"checkout", "--quiet", "-b", "other"});
             there.commitFile("b", "2\n");
             there.git({"checkout", "--quiet", "main"});
             return scene.push("other", "main", "self");
         }},
        {"a push of a branch that is not there",
         "nothing-to-push-from",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.shared();
             return scene.push("nosuch", "nosuch");
         }},
        {"a push to a name that no branch can have",
         "branch-name-invalid",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.shared();
             return scene.push("main", "a..b");
         }},
        {"a push of a tag that the remote has already",
         "tag-exists",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.shared();
             scene.work().git({"tag", "v1"});
             scene.work().git({"push", "--quiet", "origin", "v1"});
             scene.work().commitFile("b", "2\n");
             return scene.push("main", "refs/tags/v1");
         }},
        {"a push to a branch below one that is there",
         "remote-refused",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.shared();
             return scene.push("main", "refs/heads/main/below");
         }},
        {"a push to a branch that is locked there",
         "remote-refused",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.folder().write("shared.git.note", "");
             std::filesystem::copy_file(scene.folder().path("shared.git.note"),
                                        scene.shared() + "/refs/heads/main.lock");
             scene.work().commitFile("b", "2\n");
             return scene.push("main", "main");
         }},
        {"a push to a reference that the server hides",
         "remote-refused",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.work().git(
                 {"-C", scene.shared(), "config", "receive.hideRefs", "refs/heads/no"});
             return scene.push("main", "refs/heads/no/1");
         }},
        {"a push to a repository that may not be written",
         "remote-refused",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             const std::string shared = scene.shared();
             scene.work().commitFile("b", "2\n");
             scene.actAsOrdinaryUser();
             Scene::setRights(shared + "/objects", 0555);
             return scene.push("main", "main");
         }},
        {"a push to a remote that has no name here",
         "repository-not-found",
         -20,
         128,
         {},
         [](Scene& scene) -> Request { return scene.push("main", "main", "nosuch"); }},
        {"a fetch of a remote that has no name here",
         "repository-not-found",
         -20,
         128,
         {},
         [](Scene& scene) -> Request { return scene.fetch("nosuch"); }},
        {"a fetch from a repository of somebody else's",
         "owner-not-trusted",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.shared();
             scene.setSSH(
                 "export GIT_TEST_ASSUME_DIFFERENT_OWNER=1\n"
                 "for word; do :; done; eval \"$word\"");
             scene.work().git({"remote", "set-url", "origin", "example.invalid:" + scene.shared()});
             return scene.fetch();
         }},
        {"a fetch whose tag differs from the one that is here",
         "reference-rejected",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.shared();
             scene.work().git({"tag", "v1"});
             scene.work().git({"push", "--quiet", "origin", "v1"});
             scene.work().git({"config", "remote.origin.fetch", "refs/tags/*:refs/tags/*"});
             scene.work().commitFile("b", "2\n");
             scene.work().git({"tag", "-f", "v1"});
             return scene.fetch();
         }},
        {"a fetch while the remote's branch is locked here",
         "ref-locked",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.pushFromElsewhere("b", "2\n");
             scene.work().write(".git/refs/remotes/origin/main.lock", "");
             return scene.fetch();
         }},
        {"a fetch of a branch below one that is here",
         "reference-in-the-way",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.shared();
             scene.work().git({"update-ref", "refs/remotes/origin/x", "HEAD"});
             scene.work().git({"-C", scene.shared(), "update-ref", "refs/heads/x/y", "main"});
             return scene.fetch();
         }},
        {"a pull of a branch that the remote does not have",
         "remote-branch-unknown",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.shared();
             return scene.pull("nosuch");
         }},
        {"a pull without a branch from a remote that the current branch does not track",
         "no-upstream",
         -92,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.work().git({"remote", "add", "other", scene.shared()});
             return scene.ask(NEBSourceControlRequestUpdate)
                 .with(NEBSourceControlRequestOptionPullByFastForwarding, true)
                 .with(NEBSourceControlRequestOptionRemoteName, "other");
         }},
        {"a pull where nothing is new",
         "up-to-date",
         -34,
         0,
         {},
         [](Scene& scene) -> Request {
             static_cast<void>(scene.shared());
             return scene.pull();
         }},
        {"a pull where both sides have commits",
         "diverged",
         -200,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.pushFromElsewhere("b", "2\n");
             scene.work().commitFile("c", "3\n");
             return scene.pull();
         }},
        {"a pull of what would overwrite local changes",
         "local-changes",
         -31,
         1,
         {"a"},
         [](Scene& scene) -> Request {
             scene.pushFromElsewhere("a", "2\n");
             scene.work().write("a", "mine\n");
             return scene.pull();
         }},
        {"a pull of what would overwrite a file that is not tracked",
         "untracked-in-the-way",
         -1,
         1,
         {"b c"},
         [](Scene& scene) -> Request {
             scene.pushFromElsewhere("b c", "2\n");
             scene.work().write("b c", "mine\n");
             return scene.pull();
         }},
        {"a pull in the middle of a conflict",
         "conflict-unresolved",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.shared();
             scene.inConflict();
             return scene.pull();
         }},
        {"a pull while a merge is not committed",
         "merge-unfinished",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.shared();
             scene.inConflict().git({"add", "a"});
             return scene.pull();
         }},
        {"a pull into a bare repository",
         "no-work-tree",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             const std::string shared = scene.shared();
             return Ask(NEBSourceControlRequestUpdate, shared)
                 .to(scene.work().path())
                 .with(NEBSourceControlRequestOptionPullByFastForwarding, true)
                 .with(NEBSourceControlRequestOptionRemoteName, scene.work().path())
                 .with(NEBSourceControlRequestOptionBranch, "main");
         }},
        {"a branch of a remote that is to be tracked and is not there",
         "remote-branch-unknown",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.shared();
             return scene.ask(NEBSourceControlRequestTrackRemoteBranch)
                 .to("mine")
                 .with(NEBSourceControlRequestOptionRemoteName, "origin")
                 .with(NEBSourceControlRequestOptionBranch, "nosuch");
         }},
        {"a clone of a branch that is not there",
         "remote-branch-unknown",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.clone(scene.work().path())
                 .with(NEBSourceControlRequestOptionBranch, "nosuch");
         }},
        {"a clone into a folder that holds something",
         "destination-exists",
         -1,
         128,
         {"/tmp/clone"},
         [](Scene& scene) -> Request {
             scene.folder().write("clone/file", "");
             return scene.clone(scene.work().path());
         }},
        {"a clone into a folder that may not be written",
         "permission-denied",
         -21,
         1,
         {},
         [](Scene& scene) -> Request {
             Ask ask = scene.clone(scene.work().path());
             scene.actAsOrdinaryUser();
             Scene::setRights(scene.folder().path("clone"), 0555);
             return ask;
         }},
        {"a clone with a submodule of which no URL is known",
         "other-tools",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             const std::string commit = scene.work().git({"rev-parse", "HEAD"});
             scene.work().git({"update-index", "--add", "--cacheinfo",
                               "160000," + commit.substr(0, commit.size() - 1) + ",sub"});
             scene.work().write(".gitmodules", "[submodule \"sub\"]\n\tpath = sub\n");
             scene.work().git({"add", ".gitmodules"});
             scene.work().git({"commit", "--quiet", "-m", "submodule"});
             return scene.clone(scene.work().path());
         }},
        {"a clone with a submodule that is not there any more",
         "repository-not-found",
         -20,
         1,
         {},
         [](Scene& scene) -> Request {
             {
                 TestRepository other;
                 addSubmodule(scene, other);
             }
             scene.work().git({"commit", "--quiet", "-m", "submodule"});
             return scene.clone(scene.work().path());
         }},
        {"a clone with a submodule whose commit is not there",
         "other-tools",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
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
        {"a push to Subversion where others have committed",
         "remote-ahead",
         -32,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.bridged();
             scene.subversion().commitFile("trunk/a", "theirs\n");
             scene.work().commitFile("a", "ours\n");
             return scene.ask(NEBSourceControlRequestPush).bySubversion();
         }},
        {"a push to Subversion that a hook of the server refuses",
         "remote-hook-refused",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.bridged();
             scene.subversion().refuseCommits("not today");
             scene.work().commitFile("a", "ours\n");
             return scene.ask(NEBSourceControlRequestPush).bySubversion();
         }},
        {"a push to Subversion with local changes",
         "needs-clean-tree",
         -31,
         1,
         {"a"},
         [](Scene& scene) -> Request {
             scene.bridged();
             scene.work().commitFile("b", "ours\n");
             scene.work().write("a", "changed\n");
             return scene.ask(NEBSourceControlRequestPush).bySubversion();
         }},
    };
}

}  // namespace neb::test
