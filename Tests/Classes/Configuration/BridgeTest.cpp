// The Subversion bridge with a hostile configuration, for both object formats.

#include <gmock/gmock.h>

#include "Classes/Configuration/HostileConfiguration.h"
#include "Classes/Configuration/World.h"
#include "Support/HygienicTest.h"
#include "Support/Matchers.h"
#include "Support/RequestRun.h"
#include "Support/SubversionServer.h"

namespace neb {
namespace {

using test::HostileConfiguration;
using test::Outcome;
using test::outcomeOf;
using test::requestFor;
using test::SubversionServer;
using test::World;
using testing::ElementsAre;
using testing::HasSubstr;

/// The parameter is the object format.
class Bridge : public test::HygienicTest, public testing::WithParamInterface<const char*> {
protected:
    static std::shared_ptr<NEBSourceControlRequest> request(const World& world, std::int32_t type) {
        auto asked = requestFor(type, world.path("bridge"));
        asked->destination = "refs/remotes/git-svn";
        asked->remote = std::make_shared<NEBSourceControlRemote>();
        asked->remote->representsGitSVNBridge = true;
        return asked;
    }
    static void makeBridge(const World& world, const std::string& url) {
        world.run("git init -q --object-format=" + std::string(GetParam()) +
                  " ../bridge; cd ../bridge; git svn init '" + url + "/trunk' 2>&1");
    }
};

TEST_P(Bridge, FetchesUpdatesAndPushesUnderAHostileConfiguration) {
    const SubversionServer server;
    const World world;
    makeBridge(world, server.fileURL());
    const auto performed = [&world](std::int32_t type) {
        const HostileConfiguration hostile;
        const Outcome outcome = outcomeOf(world, request(world, type));
        EXPECT_EQ(hostile.startedPrograms(), "");
        return outcome;
    };
    EXPECT_EQ(performed(37).error, "none");
    world.run(
        "cd ../bridge; git reset -q --hard refs/remotes/git-svn; echo more >>a; "
        "git commit -q -a -m More");
    server.commitFile("trunk/b", "other\n");
    EXPECT_EQ(performed(37).error, "none");
    EXPECT_EQ(performed(13).error, "none");
    EXPECT_EQ(performed(33).error, "none");
    EXPECT_EQ(server.content("trunk/a"), "first\nmore\n");
    const Outcome remotes = performed(24);
    EXPECT_EQ(remotes.error, "none");
    ASSERT_EQ(remotes.records.size(), 1U);
    EXPECT_THAT(remotes.records[0], HasSubstr(server.fileURL()));
    EXPECT_THAT(performed(19).records, ElementsAre(HasSubstr(server.fileURL())));
}

INSTANTIATE_TEST_SUITE_P(With, Bridge, testing::Values("sha1", "sha256"),
                         [](const auto& tested) { return std::string(tested.param); });

}  // namespace
}  // namespace neb
