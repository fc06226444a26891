// What can be taken for two things, and names that git can do nothing with.

#include "Failure.h"

namespace neb::test {

Failures ambiguityFailures() {
    return {
        {"a log of a name that a branch and a file have",
         "revision-ambiguous",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().git({"branch", "a"});
             return scene.ask(NEBSourceControlRequestLog).between("a");
         }},
        {"a log of a revision that is a file",
         "revision-ambiguous",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestLog).between("a");
         }},
        {"a checkout of a name that a file and a branch of the remote have",
         "revision-ambiguous",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.shared();
             scene.work().git({"push", "--quiet", "origin", "main:a"});
             scene.work().git({"fetch", "--quiet"});
             return scene.ask(NEBSourceControlRequestCheckout).to("a");
         }},
        {"a push of a name that a branch and a tag have",
         "revision-ambiguous",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.shared();
             scene.work().git({"branch", "both"});
             scene.work().git({"tag", "both"});
             return scene.push("both", "both");
         }},
        {"a push of a commit to a branch that is not there",
         "push-destination-unclear",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.shared();
             return scene.push("HEAD~0", "new");
         }},
        {"a new branch whose name is too long",
         "name-too-long",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestCreateBranch)
                 .to(std::string(300, 'n'))
                 .with(NEBSourceControlRequestOptionSourceLocation, "HEAD");
         }},
        {"a new branch below a file that is no branch",
         "reference-in-the-way",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().write(".git/refs/heads/d.lock/x", "");
             scene.work().write(".git/refs/heads/n", "junk\n");
             return scene.ask(NEBSourceControlRequestCreateBranch)
                 .to("n/x")
                 .with(NEBSourceControlRequestOptionSourceLocation, "HEAD");
         }},
        {"a log of a branch whose file cannot be read",
         "reference-broken",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().write(".git/refs/heads/topic", "junk\n");
             return scene.ask(NEBSourceControlRequestLog).between("topic");
         }},
        {"a checkout of a branch that names one that is not there",
         "reference-broken",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.work().git({"symbolic-ref", "refs/heads/topic", "refs/heads/gone"});
             return scene.ask(NEBSourceControlRequestCheckout).to("topic");
         }},
        {"a rebase onto a branch that is not there",
         "revision-unknown",
         4,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestUpdate).bySubversion().to("nosuch");
         }},
        {"a move of a folder into itself",
         "path-invalid",
         -1,
         128,
         {"d"},
         [](Scene& scene) -> Request {
             scene.work().commitFile("d/b", "1\n");
             return scene.ask(NEBSourceControlRequestMove).on({"d"}).to("d/e");
         }},
        {"a move of a file that is in conflict",
         "conflict-unresolved",
         -1,
         128,
         {"a"},
         [](Scene& scene) -> Request {
             scene.inConflict();
             return scene.ask(NEBSourceControlRequestMove).on({"a"}).to("b");
         }},
        {"an add of a file outside the sparse checkout",
         "path-sparse",
         -1,
         1,
         {"b"},
         [](Scene& scene) -> Request {
             scene.work().git({"sparse-checkout", "set", "--no-cone", "/a"});
             scene.work().write("b", "1\n");
             return scene.ask(NEBSourceControlRequestAdd).on({"b"});
         }},
        {"a merge base of one revision alone",
         "request-invalid",
         -1,
         129,
         {},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestMergeBase).between("HEAD");
         }},
    };
}

}  // namespace neb::test
