// Names: of files, revisions, branches and remotes that there are not, or are already.

#include <filesystem>

#include "Failure.h"

namespace neb::test {

namespace {

Request about(Scene& scene, std::int32_t type, const std::string& destination) {
    return scene.ask(type).to(destination);
}

Request branch(Scene& scene, const std::string& name, const std::string& start = "HEAD") {
    return scene.ask(NEBSourceControlRequestCreateBranch)
        .to(name)
        .with(NEBSourceControlRequestOptionSourceLocation, start);
}

}  // namespace

Failures nameFailures() {
    return {
        // files
        {"an add of a file that is not there",
         "path-unknown",
         -71,
         128,
         {"no such"},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestAdd).on({"no such"});
         }},
        {"an add of a file that is ignored",
         "path-ignored",
         -1,
         1,
         {"b.o"},
         [](Scene& scene) -> Request {
             scene.work().write(".gitignore", "*.o\n");
             scene.work().write("b.o", "");
             return scene.ask(NEBSourceControlRequestAdd).on({"b.o"});
         }},
        {"an add of a file outside the working copy",
         "path-outside",
         -1,
         128,
         {"/etc/passwd"},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestAdd).on({"/etc/passwd"});
         }},
        {"an add of a file behind a symbolic link",
         "path-outside",
         -1,
         128,
         {"link/b"},
         [](Scene& scene) -> Request {
             scene.work().write("d/b", "");
             std::filesystem::create_directory_symlink("d", scene.work().path("link"));
             return scene.ask(NEBSourceControlRequestAdd).on({"link/b"});
         }},
        {"an add of a file of a submodule",
         "path-in-submodule",
         -1,
         128,
         {"sub/s"},
         [](Scene& scene) -> Request {
             const std::string commit = scene.work().git({"rev-parse", "HEAD"});
             scene.work().git({"clone", "--quiet", ".", "sub"});
             scene.work().git({"update-index", "--add", "--cacheinfo",
                               "160000," + commit.substr(0, commit.size() - 1) + ",sub"});
             scene.work().write("sub/s", "");
             return scene.ask(NEBSourceControlRequestAdd).on({"sub/s"});
         }},
        {"a removal of the empty name",
         "path-invalid",
         -1,
         128,
         {},
         [](Scene& scene) -> Request { return scene.ask(NEBSourceControlRequestRemove).on({""}); }},
        {"a removal of a file that git does not know",
         "path-unknown",
         -71,
         128,
         {"new"},
         [](Scene& scene) -> Request {
             scene.work().write("new", "");
             return scene.ask(NEBSourceControlRequestRemove).on({"new"});
         }},
        {"a revert of a file that git does not know",
         "path-unknown",
         -71,
         1,
         {"it's new"},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestRevert).on({"it's new"});
         }},
        {"a commit of a file that git does not know",
         "path-unknown",
         -71,
         1,
         {"new"},
         [](Scene& scene) -> Request {
             scene.work().write("new", "");
             return scene.commit({"new"});
         }},
        {"a move of a file that is not there",
         "path-unknown",
         -71,
         128,
         {"nosuch"},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestMove).on({"nosuch"}).to("b");
         }},
        {"a move of a file that git does not know",
         "path-unknown",
         -71,
         128,
         {"new"},
         [](Scene& scene) -> Request {
             scene.work().write("new", "");
             return scene.ask(NEBSourceControlRequestMove).on({"new"}).to("b");
         }},
        {"a move onto a file that is there",
         "destination-exists",
         -60,
         128,
         {"b"},
         [](Scene& scene) -> Request {
             scene.work().commitFile("b", "2\n");
             return scene.ask(NEBSourceControlRequestMove).on({"a"}).to("b");
         }},
        {"a move into a folder that is not there",
         "destination-missing",
         -1,
         128,
         {"nosuch/"},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestMove).on({"a"}).to("nosuch/");
         }},
        {"a move of a folder that holds nothing",
         "source-directory-empty",
         -70,
         128,
         {"d"},
         [](Scene& scene) -> Request {
             std::filesystem::create_directory(scene.work().path("d"));
             return scene.ask(NEBSourceControlRequestMove).on({"d"}).to("e");
         }},
        {"a blame of a file that git does not know",
         "path-unknown",
         4,
         128,
         {"nosuch"},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestBlame).on({"nosuch"});
         }},
        {"a blame of a file that an earlier revision does not have",
         "path-unknown",
         4,
         128,
         {"b"},
         [](Scene& scene) -> Request {
             scene.work().commitFile("b", "2\n");
             return scene.ask(NEBSourceControlRequestBlame).on({"b"}).between("HEAD~1");
         }},
        {"a blame of a file that has been removed from disk",
         "path-unknown",
         4,
         128,
         {"a"},
         [](Scene& scene) -> Request {
             std::filesystem::remove(scene.work().path("a"));
             return scene.ask(NEBSourceControlRequestBlame).on({"a"});
         }},
        {"an export of a file that the revision does not have",
         "path-unknown",
         -1,
         128,
         {"nosuch"},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestExport)
                 .on({scene.work().path("nosuch")})
                 .between("HEAD")
                 .to(scene.folder().path("copy"));
         }},
        {"a copy of a file that is not there",
         "path-unknown",
         2,
         std::nullopt,
         {},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestCopy)
                 .on({scene.work().path("nosuch")})
                 .to(scene.work().path("b"));
         }},
        // revisions
        {"a log of a revision that is not there",
         "revision-unknown",
         4,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestLog).between("nosuch");
         }},
        {"a log from a revision that is not there",
         "revision-unknown",
         4,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestLog).between("nosuch", "HEAD");
         }},
        {"a log of a commit that is not there",
         "revision-unknown",
         4,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestLog)
                 .between("0123456789012345678901234567890123456789");
         }},
        {"a difference from a revision that is not there",
         "revision-unknown",
         4,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestDiff).between("nosuch", "HEAD");
         }},
        {"a blame at a revision that is not there",
         "revision-unknown",
         4,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestBlame).on({"a"}).between("nosuch");
         }},
        {"a listing of a branch that is not there",
         "revision-unknown",
         4,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestList)
                 .on({"."})
                 .with(NEBSourceControlRequestOptionBranch, "nosuch");
         }},
        {"an export at a revision that is not there",
         "revision-unknown",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestExport)
                 .on({scene.work().path("a")})
                 .between("nosuch")
                 .to(scene.folder().path("copy"));
         }},
        {"a merge of a branch that is not there",
         "revision-unknown",
         4,
         1,
         {},
         [](Scene& scene) -> Request {
             return about(scene, NEBSourceControlRequestMerge, "nosuch");
         }},
        {"a merge base of a revision that is not there",
         "revision-unknown",
         4,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestMergeBase).between("HEAD", "nosuch");
         }},
        {"a checkout of a branch that is not there",
         "revision-unknown",
         4,
         1,
         {},
         [](Scene& scene) -> Request {
             return about(scene, NEBSourceControlRequestCheckout, "nosuch");
         }},
        {"a log before the first commit",
         "no-commits-yet",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             return Ask(NEBSourceControlRequestLog, scene.empty().path());
         }},
        {"a new branch before the first commit",
         "revision-unknown",
         4,
         128,
         {},
         [](Scene& scene) -> Request {
             return Ask(NEBSourceControlRequestCreateBranch, scene.empty().path()).to("topic");
         }},
        // branches
        {"a new branch that is there already",
         "branch-exists",
         -1,
         128,
         {},
         [](Scene& scene) -> Request { return branch(scene, "main"); }},
        {"a new branch whose name none can have",
         "branch-name-invalid",
         -1,
         128,
         {},
         [](Scene& scene) -> Request { return branch(scene, "a..b"); }},
        {"a new branch from a revision that is not there",
         "revision-unknown",
         4,
         128,
         {},
         [](Scene& scene) -> Request { return branch(scene, "topic", "nosuch"); }},
        {"a new branch below one that is there",
         "reference-in-the-way",
         -1,
         128,
         {},
         [](Scene& scene) -> Request { return branch(scene, "main/below"); }},
        {"a new branch while another git makes it",
         "ref-locked",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().write(".git/refs/heads/topic.lock", "");
             return branch(scene, "topic");
         }},
        {"a removal of a branch that is not merged",
         "branch-not-merged",
         -91,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.withTopic("b", "2\n");
             return about(scene, NEBSourceControlRequestDeleteBranch, "topic");
         }},
        {"a removal of a branch that is not there",
         "branch-unknown",
         -91,
         1,
         {},
         [](Scene& scene) -> Request {
             return about(scene, NEBSourceControlRequestDeleteBranch, "nosuch");
         }},
        {"a removal of the current branch",
         "branch-in-use",
         -91,
         1,
         {},
         [](Scene& scene) -> Request {
             return about(scene, NEBSourceControlRequestDeleteBranch, "main");
         }},
        {"a removal of a branch that another work tree is on",
         "branch-in-use",
         -91,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.work().git(
                 {"worktree", "add", "--quiet", "-b", "topic", scene.folder().path("tree")});
             return about(scene, NEBSourceControlRequestDeleteBranch, "topic");
         }},
        {"a checkout of a branch that another work tree is on",
         "branch-in-use",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().git(
                 {"worktree", "add", "--quiet", "-b", "topic", scene.folder().path("tree")});
             return about(scene, NEBSourceControlRequestCheckout, "topic");
         }},
        // remotes
        {"a new remote that is there already",
         "remote-exists",
         -1,
         3,
         {},
         [](Scene& scene) -> Request {
             scene.work().git({"remote", "add", "origin", "/x"});
             return scene.ask(NEBSourceControlRequestAddRemote).to("origin").on({"/y"});
         }},
        {"a new remote whose name none can have",
         "remote-name-invalid",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestAddRemote).to("a..b").on({"/y"});
         }},
        {"a removal of a remote that is not there",
         "remote-unknown",
         -1,
         2,
         {},
         [](Scene& scene) -> Request {
             return about(scene, NEBSourceControlRequestRemoveRemote, "nosuch");
         }},
        {"a new remote while another git writes the configuration",
         "ref-locked",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().write(".git/config.lock", "");
             return scene.ask(NEBSourceControlRequestAddRemote).to("origin").on({"/y"});
         }},
        {"the branches of a remote where there is none",
         "remote-unknown",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestListRemoteBranches);
         }},
    };
}

}  // namespace neb::test
