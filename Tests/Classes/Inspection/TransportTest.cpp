// Contacting a server for a repository that the user does not trust: only with the user's
// settings.

#include <gmock/gmock.h>

#include "Classes/Configuration/Variables.h"
#include "Classes/Inspection/Traps.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"

namespace neb::test {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

/// Settings of the repository with which git would run the program PROGRAM to list the branches of
/// "origin".
struct TransportTrap {
    std::string name;
    std::string script;
    /// The setting because of which the request is refused; empty if it is replaced.
    std::string refused;
};

const TransportTrap transportTraps[] = {
    {"UploadPack", "git config remote.origin.uploadpack PROGRAM", "remote.origin.uploadpack"},
    {"Proxy", "git config remote.origin.url git://localhost:1/x; git config core.gitProxy PROGRAM",
     "core.gitproxy"},
    {"SSH", "git config remote.origin.url ssh://localhost/x; git config core.sshCommand PROGRAM",
     ""},
    {"InsteadOf",
     "git config remote.origin.url http://localhost:1/x; git config core.sshCommand PROGRAM; "
     "git config url.ssh://localhost/.insteadOf http://localhost:1/",
     "url.ssh://localhost/.insteadof"},
    {"ExternalURL",
     "git config remote.origin.url 'ext::PROGRAM'; git config protocol.ext.allow always", ""},
    {"HelperAlias", "git config remote.origin.url evil::x; git config alias.remote-evil '!PROGRAM'",
     ""},
    {"Helper", "git config remote.origin.vcs evil; git config alias.remote-evil '!PROGRAM'",
     "remote.origin.vcs"},
};

class Transport : public HygienicTest, public testing::WithParamInterface<TransportTrap> {
protected:
    static std::shared_ptr<NEBSourceControlRequest> request(const World& world) {
        return requestFor(NEBSourceControlRequestListRemoteBranches, world.repository());
    }
    static std::string scriptFor(const World& world) {
        std::string script = GetParam().script;
        const std::string program = makeTrap(world, "transport");
        for (std::size_t at = 0; (at = script.find("PROGRAM")) != std::string::npos;) {
            script.replace(at, 7, program);
        }
        return script;
    }
};

TEST_P(Transport, RunsOnlyInATrustedRepository) {
    const World world;
    world.run(scriptFor(world));
    EXPECT_NE(perform(request(world))->error(), std::nullopt);
    EXPECT_THAT(takeFiredTraps(world), Contains("transport"));

    // In place of a connection.
    const Variables users(VariableList{{"GIT_SSH_COMMAND", "false"}});
    const auto inspecting = request(world);
    inspecting->sourceTree->trust = NEBSourceControlTrust::inspect;
    const auto operation = perform(inspecting);
    ASSERT_NE(operation->error(), std::nullopt);
    EXPECT_THAT(takeFiredTraps(world), IsEmpty());
    EXPECT_EQ(operation->error()->errorClass == NEBSourceControlNotTrustedErrorClass.text(),
              !GetParam().refused.empty());
    EXPECT_THAT(operation->error()->localizedDescription().value_or(""),
                HasSubstr(GetParam().refused));
}

INSTANTIATE_TEST_SUITE_P(Inspection, Transport, testing::ValuesIn(transportTraps),
                         [](const auto& tested) { return tested.param.name; });

class InspectedTransport : public HygienicTest {};

TEST_F(InspectedTransport, UsesTheProgramsOfTheUser) {
    const World world;
    world.run("git config remote.origin.url ssh://localhost/x; git config core.sshCommand '" +
              makeTrap(world, "repository") + "'");
    const Variables users(VariableList{{"GIT_CONFIG_COUNT", "1"},
                                       {"GIT_CONFIG_KEY_0", "core.sshCommand"},
                                       {"GIT_CONFIG_VALUE_0", makeTrap(world, "user")}});
    const auto request = requestFor(NEBSourceControlRequestListRemoteBranches, world.repository());
    request->sourceTree->trust = NEBSourceControlTrust::inspect;
    static_cast<void>(perform(request));
    EXPECT_THAT(takeFiredTraps(world), testing::ElementsAre("user"));
}

TEST_F(InspectedTransport, FetchesNoMissingObject) {
    const World world;
    world.run(
        "git -C ../remote.git config uploadpack.allowFilter true; git clone -q --bare "
        "--filter=blob:none \"file://$PWD/../remote.git\" ../partial.git; "
        "git -C ../partial.git config remote.origin.uploadpack '" +
        makeTrap(world, "fetch") + "'");
    const auto request = requestFor(NEBSourceControlRequestDiff, world.path("partial.git"));
    request->startingRevision = "main~1";
    request->endingRevision = "main";
    EXPECT_NE(perform(request)->error(), std::nullopt);
    EXPECT_THAT(takeFiredTraps(world), Contains("fetch"));

    request->sourceTree->trust = NEBSourceControlTrust::inspect;
    const auto operation = perform(request);
    EXPECT_THAT(operation->error(), HasErrorClass("objects-missing"));
    EXPECT_THAT(*operation->switchedOff(), Contains("remote.origin.promisor"));
    EXPECT_THAT(takeFiredTraps(world), IsEmpty());
}

}  // namespace
}  // namespace neb::test
