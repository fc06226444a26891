// Damage here and in the repository that is talked to, and servers that say what git does not
// expect.

#include <filesystem>

#include "Failure.h"

namespace neb::test {

namespace {

namespace fs = std::filesystem;

std::string objectFile(const std::string& commit) {
    return "objects/" + commit.substr(0, 2) + "/" + commit.substr(2, 38);
}

std::string contentOf(Scene& scene, const std::string& object) {
    return scene.work().git({"rev-parse", object});
}

/// work() is a partial clone, which lacks the content of "b"; shared() is not there any more.
void makePartialCloneOfLostRepository(Scene& scene) {
    const std::string shared = scene.shared();
    scene.work().git({"--git-dir", shared, "config", "uploadpack.allowFilter", "true"});
    scene.pushFromElsewhere("b", "2\n");
    scene.work().git({"config", "extensions.partialClone", "origin"});
    scene.work().git({"fetch", "--quiet", "--filter=blob:none", "origin"});
    fs::remove_all(shared);
}

}  // namespace

Failures damageFailures() {
    return {
        {"a clone of a repository that has lost content",
         "remote-damaged",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             const std::string url = "file://" + scene.shared();
             fs::remove(scene.shared() + "/" + objectFile(contentOf(scene, "HEAD:a")));
             return scene.clone(url);
         }},
        {"a clone of a repository with a line in packed-refs that is no reference",
         "remote-damaged",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.pushFromElsewhere("b", "1\n");
             fs::copy_file(scene.shared() + "/description", scene.shared() + "/packed-refs");
             return scene.clone("file://" + scene.shared());
         }},
        {"a push of a commit whose content is lost here",
         "objects-damaged",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.shared();
             scene.work().commitFile("a", "2\n");
             fs::remove(scene.work().path(".git/" + objectFile(contentOf(scene, "HEAD:a"))));
             return scene.push("main", "main");
         }},
        {"a checkout in a partial clone of content that its remote has lost",
         "objects-missing",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             makePartialCloneOfLostRepository(scene);
             scene.work().git({"init", "--quiet", "--bare", scene.shared()});
             return scene.ask(NEBSourceControlRequestCheckout).to("origin/main");
         }},
        {"a checkout in a partial clone whose remote is gone",
         "repository-not-found",
         -20,
         128,
         {},
         [](Scene& scene) -> Request {
             makePartialCloneOfLostRepository(scene);
             return scene.ask(NEBSourceControlRequestCheckout).to("origin/main");
         }},
        {"a log with a list of shallow commits that cannot be read",
         "repository-damaged",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().write(".git/shallow", "junk\n");
             return scene.ask(NEBSourceControlRequestLog);
         }},
        {"a push that is to be signed, to a repository that takes none",
         "remote-unsupported",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.shared();
             scene.work().git({"config", "push.gpgSign", "true"});
             scene.work().commitFile("a", "2\n");
             return scene.push("main", "main");
         }},
        {"an ssh server greets before it speaks git's protocol",
         "protocol-error",
         -20,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.setSSH("echo welcome to example");
             scene.work().git({"remote", "add", "origin", "git@example.invalid:demo.git"});
             return scene.fetch();
         }},
        {"an ssh server knows none of the methods that ssh here has",
         "ssh-negotiation-failed",
         -20,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.setSSH(
                 "echo 'Unable to negotiate with 192.0.2.1 port 22: no matching host key type "
                 "found. Their offer: ssh-rsa' >&2; exit 255");
             scene.work().git({"remote", "add", "origin", "git@example.invalid:demo.git"});
             return scene.fetch();
         }},
        {"ssh has a setting that it does not know",
         "ssh-configuration-broken",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.setSSH(
                 "echo 'config: line 1: Bad configuration option: nosuch' >&2\n"
                 "echo 'config: terminating, 1 bad configuration options' >&2; exit 255");
             scene.work().git({"remote", "add", "origin", "git@example.invalid:demo.git"});
             return scene.fetch();
         }},
        {"a push from a shallow clone to a repository without the rest",
         "repository-shallow",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.work().commitFile("a", "2\n");
             scene.work().write(".git/shallow", contentOf(scene, "HEAD"));
             const std::string other = scene.folder().path("other.git");
             scene.work().git({"init", "--quiet", "--bare", other});
             scene.work().git({"remote", "add", "origin", other});
             return scene.push("main", "main");
         }},
        {"an HTTP server sends everyone elsewhere without end",
         "url-invalid",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.clone(scene.serve(httpAnswer("302 Found", "Location: /info/refs\r\n")));
         }},
        {"a proxy refuses the way to an HTTPS server",
         "proxy-refused",
         -20,
         128,
         {},
         [](Scene& scene) -> Request {
             const std::string proxy = scene.serve(httpAnswer("403 Forbidden"));
             scene.setVariable("https_proxy", proxy.substr(0, proxy.rfind('/')));
             return scene.clone("https://example.invalid/x.git");
         }},
        {"a fetch over the bridge whose repository is gone",
         "repository-not-found",
         -20,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.work().git({"svn", "init", "file:///nonexistent/trunk"});
             return scene.ask(NEBSourceControlRequestFetch).bySubversion();
         }},
        {"a fetch over the bridge in a repository without one",
         "no-subversion-upstream",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             return scene.ask(NEBSourceControlRequestFetch).bySubversion();
         }},
        {"a push over the bridge of a history that is not Subversion's",
         "no-subversion-upstream",
         -92,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.work().git({"svn", "init", scene.subversion().url() + "/trunk"});
             return scene.ask(NEBSourceControlRequestPush).bySubversion();
         }},
    };
}

}  // namespace neb::test
