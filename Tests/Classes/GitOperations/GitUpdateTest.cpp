#include "GitOperations/GitUpdate.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

using test::commandLinesOf;
using test::HasErrorClass;
using test::IsSourceControlError;
using test::perform;
using test::ReportCollector;
using test::requestFor;
using test::TestRepository;
using testing::ElementsAre;
using testing::IsEmpty;

class Update : public test::HygienicTest {
protected:
    void SetUp() override {
        HygienicTest::SetUp();
        upstream = std::make_unique<TestRepository>();
        upstream->commitFile("a", "1");
        repository = std::make_unique<TestRepository>(upstream->path());
        upstream->commitFile("a", "2");
    }
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> request() const {
        auto asked = requestFor(NEBSourceControlRequestUpdate, repository->path());
        asked->repositoryToAuthenticate = asked->sourceTree;
        asked->remote = std::make_shared<NEBSourceControlRemote>();
        asked->destination = "origin/main";
        asked->options = NEBDictionary{{NEBSourceControlRequestOptionRemoteName, "origin"},
                                       {NEBSourceControlRequestOptionBranch, "main"}};
        return asked;
    }
    [[nodiscard]] std::string head(const TestRepository& of) const {
        return of.git({"rev-parse", "HEAD"});
    }

    std::unique_ptr<TestRepository> upstream, repository;
};

TEST_F(Update, IsAPullWithTheOption) {
    auto asked = request();
    asked->options->set(NEBSourceControlRequestOptionPullByFastForwarding, true);
    const auto operation = perform(asked);
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_THAT(commandLinesOf(*operation), ElementsAre("pull --ff-only origin main"));
    EXPECT_THAT(
        operation->result()->front().value(NEBSourceControlOperationContentKey).description(),
        testing::HasSubstr("Fast-forward"));
    EXPECT_EQ(head(*repository), head(*upstream));
    const auto again = perform(asked);
    EXPECT_THAT(again->error(), IsSourceControlError(-34, testing::_));
    EXPECT_THAT(again->error(), HasErrorClass(NEBSourceControlUpToDateErrorClass));
    EXPECT_EQ(again->result(), NEBSourceControlResult{});
}

TEST_F(Update, IsAMergeWithoutIt) {
    for (const NEBValue& value : {NEBValue(), NEBValue(false), NEBValue("no")}) {
        auto asked = request();
        asked->options->set(NEBSourceControlRequestOptionPullByFastForwarding, value);
        const auto operation = perform(asked);
        EXPECT_EQ(operation->error(), std::nullopt);
        EXPECT_EQ(operation->result(), std::nullopt) << "a merge has none";
        EXPECT_THAT(commandLinesOf(*operation),
                    ElementsAre("merge -s recursive -X ours origin/main"));
    }
    repository->git({"fetch", "-q"});
    EXPECT_EQ(perform(request())->error(), std::nullopt);
    EXPECT_EQ(head(*repository), head(*upstream));
}

TEST_F(Update, OfTheEndingRevisionMergesThat) {
    auto asked = request();
    asked->endingRevision = "HEAD";
    EXPECT_THAT(commandLinesOf(*perform(asked)), ElementsAre("merge -s recursive -X ours HEAD"));
}

TEST_F(Update, WithoutARemoteIsAMergeToo) {
    auto asked = request();
    asked->remote = nullptr;
    EXPECT_THAT(commandLinesOf(*perform(asked)),
                ElementsAre("merge -s recursive -X ours origin/main"));
}

TEST_F(Update, PassesTheMergesErrorOn) {
    auto asked = request();
    asked->destination = "nosuch";
    const auto operation = perform(asked);
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlRevisionUnknownErrorClass));
    EXPECT_EQ(operation->result(), std::nullopt);
}

TEST_F(Update, OverTheBridgeIsARebaseThatNeverHasAResult) {
    repository->git({"fetch", "-q"});
    auto asked = request();
    asked->remote->representsGitSVNBridge = true;
    asked->options->set(NEBSourceControlRequestOptionPullByFastForwarding, true);
    const auto operation = perform(asked);
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(operation->result(), std::nullopt);
    EXPECT_THAT(commandLinesOf(*operation), ElementsAre("rebase -s recursive -X ours origin/main"));
    EXPECT_EQ(head(*repository), head(*upstream));
    asked->destination = "nosuch";
    EXPECT_TRUE(perform(asked)->error().has_value());
}

/// The rebase reports the missing destination; git reports the missing target.
TEST_F(Update, OverTheBridgeWithoutATargetIsReportedAndRuns) {
    auto asked = request();
    asked->remote->representsGitSVNBridge = true;
    asked->destination = NEBValue();
    repository->git({"config", "--unset", "branch.main.merge"});
    const ReportCollector collector;
    const auto operation = perform(asked);
    ASSERT_EQ(collector.reports().size(), 1U);
    EXPECT_EQ(collector.reports()[0].line, 1804);
    EXPECT_THAT(commandLinesOf(*operation), ElementsAre("rebase -s recursive -X ours"));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlNoUpstreamErrorClass));
}

TEST_F(Update, OfASourceTreeThatIsNoWorkingTreeIsReportedAndRuns) {
    auto repositoryTree = std::make_shared<NEBSourceControlRepository>();
    repositoryTree->location = repository->path();
    repositoryTree->name = "demo";
    auto asked = request();
    asked->sourceTree = repositoryTree;
    asked->repositoryToAuthenticate = repositoryTree;
    const ReportCollector collector;
    EXPECT_THAT(commandLinesOf(*perform(asked)),
                ElementsAre("merge -s recursive -X ours origin/main"));
    ASSERT_EQ(collector.reports().size(), 1U);
    const LOMAssertionReport report = collector.reports().front();
    EXPECT_EQ(report.function, "-[GitUpdateOperation main]");
    EXPECT_EQ(report.file, "Classes/GitOperations");
    EXPECT_EQ(report.line, 1658);
    EXPECT_EQ(report.message,
              "workingTree should be an instance inheriting from NEBSourceControlWorkingTree, but "
              "it is " +
                  repositoryTree->descriptionForAssertionMessage());
    EXPECT_EQ(report.condition,
              "[(id)(workingTree) isKindOfClass:[NEBSourceControlWorkingTree class]]");

    // Validation would refuse the request; this is for hosts that do not validate.
    asked->sourceTree = nullptr;
    asked->destination = "nosuch";
    GitUpdateOperation operation(asked);
    operation.start();
    ASSERT_EQ(collector.reports().size(), 2U);
    EXPECT_EQ(collector.reports()[1].message,
              "workingTree should be an instance inheriting from NEBSourceControlWorkingTree, but "
              "it is nil");
    EXPECT_EQ(collector.reports()[1].condition, "(workingTree) != nil");
    EXPECT_TRUE(operation.error().has_value());
}

TEST_F(Update, ThatAlreadyHasAnErrorDoesNothing) {
    GitUpdateOperation operation(request());
    operation.setCommandLog(std::make_shared<NEBSourceControlCommandLog>());
    operation.setError(NEBSourceControlError::withDescription(-7, "before"));
    operation.start();
    EXPECT_EQ(operation.error()->code, -7);
    EXPECT_THAT(operation.commandLog()->runs(), IsEmpty());
}

}  // namespace
}  // namespace neb
