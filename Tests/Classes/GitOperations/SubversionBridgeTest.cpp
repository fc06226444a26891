// The bridge with a real Subversion server.

#include <filesystem>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"
#include "Support/SubversionServer.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

namespace fs = std::filesystem;
using test::HasErrorClass;
using test::IsSourceControlError;
using test::perform;
using test::requestFor;
using test::SubversionServer;
using test::TestRepository;
using testing::HasSubstr;

class SubversionBridge : public test::HygienicTest {
protected:
    void SetUp() override {
        HygienicTest::SetUp();
        server = std::make_unique<SubversionServer>();
        clone = std::make_unique<TestRepository>();
        clone->git({"svn", "init", server->url() + "/trunk"});
        clone->git({"svn", "fetch", "-q"});
        clone->git({"reset", "-q", "--hard", "refs/remotes/git-svn"});
    }
    void TearDown() override {
        clone.reset();
        server.reset();
        HygienicTest::TearDown();
    }

    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> run(std::int32_t type,
                                                                 NEBValue destination = {}) const {
        auto asked = requestFor(type, clone->path());
        asked->destination = std::move(destination);
        asked->repositoryToAuthenticate = asked->sourceTree;
        asked->remote = std::make_shared<NEBSourceControlRemote>();
        asked->remote->representsGitSVNBridge = true;
        return perform(asked);
    }
    [[nodiscard]] auto fetch() const { return run(NEBSourceControlRequestFetch); }
    [[nodiscard]] auto update() const {
        return run(NEBSourceControlRequestUpdate, "refs/remotes/git-svn");
    }
    [[nodiscard]] auto push() const { return run(NEBSourceControlRequestPush); }
    [[nodiscard]] std::string local(const std::string& name) const {
        return clone->git({"show", "HEAD:" + name});
    }

    std::unique_ptr<SubversionServer> server;
    std::unique_ptr<TestRepository> clone;
};

TEST_F(SubversionBridge, IsFoundAndDescribed) {
    const auto remotes = perform(requestFor(NEBSourceControlRequestListRemotes, clone->path()));
    EXPECT_EQ(remotes->error(), std::nullopt);
    EXPECT_EQ(remotes->result(),
              (NEBSourceControlResult{
                  {{NEBSourceControlOperationUsesGitSVNKey, true},
                   {NEBSourceControlOperationRemoteOriginKey, server->url() + "/trunk"},
                   {NEBSourceControlOperationRepositoryRootKey, clone->path()},
                   {NEBSourceControlOperationRemoteNameKey, "git-svn"},
                   {NEBSourceControlOperationTypeKey, "fetch"}}}));
    EXPECT_EQ(perform(requestFor(NEBSourceControlRequestInfo, clone->path()))->result(),
              (NEBSourceControlResult{
                  {{NEBSourceControlOperationRemoteOriginKey, server->url() + "/trunk"},
                   {NEBSourceControlOperationRepositoryRootKey, clone->path()}}}));
}

TEST_F(SubversionBridge, AFetchAndAnUpdateBringWhatOthersCommitted) {
    server->commitFile("trunk/a", "theirs\n");
    const auto fetched = fetch();
    EXPECT_EQ(fetched->error(), std::nullopt);
    EXPECT_EQ(local("a"), "first\n");
    const auto updated = update();
    EXPECT_EQ(updated->error(), std::nullopt);
    EXPECT_EQ(updated->result(), std::nullopt);
    EXPECT_EQ(local("a"), "theirs\n");
    EXPECT_EQ(fetch()->error(), std::nullopt) << "nothing new";
    EXPECT_EQ(update()->error(), std::nullopt) << "nothing new";
}

TEST_F(SubversionBridge, AnUpdatePutsLocalCommitsOnTop) {
    clone->commitFile("mine", "mine\n");
    server->commitFile("trunk/a", "theirs\n");
    EXPECT_EQ(fetch()->error(), std::nullopt);
    EXPECT_EQ(update()->error(), std::nullopt);
    EXPECT_EQ(local("a"), "theirs\n");
    EXPECT_EQ(local("mine"), "mine\n");
    EXPECT_EQ(clone->git({"rev-list", "--count", "refs/remotes/git-svn..HEAD"}), "1\n");
}

TEST_F(SubversionBridge, OrdinaryMessagesAreNoErrors) {
    const std::string folder = server->fileURL() + "/trunk/keep";
    server->run({"svn", "mkdir", "-q", "-m", "x", folder});
    const auto added = fetch();
    EXPECT_EQ(added->error(), std::nullopt);
    EXPECT_EQ(added->result(), std::nullopt) << "no known message";
    server->run({"svn", "rm", "-q", "-m", "x", folder});
    const auto removed = fetch();
    EXPECT_EQ(removed->error(), std::nullopt);
    EXPECT_EQ(removed->result(), NEBSourceControlResult{});
}

