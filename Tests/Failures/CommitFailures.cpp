// Commits, hooks, signatures and filters.

#include "Failure.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

namespace neb::test {

namespace {

/// Returns a commit of a staged change.
Request commitOfChange(Scene& scene, const std::string& message = "m") {
    scene.work().write("a", "2\n");
    scene.work().git({"add", "a"});
    return scene.commit({}, message);
}

Request commitWithHook(Scene& scene, const std::string& name, const std::string& script) {
    scene.addHook(scene.work(), name, script);
    return commitOfChange(scene);
}

const Failure failures[] = {
    {.how = "a commit without changes",
     .errorClass = NEBSourceControlNothingToCommitErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request { return scene.commit(); }},
    {.how = "a commit without staged changes",
     .errorClass = NEBSourceControlNothingToCommitErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.work().write("a", "2\n");
         return scene.commit();
     }},
    {.how = "a commit with only untracked files",
     .errorClass = NEBSourceControlNothingToCommitErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.work().write("b", "2\n");
         return scene.commit();
     }},
    {.how = "a commit by a user without an e-mail address",
     .errorClass = NEBSourceControlIdentityUnknownErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"config", "user.useConfigOnly", "true"});
         Request request = commitOfChange(scene);
         scene.setVariable("HOME", "/nonexistent");
         scene.setVariable("XDG_CONFIG_HOME", "/nonexistent");
         return request;
     }},
    {.how = "a commit by a user without a name",
     .errorClass = NEBSourceControlIdentityUnknownErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         Request request = commitOfChange(scene);
         scene.setVariable("GIT_AUTHOR_NAME", "");
         return request;
     }},
    {.how = "a commit with an empty message",
     .errorClass = NEBSourceControlMessageEmptyErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request { return commitOfChange(scene, " \n"); }},
    {.how = "a commit that cannot be signed",
     .errorClass = NEBSourceControlSigningFailedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"config", "commit.gpgSign", "true"});
         scene.work().git({"config", "gpg.program", "/bin/false"});
         return commitOfChange(scene);
     }},
    {.how = "a signed commit without gpg",
     .errorClass = NEBSourceControlSigningFailedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"config", "commit.gpgSign", "true"});
         scene.work().git({"config", "gpg.program", "/nonexistent/gpg"});
         return commitOfChange(scene);
     }},
    {.how = "a commit that a pre-commit hook refuses",
     .errorClass = NEBSourceControlLocalHookRefusedErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         return commitWithHook(scene, "pre-commit", "echo 'fatal: bad revision' >&2; exit 1");
     }},
    {.how = "a commit that a hook refuses with a message of the error table",
     .errorClass = NEBSourceControlLocalHookRefusedErrorClass,
     .code = NEBSourceControlAuthenticationError,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         return commitWithHook(scene, "pre-commit",
                               "echo 'fatal: Authentication failed' >&2; exit 1");
     }},
    {.how = "a commit that a commit-msg hook refuses without a message",
     .errorClass = NEBSourceControlLocalHookRefusedErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         return commitWithHook(scene, "commit-msg", "exit 1");
     }},
    {.how = "a commit whose hook kills git with a signal",
     .errorClass = NEBSourceControlKilledErrorClass,
     .provoke = [](Scene& scene) -> Request {
         return commitWithHook(scene, "pre-commit", "kill -9 $PPID");
     }},
    {.how = "a merge that a hook refuses",
     .errorClass = NEBSourceControlLocalHookRefusedErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.withTopic("b", "2\n").commitFile("c", "3\n");
         scene.addHook(scene.work(), "pre-merge-commit", "echo no >&2; exit 1");
         return scene.request(NEBSourceControlRequestMerge).to("topic");
     }},
    {.how = "a checkout after which a hook fails",
     .errorClass = NEBSourceControlLocalHookRefusedErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.withTopic("b", "2\n");
         scene.addHook(scene.work(), "post-checkout", "exit 3");
         return scene.request(NEBSourceControlRequestCheckout).to("topic");
     }},
    {.how = "an add through a filter that fails",
     .errorClass = NEBSourceControlOtherToolsErrorClass,
     .exitStatus = 128,
     .files = {"b.bin"},
     .provoke = [](Scene& scene) -> Request {
         scene.work().write(".gitattributes", "*.bin filter=odd\n");
         scene.work().git({"config", "filter.odd.clean", "false"});
         scene.work().git({"config", "filter.odd.required", "true"});
         scene.work().write("b.bin", "2\n");
         return scene.request(NEBSourceControlRequestAdd).on({"b.bin"});
     }},
    {.how = "a checkout through a filter that fails",
     .errorClass = NEBSourceControlOtherToolsErrorClass,
     .exitStatus = 128,
     .files = {"b.bin"},
     .provoke = [](Scene& scene) -> Request {
         scene.work().commitFile(".gitattributes", "*.bin filter=odd\n");
         scene.withTopic("b.bin", "2\n");
         scene.work().git({"config", "filter.odd.smudge", "false"});
         scene.work().git({"config", "filter.odd.required", "true"});
         return scene.request(NEBSourceControlRequestCheckout).to("topic");
     }},
    {.how = "an add through git-lfs, which is not installed",
     .errorClass = NEBSourceControlOtherToolsErrorClass,
     .exitStatus = 128,
     .files = {"b.bin"},
     .provoke = [](Scene& scene) -> Request {
         scene.work().write(".gitattributes", "*.bin filter=lfs\n");
         // Not filter.lfs.process: git notices its absence at different times.
         scene.work().git({"config", "filter.lfs.clean", "/nonexistent/git-lfs clean -- %f"});
         scene.work().git({"config", "filter.lfs.required", "true"});
         scene.work().write("b.bin", "2\n");
         return scene.request(NEBSourceControlRequestAdd).on({"b.bin"});
     }},
};

}  // namespace

Failures commitFailures() {
    return failures;
}

}  // namespace neb::test
