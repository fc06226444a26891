// Contacting a real HTTP server for a repository that the user does not trust: only with the
// user's settings.

#include <gmock/gmock.h>

#include <optional>

#include "Classes/Configuration/Variables.h"
#include "Classes/Inspection/Traps.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Support/HTTPServer.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"

namespace neb::test {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// A setting of the repository that runs a program or sends something when git contacts a server.
struct HTTPTrap {
    std::string name;
    /// A shell script. $HOST is the URL of the server, $PROGRAM a program that fails.
    std::string script;
    /// What the server receives in a trusted repository; empty if the program runs.
    std::string sign;
    /// The setting because of which an inspecting request is refused; empty if it is replaced.
    std::string refused;
};

const HTTPTrap httpTraps[] = {
    {"Helper", "git config credential.helper \"!$PROGRAM\"", "", ""},
    {"HelperOfURL", "git config credential.$HOST.helper \"!$PROGRAM\"", "", ""},
    // The helper of the user has no password for this name of the host.
    {"AskPass",
     "git config core.askPass $PROGRAM; git remote set-url origin "
     "http://localhost:$PORT/shared.git",
     "", ""},
    {"CertificatePassword",
     "git config core.askPass $PROGRAM; git config http.sslCert x; git config "
     "http.sslCertPasswordProtected true",
     "", "http.sslcert"},
    {"Proxy",
     "git config http.proxy $HOST; git remote set-url origin http://demo.invalid/shared.git",
     "GET http://demo.invalid/", "http.proxy"},
    {"ProxyOfRemote",
     "git config remote.origin.proxy $HOST; git remote set-url origin "
     "http://demo.invalid/shared.git",
     "GET http://demo.invalid/", "remote.origin.proxy"},
    {"Address",
     "git config http.curloptResolve demo.invalid:$PORT:127.0.0.1; git remote set-url origin "
     "http://demo.invalid:$PORT/shared.git",
     "Host: demo.invalid", "http.curloptresolve"},
    {"Header", "git config http.extraHeader 'X-Trap: 1'", "X-Trap: 1", "http.extraheader"},
    {"HeaderOfURL", "git config http.$HOST.extraHeader 'X-Trap: 1'", "X-Trap: 1", ".extraheader"},
    {"Cookies",
     "printf '127.0.0.1\\tFALSE\\t/\\tFALSE\\t0\\ttrap\\t1\\n' >cookies; git config "
     "http.cookieFile $PWD/cookies",
     "Cookie: trap=1", "http.cookiefile"},
    {"Agent", "git config http.userAgent trap", "User-Agent: trap", "http.useragent"},
    {"InsteadOf", "git config url.$HOST/other/.insteadOf $HOST/", "GET /other/shared.git",
     ".insteadof"},
    {"InsteadOfExternal",
     "git config \"url.ext::$PROGRAM .insteadOf\" $HOST/; git config protocol.ext.allow always", "",
     ".insteadof"},
    {"RemoteHelper",
     "git config remote.origin.vcs evil; git config alias.remote-evil \"!$PROGRAM\"", "",
     "remote.origin.vcs"},
};

/// A repository with the remote "origin" on the server, whose password the helper of the user
/// knows.
class HTTPTransport : public HygienicTest {
protected:
    void SetUp() override {
        HygienicTest::SetUp();
        _server.emplace();
    }
    /// Runs the script in the repository, with $HOST, $PORT and $PROGRAM.
    void prepare(const std::string& script) {
        const std::string port = _server->host().substr(_server->host().rfind(':') + 1);
        _world.run("HOST=" + _server->host() + "; PORT=" + port + "; PROGRAM='" +
                   makeTrap(_world, "transport") + "'; git remote set-url origin " +
                   _server->url() + "\n" + script);
    }

    /// Lists the branches of "origin".
    std::shared_ptr<NEBSourceControlOperation> run(NEBSourceControlTrust trust) {
        const Variables users(
            VariableList{{"GIT_CONFIG_COUNT", "1"},
                         {"GIT_CONFIG_KEY_0", "credential." + _server->host() + ".helper"},
                         {"GIT_CONFIG_VALUE_0", "!tee -a '" + _world.path("asked") +
                                                    "' | grep -q protocol=http && printf "
                                                    "'username=ann\\npassword=" +
                                                    HTTPServer::password + "\\n' #"}});
        const auto request =
            requestFor(NEBSourceControlRequestListRemoteBranches, _world.repository());
        request->sourceTree->trust = trust;
        return perform(request);
    }

    void TearDown() override {
        _server.reset();
        HygienicTest::TearDown();
    }

    const World _world;
    std::optional<HTTPServer> _server;
};

class HTTPTrapTest : public HTTPTransport, public testing::WithParamInterface<HTTPTrap> {};

TEST_P(HTTPTrapTest, WorksOnlyInATrustedRepository) {
    prepare(GetParam().script);
    static_cast<void>(run(NEBSourceControlTrust::trusted));
    EXPECT_THAT(_server->requests(), HasSubstr(GetParam().sign));
    if (GetParam().sign.empty()) {
        EXPECT_THAT(takeFiredTraps(_world), Contains("transport"));
    }

    const std::string before = _server->requests();
    const auto operation = run(NEBSourceControlTrust::inspect);
    EXPECT_THAT(takeFiredTraps(_world), IsEmpty());
    if (!GetParam().refused.empty()) {
        EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlNotTrustedErrorClass));
        EXPECT_THAT(operation->error()->localizedDescription().value_or(""),
                    HasSubstr(GetParam().refused));
        EXPECT_EQ(_server->requests(), before);
    } else if (GetParam().name == "AskPass") {
        EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlCredentialsNeededErrorClass));
    } else {
        EXPECT_EQ(operation->error(), std::nullopt);
    }
}

INSTANTIATE_TEST_SUITE_P(Inspection, HTTPTrapTest, testing::ValuesIn(httpTraps),
                         [](const auto& tested) { return tested.param.name; });

TEST_F(HTTPTransport, UsesTheHelperOfTheUser) {
    prepare("");
    const auto operation = run(NEBSourceControlTrust::inspect);
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_THAT(*operation->result(), Not(IsEmpty()));
    EXPECT_THAT(*operation->switchedOff(), IsEmpty());
}

/// A name with a carriage return could make some helpers send the password of another server.
TEST_F(HTTPTransport, SendsHelpersNoCarriageReturn) {
    for (const std::string setting :
         {"credential.protectProtocol", "credential.$HOST.protectProtocol"}) {
        prepare("git config " + setting + " false; git remote set-url origin " +
                _server->url("a%0db@"));
        static_cast<void>(run(NEBSourceControlTrust::trusted));
        EXPECT_THAT(_world.run("cat ../asked; : >../asked"), HasSubstr("username=a\rb"));
        const auto operation = run(NEBSourceControlTrust::inspect);
        EXPECT_THAT(_world.run("cat ../asked"), Not(HasSubstr("username=a\rb")));
        EXPECT_NE(operation->error(), std::nullopt);
        EXPECT_THAT(*operation->switchedOff(), Contains(testing::EndsWith(".protectprotocol")));
        _world.run("git config --unset " + setting + " || true");
    }
}

}  // namespace
}  // namespace neb::test
