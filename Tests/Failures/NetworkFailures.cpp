// On the way to another machine: HTTP, TLS, ssh, git's own protocol, Subversion's.

#include "Failure.h"

namespace neb::test {

namespace {

constexpr const char* wantsName = "WWW-Authenticate: Basic realm=\"demo\"\r\n";

std::string local(const std::string& scheme, int port) {
    return scheme + "://127.0.0.1:" + std::to_string(port) + "/x.git";
}

/// The URL with this between the scheme and the host.
std::string withUser(std::string url, const std::string& user) {
    return url.insert(url.find("//") + 2, user + "@");
}

/// A fetch by way of an ssh that does this.
Request overSSH(Scene& scene, const std::string& script) {
    scene.setSSH(script);
    scene.work().git({"remote", "add", "origin", "git@example.invalid:demo.git"});
    return scene.fetch();
}

/// A push to a server that answers so when it has received the commits.
Request pushedTo(Scene& scene, std::string answer) {
    scene.work().git({"remote", "add", "origin", scene.serveEmptyRepository(std::move(answer))});
    return scene.push("main", "main");
}

}  // namespace

Failures networkFailures() {
    return {
        {"an HTTP server wants a name, and none is known",
         "credentials-needed",
         -21,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.clone(scene.serve(httpAnswer("401 Unauthorized", wantsName)));
         }},
        {"an HTTP server wants a password, and only the name is known",
         "credentials-needed",
         -21,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.clone(
                 withUser(scene.serve(httpAnswer("401 Unauthorized", wantsName)), "ann"));
         }},
        {"an HTTP server refuses name and password",
         "credentials-refused",
         -21,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.clone(
                 withUser(scene.serve(httpAnswer("401 Unauthorized", wantsName)), "ann:wrong"));
         }},
        {"an HTTP server answers 400",
         "http-refused",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.clone(scene.serve(httpAnswer("400 Bad Request")));
         }},
        {"an HTTP server answers 403",
         "http-refused",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.clone(scene.serve(httpAnswer("403 Forbidden")));
         }},
        {"an HTTP server answers 403 to a push",
         "http-refused",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().git(
                 {"remote", "add", "origin", scene.serve(httpAnswer("403 Forbidden"))});
             return scene.push("main", "main");
         }},
        {"an HTTP server answers 413 to what is pushed",
         "http-refused",
         -1,
         1,
         {},
         [](Scene& scene) -> Request {
             return pushedTo(scene, httpAnswer("413 Payload Too Large"));
         }},
        {"an HTTP server answers 403 to what is pushed",
         "http-refused",
         -1,
         1,
         {},
         [](Scene& scene) -> Request { return pushedTo(scene, httpAnswer("403 Forbidden")); }},
        {"an HTTP server answers 500 to what is pushed",
         "server-failed",
         -20,
         1,
         {},
         [](Scene& scene) -> Request {
             return pushedTo(scene, httpAnswer("500 Internal Server Error"));
         }},
        {"an HTTP server answers 404",
         "repository-not-found",
         -20,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.clone(scene.serve(httpAnswer("404 Not Found")));
         }},
        {"an HTTP server answers 429",
         "http-refused",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.clone(scene.serve(httpAnswer("429 Too Many Requests")));
         }},
        {"an HTTP server answers 500",
         "server-failed",
         -20,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.clone(scene.serve(httpAnswer("500 Internal Server Error")));
         }},
        {"an HTTP server answers 503 to a fetch",
         "server-failed",
         -20,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().git(
                 {"remote", "add", "origin", scene.serve(httpAnswer("503 Service Unavailable"))});
             return scene.fetch();
         }},
        {"an HTTP server answers with a page for people",
         "repository-not-found",
         -20,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.clone(scene.serve(
                 httpAnswer("200 OK", "Content-Type: text/html\r\n", "<html>\nHello\n</html>\n")));
         }},
        {"an HTTP server hangs up without an answer",
         "connection-cut",
         -20,
         128,
         {},
         [](Scene& scene) -> Request { return scene.clone(scene.serveNobody()); }},
        {"an HTTP server hangs up in the middle of its answer",
         "connection-cut",
         -20,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.clone(scene.serve("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf"));
         }},
        {"nobody listens at the port of an HTTP server",
         "host-unreachable",
         -20,
         128,
         {},
         [](Scene& scene) -> Request { return scene.clone(local("http", Scene::refusedPort())); }},
        {"nobody listens at the port of an HTTP server that is asked for its branches",
         "host-unreachable",
         -20,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().git({"remote", "add", "origin", local("http", Scene::refusedPort())});
             return scene.ask(NEBSourceControlRequestListRemoteBranches)
                 .with(NEBSourceControlRequestOptionRemoteName, "origin");
         }},
        {"an HTTP server's name is not known",
         "host-unknown",
         -20,
         128,
         {},
         [](Scene& scene) -> Request { return scene.clone("http://nonexistent.invalid/x.git"); }},
        {"nobody listens at the port of the proxy",
         "host-unreachable",
         -20,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.setVariable("http_proxy", local("http", Scene::refusedPort()));
             return scene.clone("http://nonexistent.invalid/x.git");
         }},
        {"the proxy's name is not known",
         "host-unknown",
         -20,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.setVariable("http_proxy", "http://nonexistent.invalid:8080/");
             return scene.clone("http://127.0.0.1:1/x.git");
         }},
        {"an HTTPS server's certificate is its own",
         "certificate-untrusted",
         -21,
         128,
         {},
         [](Scene& scene) -> Request { return scene.clone(scene.serveOverTLS()); }},
        {"an HTTPS server's certificate is another host's",
         "certificate-untrusted",
         -21,
         128,
         {},
         [](Scene& scene) -> Request {
             const std::string url = scene.serveOverTLS();
             scene.setVariable("GIT_SSL_CAINFO", scene.certificate());
             return scene.clone(url);
         }},
        {"an HTTPS server speaks plain HTTP",
         "tls-failed",
         -20,
         128,
         {},
         [](Scene& scene) -> Request {
             return scene.clone("https" + scene.serve(httpAnswer("200 OK")).substr(4));
         }},
        {"nobody listens at the port of git's own protocol",
         "host-unreachable",
         -20,
         128,
         {},
         [](Scene& scene) -> Request { return scene.clone(local("git", Scene::refusedPort())); }},
        {"the name of a server of git's own protocol is not known",
         "host-unknown",
         -20,
         128,
         {},
         [](Scene& scene) -> Request { return scene.clone("git://nonexistent.invalid/x.git"); }},
        {"a server of git's own protocol hangs up",
         "remote-unreadable",
         -20,
         128,
         {},
         [](Scene& scene) -> Request { return scene.clone(scene.serveNobody("git")); }},
        {"ssh offers no key that the server takes",
         "ssh-key-refused",
         -21,
         128,
         {},
         [](Scene& scene) -> Request {
             return overSSH(scene,
                            "echo 'git@example.invalid: Permission denied (publickey).' >&2; "
                            "exit 255");
         }},
        {"ssh offers no password that the server takes",
         "ssh-key-refused",
         -21,
         128,
         {},
         [](Scene& scene) -> Request {
             return overSSH(scene,
                            "echo 'ann@example.invalid: Permission denied (password).' >&2; "
                            "exit 255");
         }},
        {"ssh does not know the server's key",
         "ssh-host-key",
         -20,
         128,
         {},
         [](Scene& scene) -> Request {
             return overSSH(scene, "echo 'Host key verification failed.' >&2; exit 255");
         }},
        {"the server's ssh key is another than before",
         "ssh-host-key",
         -20,
         128,
         {},
         [](Scene& scene) -> Request {
             return overSSH(
                 scene,
                 "echo '@    WARNING: REMOTE HOST IDENTIFICATION HAS CHANGED!     @' >&2; "
                 "echo 'Host key verification failed.' >&2; exit 255");
         }},
        {"the name of an ssh server is not known",
         "host-unknown",
         -20,
         128,
         {},
         [](Scene& scene) -> Request {
             return overSSH(scene,
                            "echo 'ssh: Could not resolve hostname example.invalid: Name or "
                            "service not known' >&2; exit 255");
         }},
        {"nobody listens at the port of ssh",
         "host-unreachable",
         -20,
         128,
         {},
         [](Scene& scene) -> Request {
             return overSSH(scene,
                            "echo 'ssh: connect to host example.invalid port 22: Connection "
                            "refused' >&2; exit 255");
         }},
        {"an ssh server does not answer",
         "host-unreachable",
         -20,
         128,
         {},
         [](Scene& scene) -> Request {
             return overSSH(scene,
                            "echo 'ssh: connect to host example.invalid port 22: Connection timed "
                            "out' >&2; exit 255");
         }},
        {"an ssh server hangs up",
         "connection-cut",
         -20,
         128,
         {},
         [](Scene& scene) -> Request {
             return overSSH(scene,
                            "echo 'kex_exchange_identification: Connection closed by remote host' "
                            ">&2; exit 255");
         }},
        {"a forge has no such repository",
         "repository-not-found",
         -20,
         128,
         {},
         [](Scene& scene) -> Request {
             return overSSH(scene, "echo 'ERROR: Repository not found.' >&2; exit 1");
         }},
        {"there is no such repository on an ssh server",
         "repository-not-found",
         -20,
         128,
         {},
         [](Scene& scene) -> Request {
             return overSSH(scene, "for word; do :; done; cd / && eval \"$word\"");
         }},
        {"ssh ends without a word",
         "remote-unreadable",
         -20,
         128,
         {},
         [](Scene& scene) -> Request { return overSSH(scene, "exit 255"); }},
        {"there is no ssh",
         "program-missing",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.setVariable("GIT_SSH", "/nonexistent/ssh");
             scene.work().git({"remote", "add", "origin", "git@example.invalid:demo.git"});
             return scene.fetch();
         }},
        {"nobody listens at the port of a Subversion server",
         "host-unreachable",
         -20,
         1,
         {},
         [](Scene& scene) -> Request {
             scene.work().git({"svn", "init", "svn://127.0.0.1:1/trunk"});
             return scene.ask(NEBSourceControlRequestFetch).bySubversion();
         }},
        {"a repository of this machine is not there",
         "repository-not-found",
         -20,
         128,
         {},
         [](Scene& scene) -> Request { return scene.clone(scene.folder().path("nosuch.git")); }},
        {"a remote's repository is not there any more",
         "repository-not-found",
         -20,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().git({"remote", "add", "origin", scene.folder().path("gone.git")});
             return scene.fetch();
         }},
        {"a URL has a scheme that git does not know",
         "transport-unknown",
         -1,
         128,
         {},
         [](Scene& scene) -> Request { return scene.clone("nosuch://example.invalid/x.git"); }},
        {"a URL would start a program",
         "transport-forbidden",
         -1,
         128,
         {},
         [](Scene& scene) -> Request { return scene.clone("ext::true"); }},
        {"the configuration forbids local repositories",
         "transport-forbidden",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.shared();
             scene.work().git({"config", "protocol.file.allow", "never"});
             return scene.fetch();
         }},
    };
}

}  // namespace neb::test
