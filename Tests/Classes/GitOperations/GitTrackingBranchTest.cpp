#include "GitOperations/GitTrackingBranch.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

using test::commandLinesOf;
using test::HasErrorClass;
using test::perform;
using test::requestFor;
using test::TestRepository;
using testing::ElementsAre;

std::shared_ptr<NEBSourceControlRequest> trackingOf(const std::string& branch,
                                                    const std::string& location = "/w") {
    auto made = requestFor(NEBSourceControlRequestTrackingBranchName, location);
    made->options = NEBDictionary{{NEBSourceControlRequestOptionBranch, branch}};
    return made;
}

// ---- the questions ----------------------------------------------------------------------------

TEST(BranchSetting, IsReadByTheKeyOfTheBranch) {
    EXPECT_THAT(GitRemoteRefForBranchOperation(trackingOf("a/b.c")).arguments(),
                ElementsAre("config", "--get", "branch.a/b.c.remote"));
    EXPECT_THAT(GitMergeBranchForBranchOperation(trackingOf("a/b.c")).arguments(),
                ElementsAre("config", "--get", "branch.a/b.c.merge"));
    auto asked = trackingOf("b");
    asked->options->set(NEBSourceControlRequestOptionRepositoryPath, "/r/.git");
    EXPECT_THAT(GitMergeBranchForBranchOperation(asked).arguments(),
                ElementsAre("--git-dir=/r/.git", "config", "--get", "branch.b.merge"));
    EXPECT_THAT(
        GitRemoteRefForBranchOperation(requestFor(NEBSourceControlRequestTrackingBranchName, "/w"))
            .arguments(),
        ElementsAre("config", "--get", "branch.(null).remote"));
}

template <typename Op>
std::optional<NEBSourceControlResult> resultOf(const std::optional<Data>& output) {
    Op operation(trackingOf("b"));
    operation.setData(output);
    operation.parseData();
    return operation.result();
}

TEST(BranchSetting, HasOneRecordOrNoResult) {
    const NEBSourceControlResult expected{{{NEBSourceControlOperationNameKey, "origin"}}};
    EXPECT_EQ(resultOf<GitRemoteRefForBranchOperation>("origin\n"), expected);
    EXPECT_EQ(resultOf<GitMergeBranchForBranchOperation>("origin\n"), expected);
    EXPECT_EQ(resultOf<GitRemoteRefForBranchOperation>(""), std::nullopt);
    EXPECT_EQ(resultOf<GitMergeBranchForBranchOperation>(std::nullopt), std::nullopt);
}

// ---- the name of the tracked branch -----------------------------------------------------------

class TrackingBranchName : public test::HygienicTest {
protected:
    [[nodiscard]] NEBSourceControlResult trackedBy(const std::string& branch) const {
        const auto operation = perform(trackingOf(branch, repository.path()));
        EXPECT_EQ(operation->error(), std::nullopt);
        return operation->result().value();
    }
    void configure(const std::string& key, const std::string& value) const {
        repository.git({"config", key, value});
    }

    TestRepository repository;
};

TEST_F(TrackingBranchName, IsTheRemoteAndTheLastComponent) {
    configure("branch.topic.remote", "origin");
    configure("branch.topic.merge", "refs/heads/main");
    EXPECT_EQ(trackedBy("topic"),
              (NEBSourceControlResult{{{NEBSourceControlOperationRemoteNameKey, "origin"},
                                       {NEBSourceControlOperationNameKey, "main"}}}));
    configure("branch.topic.merge", "refs/heads/feature/x");
    EXPECT_EQ(trackedBy("topic").front().value(NEBSourceControlOperationNameKey), NEBValue("x"));
    configure("branch.topic.merge", "whole");
    EXPECT_EQ(trackedBy("topic").front().value(NEBSourceControlOperationNameKey),
              NEBValue("whole"));
    configure("branch.topic.merge", "refs/heads/x/");
    EXPECT_EQ(trackedBy("topic").front().value(NEBSourceControlOperationNameKey), NEBValue("x"));
}