TEST_F(SubversionBridge, AFetchOfANewBranchIsNoError) {
    const TestRepository whole;
    whole.git({"svn", "init", "--stdlayout", server->url()});
    whole.git({"svn", "fetch", "-q"});
    server->run({"svn", "copy", "-q", "-m", "branch", server->fileURL() + "/trunk",
                 server->fileURL() + "/branches/b1"});
    server->commitFile("branches/b1/a", "on the branch\n");
    auto asked = requestFor(NEBSourceControlRequestFetch, whole.path());
    asked->repositoryToAuthenticate = asked->sourceTree;
    asked->remote = std::make_shared<NEBSourceControlRemote>();
    asked->remote->representsGitSVNBridge = true;
    const auto fetched = perform(asked);
    EXPECT_EQ(fetched->error(), std::nullopt);
    EXPECT_EQ(fetched->result(), NEBSourceControlResult{});
    EXPECT_EQ(whole.git({"show", "refs/remotes/origin/b1:a"}), "on the branch\n");
}

TEST_F(SubversionBridge, APushCommitsToTheServer) {
    clone->commitFile("a", "mine\n", "from git");
    const auto pushed = push();
    EXPECT_EQ(pushed->error(), std::nullopt);
    EXPECT_TRUE(pushed->result().has_value());
    EXPECT_EQ(server->content("trunk/a"), "mine\n");
    EXPECT_THAT(server->run({"svn", "log", "-r", "HEAD", server->fileURL()}),
                HasSubstr("from git"));
    EXPECT_EQ(push()->error(), std::nullopt) << "nothing to send";
}

TEST_F(SubversionBridge, APushThatTheServerIsAheadOfIsAnError) {
    clone->commitFile("a", "mine\n");
    server->commitFile("trunk/a", "theirs\n");
    const auto pushed = push();
    EXPECT_THAT(pushed->error(),
                IsSourceControlError(-32, HasSubstr("does not have the latest remote changes")));
    EXPECT_THAT(pushed->error(), HasErrorClass(NEBSourceControlRemoteAheadErrorClass));
    EXPECT_EQ(server->content("trunk/a"), "theirs\n");
}

TEST_F(SubversionBridge, APushThatAHookRefusesIsAnError) {
    server->refuseCommits("not on a Friday");
    clone->commitFile("a", "mine\n");
    const auto pushed = push();
    EXPECT_THAT(pushed->error(), HasErrorClass(NEBSourceControlRemoteHookRefusedErrorClass));
    EXPECT_THAT(*pushed->error()->text, HasSubstr("not on a Friday"));
    EXPECT_EQ(server->content("trunk/a"), "first\n");
}

TEST_F(SubversionBridge, APushOverUncommittedChangesIsAnError) {
    clone->commitFile("a", "mine\n");
    clone->write("a", "not committed\n");
    EXPECT_THAT(push()->error(), IsSourceControlError(-31, HasSubstr("uncommitted changes")));
    EXPECT_THAT(push()->error(), HasErrorClass(NEBSourceControlNeedsCleanTreeErrorClass));
    clone->git({"add", "a"});
    EXPECT_THAT(push()->error(), HasErrorClass(NEBSourceControlNeedsCleanTreeErrorClass));
    EXPECT_EQ(server->content("trunk/a"), "first\n");
}

TEST_F(SubversionBridge, AnUpdateThatCannotBeIsAnError) {
    server->commitFile("trunk/a", "theirs\n");
    EXPECT_EQ(fetch()->error(), std::nullopt);
    clone->write("a", "not committed\n");
    EXPECT_THAT(update()->error(), HasErrorClass(NEBSourceControlNeedsCleanTreeErrorClass));
    clone->git({"rm", "-q", "-f", "a"});
    clone->git({"commit", "-qm", "without a"});
    const auto conflict = update();
    EXPECT_THAT(conflict->error(), HasErrorClass(NEBSourceControlConflictErrorClass));
    EXPECT_EQ(conflict->result(), std::nullopt);
    EXPECT_THAT(run(NEBSourceControlRequestUpdate)->error(), testing::Ne(std::nullopt))
        << "in the middle of the first";
}

TEST_F(SubversionBridge, AServerThatIsGoneIsAnError) {
    clone->commitFile("a", "mine\n");
    server.reset();
    EXPECT_TRUE(fetch()->error().has_value());
    EXPECT_TRUE(push()->error().has_value());
}

}  // namespace
}  // namespace neb
