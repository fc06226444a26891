// Commits, hooks, signatures, filters.

#include "Failure.h"

namespace neb::test {

namespace {

/// A commit of a change that is staged.
Request commitOfChange(Scene& scene, const std::string& message = "m") {
    scene.work().write("a", "2\n");
    scene.work().git({"add", "a"});
    return scene.commit({}, message);
}

Request commitWithHook(Scene& scene, const std::string& name, const std::string& script) {
    scene.addHook(scene.work(), name, script);
    return commitOfChange(scene);
}

}  // namespace

Failures commitFailures() {
    return {
        {"a commit where nothing has changed",
         "nothing-to-commit",
         -1,
         1,
         {},
         [](Scene& scene) -> Request { return scene.commit(); }},
        {"a commit where no change is staged",
         "nothing-to-commit",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.work().write("a", "2\n");
             return scene.commit();
         }},
        {"a commit where only files are new that are not tracked",
         "nothing-to-commit",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.work().write("b", "2\n");
             return scene.commit();
         }},
        {"a commit by somebody without an address",
         "identity-unknown",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().git({"config", "user.useConfigOnly", "true"});
             Request request = commitOfChange(scene);
             scene.setVariable("HOME", "/nonexistent");
             scene.setVariable("XDG_CONFIG_HOME", "/nonexistent");
             return request;
         }},
        {"a commit by somebody without a name",
         "identity-unknown",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             Request request = commitOfChange(scene);
             scene.setVariable("GIT_AUTHOR_NAME", "");
             return request;
         }},
        {"a commit with an empty message",
         "message-empty",
         -1,
         1,
         {},
         [](Scene& scene) -> Request { return commitOfChange(scene, " \n"); }},
        {"a commit that cannot be signed",
         "signing-failed",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().git({"config", "commit.gpgSign", "true"});
             scene.work().git({"config", "gpg.program", "/bin/false"});
             return commitOfChange(scene);
         }},
        {"a commit that is to be signed, and there is no gpg",
         "signing-failed",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().git({"config", "commit.gpgSign", "true"});
             scene.work().git({"config", "gpg.program", "/nonexistent/gpg"});
             return commitOfChange(scene);
         }},
        {"a commit that a pre-commit hook refuses",
         "local-hook-refused",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             return commitWithHook(scene, "pre-commit", "echo 'fatal: bad revision' >&2; exit 1");
         }},
        {"a commit that a hook refuses in words of the table of errors",
         "local-hook-refused",
         -21,
         1,
         {},
         [](Scene& scene) -> Request {
             return commitWithHook(scene, "pre-commit",
                                   "echo 'fatal: Authentication failed' >&2; exit 1");
         }},
        {"a commit that a commit-msg hook refuses without a word",
         "local-hook-refused",
         -1,
         1,
         {},
         [](Scene& scene) -> Request { return commitWithHook(scene, "commit-msg", "exit 1"); }},
        {"a commit whose hook ends it by a signal",
         "killed",
         -1,
         std::nullopt,
         {},
         [](Scene& scene) -> Request {
             return commitWithHook(scene, "pre-commit", "kill -9 $PPID");
         }},
        {"a merge that a hook refuses",
         "local-hook-refused",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.withTopic("b", "2\n").commitFile("c", "3\n");
             scene.addHook(scene.work(), "pre-merge-commit", "echo no >&2; exit 1");
             return scene.ask(NEBSourceControlRequestMerge).to("topic");
         }},
        {"a checkout after which a hook fails",
         "local-hook-refused",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.withTopic("b", "2\n");
             scene.addHook(scene.work(), "post-checkout", "exit 3");
             return scene.ask(NEBSourceControlRequestCheckout).to("topic");
         }},
        {"an add through a filter that fails",
         "other-tools",
         -1,
         128,
         {"b.bin"},
         [](Scene& scene) -> Request {
             scene.work().write(".gitattributes", "*.bin filter=odd\n");
             scene.work().git({"config", "filter.odd.clean", "false"});
             scene.work().git({"config", "filter.odd.required", "true"});
             scene.work().write("b.bin", "2\n");
             return scene.ask(NEBSourceControlRequestAdd).on({"b.bin"});
         }},
        {"a checkout through a filter that fails",
         "other-tools",
         -1,
         128,
         {"b.bin"},
         [](Scene& scene) -> Request {
             scene.work().commitFile(".gitattributes", "*.bin filter=odd\n");
             scene.withTopic("b.bin", "2\n");
             scene.work().git({"config", "filter.odd.smudge", "false"});
             scene.work().git({"config", "filter.odd.required", "true"});
             return scene.ask(NEBSourceControlRequestCheckout).to("topic");
         }},
        {"an add through git-lfs, which is not there",
         "other-tools",
         -1,
         128,
         {"b.bin"},
         [](Scene& scene) -> Request {
             scene.work().write(".gitattributes", "*.bin filter=lfs\n");
             // Not filter.lfs.process: by chance, git finds that gone as it writes or as it reads.
             scene.work().git({"config", "filter.lfs.clean", "/nonexistent/git-lfs clean -- %f"});
             scene.work().git({"config", "filter.lfs.required", "true"});
             scene.work().write("b.bin", "2\n");
             return scene.ask(NEBSourceControlRequestAdd).on({"b.bin"});
         }},
    };
}

}  // namespace neb::test