TEST_F(TrackingBranchName, EndsAtTheFirstMissingValue) {
    EXPECT_EQ(trackedBy("topic"), NEBSourceControlResult{NEBDictionary()});
    configure("branch.topic.merge", "refs/heads/main");
    EXPECT_EQ(trackedBy("topic"), NEBSourceControlResult{NEBDictionary()});
    configure("branch.other.remote", "origin");
    EXPECT_EQ(trackedBy("other"),
              (NEBSourceControlResult{{{NEBSourceControlOperationRemoteNameKey, "origin"}}}));
}

TEST_F(TrackingBranchName, RunsTwoQueriesAndStopsAtAnError) {
    EXPECT_THAT(commandLinesOf(*perform(trackingOf("topic", repository.path()))),
                ElementsAre("config --get branch.topic.remote", "config --get branch.topic.merge"));
    repository.write(".git/config", "[core\n");
    const auto operation = perform(trackingOf("topic", repository.path()));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlConfigurationBrokenErrorClass));
    EXPECT_EQ(operation->result(), std::nullopt);
    EXPECT_THAT(commandLinesOf(*operation), ElementsAre("config --get branch.topic.remote"));
}

// ---- tracking a branch of a remote ------------------------------------------------------------

class TrackRemoteBranch : public test::HygienicTest {
protected:
    void SetUp() override {
        HygienicTest::SetUp();
        remote.commitFile("a", "1");
        remote.git({"branch", "feature/x"});
        repository.git({"remote", "add", "origin", remote.path()});
    }
    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> track(
        const std::string& name, const std::string& remoteName, const std::string& branch) const {
        auto asked = requestFor(NEBSourceControlRequestTrackRemoteBranch, repository.path());
        asked->destination = name;
        asked->options = NEBDictionary{{NEBSourceControlRequestOptionRemoteName, remoteName},
                                       {NEBSourceControlRequestOptionBranch, branch}};
        return perform(asked);
    }

    TestRepository remote;
    TestRepository repository;
};

TEST_F(TrackRemoteBranch, FetchesAndCreatesTheBranch) {
    const auto operation = track("mine", "origin", "feature/x");
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(operation->result(), std::nullopt);
    EXPECT_FALSE(operation->command().has_value()) << "it runs others";
    EXPECT_THAT(commandLinesOf(*operation),
                ElementsAre("fetch -q origin", "branch --track mine origin/feature/x"));
    EXPECT_EQ(repository.git({"rev-parse", "--abbrev-ref", "mine@{upstream}"}),
              "origin/feature/x\n");
}

TEST_F(TrackRemoteBranch, StopsAtAnErrorOfTheFetch) {
    const auto operation = track("mine", "nosuch", "feature/x");
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlRepositoryNotFoundErrorClass));
    EXPECT_THAT(commandLinesOf(*operation), ElementsAre("fetch -q nosuch"));
}

TEST_F(TrackRemoteBranch, ContinuesAfterARejectedTag) {
    repository.commitFile("b", "2");
    repository.git({"tag", "v1"});
    remote.git({"tag", "v1"});
    repository.git({"config", "remote.origin.tagOpt", "--tags"});
    const auto operation = track("mine", "origin", "feature/x");
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_THAT(commandLinesOf(*operation),
                ElementsAre("fetch -q origin", "branch --track mine origin/feature/x"));
    EXPECT_EQ(operation->commandLog()->runs().front().terminationStatus, 1);
    EXPECT_EQ(repository.git({"rev-parse", "--abbrev-ref", "mine@{upstream}"}),
              "origin/feature/x\n");
    EXPECT_THAT(track("other", "origin", "nosuch")->error(),
                HasErrorClass(NEBSourceControlRemoteBranchUnknownErrorClass));
}

TEST_F(TrackRemoteBranch, PassesOnAnErrorOfTheBranch) {
    const auto operation = track("mine", "origin", "nosuch");
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlRemoteBranchUnknownErrorClass));
    EXPECT_EQ(operation->commandLog()->runs().size(), 2U);
    EXPECT_EQ(operation->result(), std::nullopt);
    repository.git({"branch", "mine", "origin/main"});
    EXPECT_THAT(track("mine", "origin", "feature/x")->error(),
                HasErrorClass(NEBSourceControlBranchExistsErrorClass));
}

}  // namespace
}  // namespace neb
