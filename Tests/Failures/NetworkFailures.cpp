// Connections: HTTP, TLS, ssh, the git protocol and Subversion.

#include "Failure.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

namespace neb::test {

namespace {

constexpr const char* requiresUserName = "WWW-Authenticate: Basic realm=\"demo\"\r\n";

std::string local(const std::string& scheme, int port) {
    return scheme + "://127.0.0.1:" + std::to_string(port) + "/x.git";
}

/// Returns the URL with a user name.
std::string withUser(std::string url, const std::string& user) {
    return url.insert(url.find("//") + 2, user + "@");
}

/// Returns a fetch through a replacement of ssh.
Request overSSH(Scene& scene, const std::string& script) {
    scene.setSSH(script);
    scene.work().git({"remote", "add", "origin", "git@example.invalid:demo.git"});
    return scene.fetch();
}

/// Returns a push to a server that sends this response to the pushed data.
Request pushedTo(Scene& scene, std::string answer) {
    scene.work().git({"remote", "add", "origin", scene.serveEmptyRepository(std::move(answer))});
    return scene.push("main", "main");
}

const Failure failures[] = {
    {.how = "an HTTP server requires a user name, and none is known",
     .errorClass = NEBSourceControlCredentialsNeededErrorClass,
     .code = NEBSourceControlAuthenticationError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.clone(scene.serve(httpAnswer("401 Unauthorized", requiresUserName)));
     }},
    {.how = "an HTTP server requires a password, and only the user name is known",
     .errorClass = NEBSourceControlCredentialsNeededErrorClass,
     .code = NEBSourceControlAuthenticationError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.clone(
             withUser(scene.serve(httpAnswer("401 Unauthorized", requiresUserName)), "ann"));
     }},
    {.how = "an HTTP server rejects user name and password",
     .errorClass = NEBSourceControlCredentialsRefusedErrorClass,
     .code = NEBSourceControlAuthenticationError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.clone(
             withUser(scene.serve(httpAnswer("401 Unauthorized", requiresUserName)), "ann:wrong"));
     }},
    {.how = "an HTTP server responds with status 400",
     .errorClass = NEBSourceControlHTTPRefusedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.clone(scene.serve(httpAnswer("400 Bad Request")));
     }},
    {.how = "an HTTP server responds with status 403",
     .errorClass = NEBSourceControlHTTPRefusedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.clone(scene.serve(httpAnswer("403 Forbidden")));
     }},
    {.how = "an HTTP server responds to a push with status 403",
     .errorClass = NEBSourceControlHTTPRefusedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"remote", "add", "origin", scene.serve(httpAnswer("403 Forbidden"))});
         return scene.push("main", "main");
     }},
    {.how = "an HTTP server responds to the pushed data with status 413",
     .errorClass = NEBSourceControlHTTPRefusedErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         return pushedTo(scene, httpAnswer("413 Payload Too Large"));
     }},
    {.how = "an HTTP server responds to the pushed data with status 403",
     .errorClass = NEBSourceControlHTTPRefusedErrorClass,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         return pushedTo(scene, httpAnswer("403 Forbidden"));
     }},
    {.how = "an HTTP server responds to the pushed data with status 500",
     .errorClass = NEBSourceControlServerFailedErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         return pushedTo(scene, httpAnswer("500 Internal Server Error"));
     }},
    {.how = "an HTTP server responds with status 404",
     .errorClass = NEBSourceControlRepositoryNotFoundErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.clone(scene.serve(httpAnswer("404 Not Found")));
     }},
    {.how = "an HTTP server responds with status 429",
     .errorClass = NEBSourceControlHTTPRefusedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.clone(scene.serve(httpAnswer("429 Too Many Requests")));
     }},
    {.how = "an HTTP server responds with status 500",
     .errorClass = NEBSourceControlServerFailedErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.clone(scene.serve(httpAnswer("500 Internal Server Error")));
     }},
    {.how = "an HTTP server responds to a fetch with status 503",
     .errorClass = NEBSourceControlServerFailedErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git(
             {"remote", "add", "origin", scene.serve(httpAnswer("503 Service Unavailable"))});
         return scene.fetch();
     }},
    {.how = "an HTTP server responds with a web page",
     .errorClass = NEBSourceControlRepositoryNotFoundErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.clone(scene.serve(
             httpAnswer("200 OK", "Content-Type: text/html\r\n", "<html>\nHello\n</html>\n")));
     }},
    {.how = "an HTTP server closes the connection without a response",
     .errorClass = NEBSourceControlConnectionCutErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request { return scene.clone(scene.serveDisconnects()); }},
    {.how = "an HTTP server closes the connection during its response",
     .errorClass = NEBSourceControlConnectionCutErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.clone(scene.serve("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf"));
     }},
    {.how = "no process listens on the port of an HTTP server",
     .errorClass = NEBSourceControlHostUnreachableErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.clone(local("http", Scene::closedPort()));
     }},
    {.how = "no process listens on the port of an HTTP server whose branches are requested",
     .errorClass = NEBSourceControlHostUnreachableErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"remote", "add", "origin", local("http", Scene::closedPort())});
         return scene.request(NEBSourceControlRequestListRemoteBranches)
             .with(NEBSourceControlRequestOptionRemoteName, "origin");
     }},
    {.how = "the host name of an HTTP server is unknown",
     .errorClass = NEBSourceControlHostUnknownErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.clone("http://nonexistent.invalid/x.git");
     }},
    {.how = "no process listens on the port of the proxy",
     .errorClass = NEBSourceControlHostUnreachableErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.setVariable("http_proxy", "http://127.0.0.1:" + std::to_string(Scene::closedPort()));
         return scene.clone("http://nonexistent.invalid/x.git");
     }},
    {.how = "the host name of the proxy is unknown",
     .errorClass = NEBSourceControlHostUnknownErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.setVariable("http_proxy", "http://nonexistent.invalid:8080/");
         return scene.clone("http://127.0.0.1:1/x.git");
     }},
    {.how = "an HTTPS server has a self-signed certificate",
     .errorClass = NEBSourceControlCertificateUntrustedErrorClass,
     .code = NEBSourceControlAuthenticationError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request { return scene.clone(scene.serveOverTLS()); }},
    {.how = "an HTTPS server has the certificate of another host",
     .errorClass = NEBSourceControlCertificateUntrustedErrorClass,
     .code = NEBSourceControlAuthenticationError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         const std::string url = scene.serveOverTLS();
         scene.setVariable("GIT_SSL_CAINFO", scene.certificate());
         return scene.clone(url);
     }},
    {.how = "an HTTPS server speaks plain HTTP",
     .errorClass = NEBSourceControlTLSFailedErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.clone("https" + scene.serve(httpAnswer("200 OK")).substr(4));
     }},
    {.how = "no process listens on the port of the git protocol",
     .errorClass = NEBSourceControlHostUnreachableErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.clone(local("git", Scene::closedPort()));
     }},
    {.how = "the host name of a git protocol server is unknown",
     .errorClass = NEBSourceControlHostUnknownErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.clone("git://nonexistent.invalid/x.git");
     }},
    {.how = "a git protocol server closes the connection",
     .errorClass = NEBSourceControlRemoteUnreadableErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request { return scene.clone(scene.serveDisconnects("git")); }},
    {.how = "ssh offers no key that the server accepts",
     .errorClass = NEBSourceControlSSHKeyRefusedErrorClass,
     .code = NEBSourceControlAuthenticationError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return overSSH(scene,
                        "echo 'git@example.invalid: Permission denied (publickey).' >&2; "
                        "exit 255");
     }},
    {.how = "ssh offers no password that the server accepts",
     .errorClass = NEBSourceControlSSHKeyRefusedErrorClass,
     .code = NEBSourceControlAuthenticationError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return overSSH(scene,
                        "echo 'ann@example.invalid: Permission denied (password).' >&2; "
                        "exit 255");
     }},
    {.how = "the host key of an ssh server is unknown",
     .errorClass = NEBSourceControlSSHHostKeyErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return overSSH(scene, "echo 'Host key verification failed.' >&2; exit 255");
     }},
    {.how = "the host key of an ssh server changed",
     .errorClass = NEBSourceControlSSHHostKeyErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return overSSH(scene,
                        "echo '@    WARNING: REMOTE HOST IDENTIFICATION HAS CHANGED!     @' >&2; "
                        "echo 'Host key verification failed.' >&2; exit 255");
     }},
    {.how = "the host name of an ssh server is unknown",
     .errorClass = NEBSourceControlHostUnknownErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return overSSH(scene,
                        "echo 'ssh: Could not resolve hostname example.invalid: Name or "
                        "service not known' >&2; exit 255");
     }},
    {.how = "no process listens on the ssh port",
     .errorClass = NEBSourceControlHostUnreachableErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return overSSH(scene,
                        "echo 'ssh: connect to host example.invalid port 22: Connection "
                        "refused' >&2; exit 255");
     }},
    {.how = "an ssh server does not respond",
     .errorClass = NEBSourceControlHostUnreachableErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return overSSH(scene,
                        "echo 'ssh: connect to host example.invalid port 22: Connection timed "
                        "out' >&2; exit 255");
     }},
    {.how = "an ssh server closes the connection",
     .errorClass = NEBSourceControlConnectionCutErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return overSSH(scene,
                        "echo 'kex_exchange_identification: Connection closed by remote host' "
                        ">&2; exit 255");
     }},
    {.how = "a hosting service does not have the repository",
     .errorClass = NEBSourceControlRepositoryNotFoundErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return overSSH(scene, "echo 'ERROR: Repository not found.' >&2; exit 1");
     }},
    {.how = "an ssh server does not have the repository",
     .errorClass = NEBSourceControlRepositoryNotFoundErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return overSSH(scene, "for word; do :; done; cd / && eval \"$word\"");
     }},
    {.how = "ssh exits without a message",
     .errorClass = NEBSourceControlRemoteUnreadableErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request { return overSSH(scene, "exit 255"); }},
    {.how = "ssh is not installed",
     .errorClass = NEBSourceControlProgramMissingErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.setVariable("GIT_SSH", "/nonexistent/ssh");
         scene.work().git({"remote", "add", "origin", "git@example.invalid:demo.git"});
         return scene.fetch();
     }},
    {.how = "no process listens on the port of a Subversion server",
     .errorClass = NEBSourceControlHostUnreachableErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"svn", "init", "svn://127.0.0.1:1/trunk"});
         return scene.request(NEBSourceControlRequestFetch).bySubversion();
     }},
    {.how = "a local repository does not exist",
     .errorClass = NEBSourceControlRepositoryNotFoundErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.clone(scene.folder().path("nosuch.git"));
     }},
    {.how = "the repository of a remote no longer exists",
     .errorClass = NEBSourceControlRepositoryNotFoundErrorClass,
     .code = NEBSourceControlNotReachableError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"remote", "add", "origin", scene.folder().path("gone.git")});
         return scene.fetch();
     }},
    {.how = "a URL has an unknown scheme",
     .errorClass = NEBSourceControlTransportUnknownErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         return scene.clone("nosuch://example.invalid/x.git");
     }},
    {.how = "a URL that would run a program",
     .errorClass = NEBSourceControlTransportForbiddenErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request { return scene.clone("ext::true"); }},
    {.how = "the configuration forbids local repositories",
     .errorClass = NEBSourceControlTransportForbiddenErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.shared();
         scene.work().git({"config", "protocol.file.allow", "never"});
         return scene.fetch();
     }},
};

}  // namespace

Failures networkFailures() {
    return failures;
}

}  // namespace neb::test
