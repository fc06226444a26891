// Ambiguous names, and names that git cannot use.

#include "Failure.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

namespace neb::test {

namespace {

const Failure failures[] = {
    {.how = "a log of a name that a branch and a file have",
     .errorClass = NEBSourceControlRevisionAmbiguousErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"branch", "a"});
         return scene.request(NEBSourceControlRequestLog).between("a");
     }},
    {.how = "a log of a name that is a file",
     .errorClass = NEBSourceControlRevisionAmbiguousErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestLog).between("a");
     }},
    {.how = "a checkout of a name that a file and a remote branch have",
     .errorClass = NEBSourceControlRevisionAmbiguousErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.shared();
         scene.work().git({"push", "--quiet", "origin", "main:a"});
         scene.work().git({"fetch", "--quiet"});
         return scene.request(NEBSourceControlRequestCheckout).to("a");
     }},
    {.how = "a push of a name that a branch and a tag have",
     .errorClass = NEBSourceControlRevisionAmbiguousErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.shared();
         scene.work().git({"branch", "both"});
         scene.work().git({"tag", "both"});
         return scene.push("both", "both");
     }},
    {.how = "a push of a commit to a branch that does not exist",
     .errorClass = NEBSourceControlPushDestinationUnclearErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.shared();
         return scene.push("HEAD~0", "new");
     }},
    {.how = "a new branch whose name is too long",
     .errorClass = NEBSourceControlNameTooLongErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestCreateBranch)
             .to(std::string(300, 'n'))
             .with(NEBSourceControlRequestOptionSourceLocation, "HEAD");
     }},
    {.how = "a new branch below a file in refs that is not a branch",
     .errorClass = NEBSourceControlReferenceInTheWayErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().write(".git/refs/heads/d.lock/x", "");
         scene.work().write(".git/refs/heads/n", "junk\n");
         return scene.request(NEBSourceControlRequestCreateBranch)
             .to("n/x")
             .with(NEBSourceControlRequestOptionSourceLocation, "HEAD");
     }},
    {.how = "a log of a branch with an unreadable reference file",
     .errorClass = NEBSourceControlReferenceBrokenErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().write(".git/refs/heads/topic", "junk\n");
         return scene.request(NEBSourceControlRequestLog).between("topic");
     }},
    {.how = "a checkout of a symbolic branch whose target does not exist",
     .errorClass = NEBSourceControlReferenceBrokenErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"symbolic-ref", "refs/heads/topic", "refs/heads/gone"});
         return scene.request(NEBSourceControlRequestCheckout).to("topic");
     }},
    {.how = "a rebase onto a branch that does not exist",
     .errorClass = NEBSourceControlRevisionUnknownErrorClass,
     .code = NEBSourceControlFileMissingAtRevisionError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestUpdate).bySubversion().to("nosuch");
     }},
    {.how = "a move of a folder into itself",
     .errorClass = NEBSourceControlPathInvalidErrorClass,
     .exitStatus = 128,
     .files = {"d"},
     .provoke = [](Scene& scene) -> Request {
         scene.work().commitFile("d/b", "1\n");
         return scene.request(NEBSourceControlRequestMove).on({"d"}).to("d/e");
     }},
    {.how = "a move of a file with conflicts",
     .errorClass = NEBSourceControlConflictUnresolvedErrorClass,
     .exitStatus = 128,
     .files = {"a"},
     .provoke = [](Scene& scene) -> Request {
         scene.inConflict();
         return scene.request(NEBSourceControlRequestMove).on({"a"}).to("b");
     }},
    {.how = "an add of a file outside the sparse checkout",
     .errorClass = NEBSourceControlPathSparseErrorClass,
     .exitStatus = 1,
     .files = {"b"},
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"sparse-checkout", "set", "--no-cone", "/a"});
         scene.work().write("b", "1\n");
         return scene.request(NEBSourceControlRequestAdd).on({"b"});
     }},
    {.how = "a merge base of only one revision",
     .errorClass = NEBSourceControlRequestInvalidErrorClass,
     .exitStatus = 129,
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestMergeBase).between("HEAD");
     }},
};

}  // namespace

Failures ambiguityFailures() {
    return failures;
}

}  // namespace neb::test
