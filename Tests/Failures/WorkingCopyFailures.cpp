// The state of the working copy: changes in the way, conflicts, work that is not finished.

#include <filesystem>

#include "Failure.h"

namespace neb::test {

namespace {

Request merge(Scene& scene, const std::string& what = "topic") {
    return scene.ask(NEBSourceControlRequestMerge).to(what);
}

Request checkout(Scene& scene, const std::string& what = "topic") {
    return scene.ask(NEBSourceControlRequestCheckout).to(what);
}

/// A merge of topic, which renames "a" to "b", where main has done something else with "a".
const TestRepository& withRenamedTopic(Scene& scene) {
    const TestRepository& work = scene.work();
    work.commitFile("a", "one\ntwo\nthree\nfour\n");
    work.git({"checkout", "--quiet", "-b", "topic"});
    work.git({"mv", "a", "b"});
    work.git({"commit", "--quiet", "-m", "rename"});
    work.git({"checkout", "--quiet", "main"});
    return work;
}

}  // namespace

Failures workingCopyFailures() {
    return {
        {"a merge that would overwrite local changes",
         "local-changes",
         -31,
         1,
         {"a", "sp ace\"s"},
         [](Scene& scene) -> Request {
             scene.work().commitFile("sp ace\"s", "1\n");
             scene.withTopic("a", "topic\n");
             scene.work().git({"checkout", "--quiet", "topic"});
             scene.work().commitFile("sp ace\"s", "topic\n");
             scene.work().git({"checkout", "--quiet", "main"});
             scene.work().write("a", "mine\n");
             scene.work().write("sp ace\"s", "mine\n");
             return merge(scene);
         }},
        {"a checkout that would lose what is staged",
         "local-changes",
         -31,
         128,
         {"a"},
         [](Scene& scene) -> Request {
             scene.withTopic("a", "topic\n").write("a", "mine\n");
             scene.work().git({"add", "a"});
             scene.work().write("a", "mine again\n");
             return checkout(scene);
         }},
        {"a checkout that would overwrite files that are not tracked",
         "untracked-in-the-way",
         -1,
         128,
         {"new\\file"},
         [](Scene& scene) -> Request {
             scene.withTopic("new\\file", "topic\n").write("new\\file", "mine\n");
             return checkout(scene);
         }},
        {"a merge that would overwrite files that are not tracked",
         "untracked-in-the-way",
         -1,
         1,
         {"new"},
         [](Scene& scene) -> Request {
             scene.withTopic("new", "topic\n").write("new", "mine\n");
             return merge(scene);
         }},
        {"an update that would overwrite files that are not tracked",
         "untracked-in-the-way",
         -1,
         1,
         {"new"},
         [](Scene& scene) -> Request {
             scene.withTopic("new", "topic\n").write("new", "mine\n");
             return scene.ask(NEBSourceControlRequestUpdate).to("topic");
         }},
        {"a merge of a change and a removal",
         "conflict",
         -1,
         1,
         {"a"},
         [](Scene& scene) -> Request {
             scene.withTopic("a", std::nullopt).commitFile("a", "main\n");
             return merge(scene);
         }},
        {"an update that merges a change and a removal",
         "conflict",
         -1,
         1,
         {"a"},
         [](Scene& scene) -> Request {
             scene.withTopic("a", std::nullopt).commitFile("a", "main\n");
             return scene.ask(NEBSourceControlRequestUpdate).to("topic");
         }},
        {"a merge of a renaming and a removal",
         "conflict",
         -1,
         1,
         {"b"},
         [](Scene& scene) -> Request {
             const TestRepository& work = withRenamedTopic(scene);
             work.git({"rm", "--quiet", "a"});
             work.git({"commit", "--quiet", "-m", "remove"});
             return merge(scene);
         }},
        {"a merge of two renamings",
         "conflict",
         -1,
         1,
         {"a", "c", "b"},
         [](Scene& scene) -> Request {
             const TestRepository& work = withRenamedTopic(scene);
             work.git({"mv", "a", "c"});
             work.git({"commit", "--quiet", "-m", "rename otherwise"});
             return merge(scene);
         }},
        {"a merge of a file and a folder of the same name",
         "conflict",
         -1,
         1,
         {"d"},
         [](Scene& scene) -> Request {
             scene.withTopic("d/file", "topic\n").commitFile("d", "main\n");
             return merge(scene);
         }},
        {"a merge of a file and a symbolic link of the same name",
         "conflict",
         -1,
         1,
         {"l"},
         [](Scene& scene) -> Request {
             const TestRepository& work = scene.withTopic("l", "topic\n");
             work.git({"checkout", "--quiet", "main"});
             std::filesystem::create_symlink("a", work.path("l"));
             work.git({"add", "l"});
             work.git({"commit", "--quiet", "-m", "link"});
             return merge(scene);
         }},
        {"a rebase onto Subversion that ends in a conflict",
         "conflict",
         -1,
         1,
         {"a"},
         [](Scene& scene) -> Request {
             scene.bridged();
             scene.work().git({"rm", "--quiet", "a"});
             scene.work().git({"commit", "--quiet", "-m", "remove"});
             scene.subversion().commitFile("trunk/a", "theirs\n");
             scene.work().git({"svn", "fetch", "--quiet"});
             return scene.ask(NEBSourceControlRequestUpdate)
                 .to("refs/remotes/git-svn")
                 .bySubversion();
         }},
        {"a rebase onto Subversion with local changes",
         "needs-clean-tree",
         -31,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.bridged();
             scene.work().write("a", "mine\n");
             return scene.ask(NEBSourceControlRequestUpdate)
                 .to("refs/remotes/git-svn")
                 .bySubversion();
         }},
        {"a commit in the middle of a conflict",
         "conflict-unresolved",
         -1,
         128,
         {"a"},
         [](Scene& scene) -> Request {
             scene.inConflict();
             return Ask(NEBSourceControlRequestCommit, scene.work().path());
         }},
        {"a merge in the middle of a conflict",
         "conflict-unresolved",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.inConflict();
             return merge(scene);
         }},
        {"a checkout in the middle of a conflict",
         "conflict-unresolved",
         -1,
         1,
         {"a"},
         [](Scene& scene) -> Request {
             scene.inConflict();
             return checkout(scene);
         }},
        {"a revert of a file in conflict",
         "conflict-unresolved",
         -1,
         0,
         {"a"},
         [](Scene& scene) -> Request {
             scene.inConflict();
             return scene.ask(NEBSourceControlRequestRevert).on({scene.work().path("a")});
         }},
        {"a merge while another is not committed",
         "merge-unfinished",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.inConflict().git({"add", "a"});
             return merge(scene);
         }},
        {"a commit of some files only while a merge is not committed",
         "merge-unfinished",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.inConflict().git({"add", "a"});
             return scene.commit({"a"});
         }},
        {"a merge of a history that has nothing in common",
         "unrelated-histories",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().git({"checkout", "--quiet", "--orphan", "other"});
             scene.work().git({"commit", "--quiet", "-m", "other"});
             scene.work().git({"checkout", "--quiet", "main"});
             return merge(scene, "other");
         }},
        {"a difference from the common ancestor of histories that have none",
         "unrelated-histories",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().git({"checkout", "--quiet", "--orphan", "other"});
             scene.work().git({"commit", "--quiet", "-m", "other"});
             return scene.ask(NEBSourceControlRequestDiff)
                 .between("main", "other")
                 .with(NEBSourceControlRequestOptionDiffFromCommonAncestor, true);
         }},
        {"a status in a folder without repository",
         "not-a-repository",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             return Ask(NEBSourceControlRequestStatus, scene.folder().path());
         }},
        {"a log in a folder without repository",
         "not-a-repository",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             return Ask(NEBSourceControlRequestLog, scene.folder().path());
         }},
        {"an info in a folder that is not there",
         "not-started",
         -1,
         std::nullopt,
         {},
         [](Scene& scene) -> Request {
             return Ask(NEBSourceControlRequestInfo, scene.folder().path("nosuch"));
         }},
        {"a status of a work tree whose repository is gone",
         "not-a-repository",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().git({"worktree", "add", "--quiet", scene.folder().path("tree")});
             std::filesystem::remove_all(scene.work().path(".git"));
             return Ask(NEBSourceControlRequestStatus, scene.folder().path("tree"));
         }},
        {"a status where the file .git is none of git's",
         "not-a-repository",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.folder().write("odd/.git", "nothing of the kind\n");
             return Ask(NEBSourceControlRequestStatus, scene.folder().path("odd"));
         }},
        {"a status of a bare repository",
         "no-work-tree",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             return Ask(NEBSourceControlRequestStatus, scene.shared());
         }},
        {"an add to a bare repository",
         "no-work-tree",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             return Ask(NEBSourceControlRequestAdd, scene.shared()).on({"a"});
         }},
        {"a checkout in a bare repository",
         "no-work-tree",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             return Ask(NEBSourceControlRequestCheckout, scene.shared()).to("main");
         }},
        {"a status of somebody else's repository",
         "owner-not-trusted",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             Ask ask = scene.ask(NEBSourceControlRequestStatus);
             scene.setVariable("GIT_TEST_ASSUME_DIFFERENT_OWNER", "1");
             return ask;
         }},
    };
}

}  // namespace neb::test
