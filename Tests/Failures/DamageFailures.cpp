// Damaged local and remote repositories, and servers with unexpected responses.

#include <filesystem>

#include "Failure.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

namespace neb::test {

namespace {

namespace fs = std::filesystem;

std::string objectFile(const std::string& commit) {
    return "objects/" + commit.substr(0, 2) + "/" + commit.substr(2, 38);
}

std::string contentOf(Scene& scene, const std::string& object) {
    return scene.work().git({"rev-parse", object});
}

/// Makes work() a partial clone without the content of "b" and deletes shared().
void makePartialCloneOfLostRepository(Scene& scene) {
    const std::string shared = scene.shared();
    scene.work().git({"--git-dir", shared, "config", "uploadpack.allowFilter", "true"});
    scene.pushFromOtherClone("b", "2\n");
    scene.work().git({"config", "extensions.partialClone", "origin"});
    scene.work().git({"fetch", "--quiet", "--filter=blob:none", "origin"});
    fs::remove_all(shared);
}

const Failure failures[] = {
    {.how = "a clone of a repository with a missing object",
     .errorClass = NEBSourceControlRemoteDamagedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         const std::string url = "file://" + scene.shared();
         fs::remove(scene.shared() + "/" + objectFile(contentOf(scene, "HEAD:a")));
         return scene.clone(url);
     }},
    {.how = "a clone of a repository with an invalid line in packed-refs",
     .errorClass = NEBSourceControlRemoteDamagedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.pushFromOtherClone("b", "1\n");
         fs::copy_file(scene.shared() + "/description", scene.shared() + "/packed-refs");
         return scene.clone("file://" + scene.shared());
     }},
    {.how = "a push of a commit whose content is missing locally",
     .errorClass = NEBSourceControlObjectsDamagedErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.shared();
         scene.work().commitFile("a", "2\n");
         fs::remove(scene.work().path(".git/" + objectFile(contentOf(scene, "HEAD:a"))));
         return scene.push("main", "main");
     }},
    {.how = "a checkout in a partial clone of content that the remote lost",
     .errorClass = NEBSourceControlObjectsMissingErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         makePartialCloneOfLostRepository(scene);
         scene.work().git({"init", "--quiet", "--bare", scene.shared()});
         return scene.request(NEBSourceControlRequestCheckout).to("origin/main");
     }},
    {.how = "a checkout in a partial clone whose remote no longer exists",
     .errorClass = NEBSourceControlRepositoryNotFoundErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         makePartialCloneOfLostRepository(scene);
         return scene.request(NEBSourceControlRequestCheckout).to("origin/main");
     }},
    {.how = "a log with an unreadable list of shallow commits",
     .errorClass = NEBSourceControlRepositoryDamagedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().write(".git/shallow", "junk\n");
         return scene.request(NEBSourceControlRequestLog);
     }},
    {.how = "a signed push to a repository that does not support it",
     .errorClass = NEBSourceControlRemoteUnsupportedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.shared();
         scene.work().git({"config", "push.gpgSign", "true"});
         scene.work().commitFile("a", "2\n");
         return scene.push("main", "main");
     }},
    {.how = "an ssh server prints a greeting before the git protocol",
     .errorClass = NEBSourceControlProtocolErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.setSSH("echo welcome to example");
         scene.work().git({"remote", "add", "origin", "git@example.invalid:demo.git"});
         return scene.fetch();
     }},
    {.how = "an ssh server supports no method of the ssh client",
     .errorClass = NEBSourceControlSSHNegotiationFailedErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.setSSH(
             "echo 'Unable to negotiate with 192.0.2.1 port 22: no matching host key type "
             "found. Their offer: ssh-rsa' >&2; exit 255");
         scene.work().git({"remote", "add", "origin", "git@example.invalid:demo.git"});
         return scene.fetch();
     }},
    {.how = "ssh has an unknown setting",
     .errorClass = NEBSourceControlSSHConfigurationBrokenErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.setSSH(
             "echo 'config: line 1: Bad configuration option: nosuch' >&2\n"
             "echo 'config: terminating, 1 bad configuration options' >&2; exit 255");
         scene.work().git({"remote", "add", "origin", "git@example.invalid:demo.git"});
         return scene.fetch();
     }},
    {.how = "a push from a shallow clone to a repository without the older commits",
     .errorClass = NEBSourceControlRepositoryShallowErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.work().commitFile("a", "2\n");
         scene.work().write(".git/shallow", contentOf(scene, "HEAD"));
         const std::string other = scene.folder().path("other.git");
         scene.work().git({"init", "--quiet", "--bare", other});
         scene.work().git({"remote", "add", "origin", other});
         return scene.push("main", "main");
     }},
    {.how = "an HTTP server redirects in a loop",
     .errorClass = NEBSourceControlURLInvalidErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.clone(scene.serve(httpAnswer("302 Found", "Location: /info/refs\r\n")));
     }},
    {.how = "a proxy refuses the connection to an HTTPS server",
     .errorClass = NEBSourceControlProxyRefusedErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         const std::string proxy = scene.serve(httpAnswer("403 Forbidden"));
         scene.setVariable("https_proxy", proxy.substr(0, proxy.rfind('/')));
         return scene.clone("https://example.invalid/x.git");
     }},
    {.how = "a Subversion fetch from a repository that no longer exists",
     .errorClass = NEBSourceControlRepositoryNotFoundErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"svn", "init", "file:///nonexistent/trunk"});
         return scene.request(NEBSourceControlRequestFetch).bySubversion();
     }},
    {.how = "a Subversion fetch without a Subversion remote",
     .errorClass = NEBSourceControlNoSubversionUpstreamErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         return scene.request(NEBSourceControlRequestFetch).bySubversion();
     }},
    {.how = "a Subversion push of a history that is not from Subversion",
     .errorClass = NEBSourceControlNoSubversionUpstreamErrorClass,
     .code = NEBSourceControlTrackingBranchNotFoundError,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"svn", "init", scene.subversion().url() + "/trunk"});
         return scene.request(NEBSourceControlRequestPush).bySubversion();
     }},
};

}  // namespace

Failures damageFailures() {
    return failures;
}

}  // namespace neb::test
