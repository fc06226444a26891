#include "GitOperations/GitBranch.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

using test::HasErrorClass;
using test::IsSourceControlError;
using test::perform;
using test::ReportCollector;
using test::requestFor;
using test::TestRepository;
using test::valuesOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

std::shared_ptr<NEBSourceControlRequest> branchRequest(std::int32_t type, NEBValue destination = {},
                                                       std::optional<NEBDictionary> options = {},
                                                       const std::string& location = "/w") {
    auto made = requestFor(type, location);
    made->destination = std::move(destination);
    made->options = std::move(options);
    return made;
}

std::vector<std::string> branchArguments(const std::shared_ptr<NEBSourceControlRequest>& asked) {
    return GitBranchOperation(asked).arguments();
}

const NEBDictionary bothPaths{{NEBSourceControlRequestOptionRepositoryPath, "/r/.git"},
                              {NEBSourceControlRequestOptionWorkingCopyPath, "/r"}};

// ---- the command lines ------------------------------------------------------------------------

TEST(BranchArguments, OfANewBranchMayHaveAStartingPoint) {
    EXPECT_THAT(branchArguments(branchRequest(NEBSourceControlRequestCreateBranch, "topic")),
                ElementsAre("branch", "topic"));
    EXPECT_THAT(branchArguments(branchRequest(
                    NEBSourceControlRequestCreateBranch, "topic",
                    NEBDictionary{{NEBSourceControlRequestOptionSourceLocation, "v1"}})),
                ElementsAre("branch", "topic", "v1"));
    EXPECT_THAT(branchArguments(branchRequest(NEBSourceControlRequestCreateBranch)),
                ElementsAre("branch"));
    EXPECT_THAT(
        branchArguments(branchRequest(NEBSourceControlRequestCreateBranch, "topic", bothPaths)),
        ElementsAre("branch", "topic"))
        << "no default arguments";
}

TEST(BranchArguments, OfAForcedDeletion) {
    EXPECT_THAT(branchArguments(branchRequest(NEBSourceControlRequestDeleteBranch, "topic")),
                ElementsAre("branch", "-d", "topic"));
    for (const auto& [value, flag] : {std::pair{NEBValue(false), "-d"},
                                      {NEBValue(0), "-d"},
                                      {NEBValue(true), "-D"},
                                      {NEBValue("yes"), "-D"}}) {
        EXPECT_THAT(branchArguments(
                        branchRequest(NEBSourceControlRequestDeleteBranch, "topic",
                                      NEBDictionary{{NEBSourceControlRequestOptionForce, value}})),
                    ElementsAre("branch", flag, "topic"));
    }
    EXPECT_THAT(
        branchArguments(branchRequest(NEBSourceControlRequestDeleteBranch, "topic", bothPaths)),
        ElementsAre("branch", "-d", "topic"));
}

TEST(BranchArguments, OfATrackingBranchNameTheRemoteBranch) {
    const ReportCollector collector;
    EXPECT_THAT(branchArguments(
                    branchRequest(NEBSourceControlRequestTrackRemoteBranch, "mine",
                                  NEBDictionary{{NEBSourceControlRequestOptionRemoteName, "origin"},
                                                {NEBSourceControlRequestOptionBranch, "topic"}})),
                ElementsAre("branch", "--track", "mine", "origin/topic"));
    EXPECT_THAT(collector.reports(), IsEmpty());
}

TEST(BranchArguments, OfATrackingBranchReportMissingValues) {
    struct Expected {
        int line;
        const char* expression;
    };
    const Expected expected[] = {
        {803, "request.destination"},
        {804, "[request.options objectForKey:NEBSourceControlRequestOptionRemoteName]"},
        {805, "[request.options objectForKey:NEBSourceControlRequestOptionBranch]"}};
    const ReportCollector collector;
    EXPECT_THAT(branchArguments(branchRequest(NEBSourceControlRequestTrackRemoteBranch)),
                ElementsAre("branch", "--track", "(null)/(null)"));
    ASSERT_EQ(collector.reports().size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        const LOMAssertionReport& report = collector.reports()[i];
        const std::string expression = expected[i].expression;
        EXPECT_EQ(report.function, "-[GitBranchOperation initWithRequest:]");
        EXPECT_EQ(report.file, "Classes/GitOperations");
        EXPECT_EQ(report.line, expected[i].line);
        EXPECT_EQ(report.message, expression + " should be a non-empty string, but it is nil");
        EXPECT_EQ(report.condition, "(" + expression + ") != nil");
    }
    EXPECT_THAT(
        branchArguments(branchRequest(NEBSourceControlRequestTrackRemoteBranch, 7,
                                      NEBDictionary{{NEBSourceControlRequestOptionRemoteName, ""},
                                                    {NEBSourceControlRequestOptionBranch, true}})),
        ElementsAre("branch", "--track", "7", "/true"));
    ASSERT_EQ(collector.reports().size(), 6U);
    EXPECT_THAT(collector.reports()[3].condition, StartsWith("CFGetTypeID(request.destination)"));
    EXPECT_THAT(collector.reports()[4].condition, StartsWith("![@\"\" isEqualToString:("));
    EXPECT_THAT(collector.reports()[5].condition, StartsWith("CFGetTypeID([request.options"));
}

TEST(BranchListArguments, AreTheSameForListAndCurrentBranch) {
    EXPECT_THAT(
        GitListBranchesOperation(branchRequest(NEBSourceControlRequestListBranches, {}, bothPaths))
            .arguments(),
        ElementsAre("branch"));
    EXPECT_THAT(GitCurrentBranchOperation(
                    branchRequest(NEBSourceControlRequestCurrentBranch, {}, bothPaths))
                    .arguments(),
                ElementsAre("branch"));
}

TEST(RemoteBranchArguments, NameTheOneFile) {
    auto asked = branchRequest(NEBSourceControlRequestListRemoteBranches);
    EXPECT_THAT(GitListRemoteBranchesOperation(asked).arguments(),
                ElementsAre("ls-remote", "--heads"));
    asked->files = valuesOf({"origin"});
    EXPECT_THAT(GitListRemoteBranchesOperation(asked).arguments(),
                ElementsAre("ls-remote", "--heads", "origin"));
    asked->files = valuesOf({"origin", "other"});
    EXPECT_THAT(GitListRemoteBranchesOperation(asked).arguments(),
                ElementsAre("ls-remote", "--heads"));
    asked->options = bothPaths;
    EXPECT_THAT(GitListRemoteBranchesOperation(asked).arguments(),
                ElementsAre("--git-dir=/r/.git", "--work-tree=/r", "ls-remote", "--heads"));
}

// ---- what git prints --------------------------------------------------------------------------

template <typename Op>
std::optional<NEBSourceControlResult> resultOf(const std::optional<Data>& output) {
    Op operation(branchRequest(NEBSourceControlRequestListBranches));
    operation.setData(output);
    operation.parseData();
    return operation.result();
}

NEBDictionary named(const std::string& name) {
    return {{NEBSourceControlOperationNameKey, name}};
}

constexpr const char* twoBranches = "  master\n* topic\n";

TEST(CurrentBranchOutput, IsTheLineWithTheStar) {
    EXPECT_EQ(resultOf<GitCurrentBranchOperation>(twoBranches),
              NEBSourceControlResult{named("topic")});
    EXPECT_EQ(resultOf<GitCurrentBranchOperation>("* main\n"),
              NEBSourceControlResult{named("main")});
    EXPECT_EQ(resultOf<GitCurrentBranchOperation>("* (HEAD detached at d4f0a6f)\n  main\n"),
              NEBSourceControlResult{named("(HEAD detached at d4f0a6f)")});
    EXPECT_EQ(resultOf<GitCurrentBranchOperation>("* one\n* two\n"),
              NEBSourceControlResult{named("one")});
    EXPECT_EQ(resultOf<GitCurrentBranchOperation>("** * a *\n"),
              NEBSourceControlResult{named("a")});
}

TEST(CurrentBranchOutput, WithoutAStarHasNoResult) {
    EXPECT_EQ(resultOf<GitCurrentBranchOperation>("  master\n + other\n"), std::nullopt);
    EXPECT_EQ(resultOf<GitCurrentBranchOperation>(""), std::nullopt);
    EXPECT_EQ(resultOf<GitCurrentBranchOperation>(std::nullopt), std::nullopt);
}

/// The last record is empty, which hosts rely on.
TEST(BranchListOutput, HasARecordPerLineAndAnEmptyOneAtTheEnd) {
    EXPECT_EQ(resultOf<GitListBranchesOperation>(twoBranches),
              (NEBSourceControlResult{named("master"), named("topic"), named("")}));
    EXPECT_EQ(resultOf<GitListBranchesOperation>("* main\n"),
              (NEBSourceControlResult{named("main"), named("")}))
        << "a single branch is a row of a listing too";
    EXPECT_EQ(resultOf<GitListBranchesOperation>("  a\n\n+ b\n"),
              (NEBSourceControlResult{named("a"), named(""), named("+ b"), named("")}));
}

TEST(BranchListOutput, WithoutTextHasNoResult) {
    EXPECT_EQ(resultOf<GitListBranchesOperation>(""), std::nullopt);
    EXPECT_EQ(resultOf<GitListBranchesOperation>(std::nullopt), std::nullopt);
}

NEBDictionary head(const std::string& revision, const std::string& name) {
    return {{NEBSourceControlOperationRevisionKey, revision},
            {NEBSourceControlOperationNameKey, name}};
}

TEST(RemoteBranchOutput, HasRevisionAndNamePerLineAndAnEmptyRecordAtTheEnd) {
    EXPECT_EQ(
        resultOf<GitListRemoteBranchesOperation>(std::string(40, 'a') + "\trefs/heads/master\n"),
        (NEBSourceControlResult{head("aaaaaaaaaaaa", "master"), NEBDictionary()}));
    EXPECT_EQ(resultOf<GitListRemoteBranchesOperation>("0123456789ab\trefs/heads/a/b\n"
                                                       "0123456789abc\tx refs/heads/refs/heads/c"),
              (NEBSourceControlResult{head("0123456789ab", "a/b"),
                                      head("0123456789ab", "refs/heads/c")}));
}

TEST(RemoteBranchOutput, OmitsMissingParts) {
    const NEBDictionary revisionAlone{{NEBSourceControlOperationRevisionKey, "abc"}};
    EXPECT_EQ(resultOf<GitListRemoteBranchesOperation>("abc\trefs/tags/v1"),
              NEBSourceControlResult{revisionAlone});
    EXPECT_EQ(resultOf<GitListRemoteBranchesOperation>("abc"),
              NEBSourceControlResult{revisionAlone});
    EXPECT_EQ(resultOf<GitListRemoteBranchesOperation>("\trefs/heads/x"),
              NEBSourceControlResult{named("x")});
    EXPECT_EQ(resultOf<GitListRemoteBranchesOperation>(""), NEBSourceControlResult{});
    EXPECT_EQ(resultOf<GitListRemoteBranchesOperation>(std::nullopt), NEBSourceControlResult{});
}

TEST(RemoteBranchOutput, ReportsAndKeepsAnEmptyName) {
    const ReportCollector collector;
    EXPECT_EQ(resultOf<GitListRemoteBranchesOperation>("abc\trefs/heads/"),
              NEBSourceControlResult{head("abc", "")});
    ASSERT_EQ(collector.reports().size(), 1U);
    const LOMAssertionReport& report = collector.reports().front();
    EXPECT_EQ(report.function, "-[GitListRemoteBranchesOperation parseData]");
    EXPECT_EQ(report.file, "Classes/GitOperations");
    EXPECT_EQ(report.line, 1092);
    EXPECT_EQ(report.message, "branchName should be a non-empty string, but it's an empty string");
    EXPECT_EQ(report.condition, "![@\"\" isEqualToString:(branchName)]");
}

// ---- real repositories ------------------------------------------------------------------------

class Branches : public test::HygienicTest {
protected:
    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> run(
        std::int32_t type, NEBValue destination = {},
        std::optional<NEBDictionary> options = {}) const {
        auto asked =
            branchRequest(type, std::move(destination), std::move(options), repository.path());
        asked->repositoryToAuthenticate = asked->sourceTree;
        return perform(asked);
    }
    [[nodiscard]] std::vector<std::string> names(std::int32_t type) const {
        std::vector<std::string> found;
        for (const NEBDictionary& record : run(type)->result().value_or(NEBSourceControlResult())) {
            found.push_back(record.value(NEBSourceControlOperationNameKey).description());
        }
        return found;
    }

    TestRepository repository;
};

TEST_F(Branches, AreCreatedListedAndDeleted) {
    repository.commitFile("a", "1");
    const std::string first = repository.git({"rev-parse", "HEAD"});
    repository.commitFile("a", "2");
    for (const char* name : {"feature/x.y", "Grüße"}) {
        const auto operation = run(NEBSourceControlRequestCreateBranch, name);
        EXPECT_EQ(operation->error(), std::nullopt);
        EXPECT_EQ(operation->result(), std::nullopt);
    }
    EXPECT_EQ(run(NEBSourceControlRequestCreateBranch, "old",
                  NEBDictionary{{NEBSourceControlRequestOptionSourceLocation, "HEAD~1"}})
                  ->error(),
              std::nullopt);
    EXPECT_EQ(repository.git({"rev-parse", "old"}), first);
    EXPECT_THAT(names(25), ElementsAre("Grüße", "feature/x.y", "main", "old", ""));
    EXPECT_THAT(names(26), ElementsAre("main"));
    EXPECT_EQ(run(NEBSourceControlRequestDeleteBranch, "Grüße")->error(), std::nullopt);
    EXPECT_THAT(names(25), ElementsAre("feature/x.y", "main", "old", ""));
}

TEST_F(Branches, DoNotDependOnTheConfiguration) {
    repository.commitFile("a", "1");
    repository.git({"branch", "b"});
    repository.git({"config", "color.branch", "always"});
    repository.git({"config", "column.ui", "always"});
    repository.git({"config", "branch.sort", "-refname"});
    EXPECT_THAT(names(25), ElementsAre("b", "main", ""));
}

TEST_F(Branches, AreAbsentWithoutCommits) {
    EXPECT_EQ(run(NEBSourceControlRequestListBranches)->result(), std::nullopt);
    EXPECT_EQ(run(NEBSourceControlRequestCurrentBranch)->result(), std::nullopt);
    EXPECT_EQ(run(NEBSourceControlRequestListBranches)->error(), std::nullopt);
    EXPECT_THAT(run(NEBSourceControlRequestCreateBranch, "topic")->error(),
                HasErrorClass(NEBSourceControlRevisionUnknownErrorClass));
}

TEST_F(Branches, AreListedForDetachedHEADAndOtherWorktrees) {
    repository.commitFile("a", "1");
    repository.git({"branch", "other"});
    const test::TemporaryFolder folder;
    repository.git({"worktree", "add", "-q", folder.path("there"), "other"});
    repository.git({"checkout", "-q", "--detach"});
    EXPECT_THAT(names(26), ElementsAre(StartsWith("(HEAD detached at ")));
    EXPECT_THAT(names(25), ElementsAre(StartsWith("(HEAD detached at "), "main", "+ other", ""));
    EXPECT_THAT(run(NEBSourceControlRequestDeleteBranch, "other")->error(),
                HasErrorClass(NEBSourceControlBranchInUseErrorClass));
}

TEST_F(Branches, ReportFailedChanges) {
    repository.commitFile("a", "1");
    EXPECT_THAT(run(NEBSourceControlRequestCreateBranch, "main")->error(),
                HasErrorClass(NEBSourceControlBranchExistsErrorClass));
    EXPECT_THAT(run(NEBSourceControlRequestCreateBranch, "a b")->error(),
                HasErrorClass(NEBSourceControlBranchNameInvalidErrorClass));
    EXPECT_THAT(run(NEBSourceControlRequestCreateBranch, "x",
                    NEBDictionary{{NEBSourceControlRequestOptionSourceLocation, "nosuch"}})
                    ->error(),
                HasErrorClass(NEBSourceControlRevisionUnknownErrorClass));
    EXPECT_THAT(run(NEBSourceControlRequestDeleteBranch, "nosuch")->error(),
                HasErrorClass(NEBSourceControlBranchUnknownErrorClass));
    EXPECT_THAT(run(NEBSourceControlRequestDeleteBranch, "main")->error(),
                HasErrorClass(NEBSourceControlBranchInUseErrorClass));
    repository.git({"checkout", "-q", "-b", "unmerged"});
    repository.commitFile("b", "1");
    repository.git({"checkout", "-q", "main"});
    const auto refused = run(NEBSourceControlRequestDeleteBranch, "unmerged");
    EXPECT_THAT(refused->error(), IsSourceControlError(-91, testing::_));
    EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlBranchNotMergedErrorClass));
    EXPECT_EQ(run(NEBSourceControlRequestDeleteBranch, "unmerged",
                  NEBDictionary{{NEBSourceControlRequestOptionForce, true}})
                  ->error(),
              std::nullopt);
    EXPECT_THAT(names(25), ElementsAre("main", ""));
}

class RemoteBranches : public Branches {
protected:
    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> list(
        const std::vector<std::string>& files,
        std::int32_t type = NEBSourceControlRequestListRemoteBranches) const {
        auto asked = branchRequest(type, {}, {}, repository.path());
        asked->files = valuesOf(files);
        return perform(asked);
    }
};

TEST_F(RemoteBranches, AreListedByLocationOrName) {
    const TestRepository other;
    other.commitFile("a", "1");
    other.git({"branch", "feature/x"});
    const std::string revision = other.git({"rev-parse", "HEAD"}).substr(0, 12);
    const NEBSourceControlResult expected{head(revision, "feature/x"), head(revision, "main"),
                                          NEBDictionary()};
    EXPECT_EQ(list({other.path()})->result(), expected);
    EXPECT_EQ(list({other.path()}, 32)->result(), expected);
    repository.git({"remote", "add", "origin", other.path()});
    EXPECT_EQ(list({"origin"})->result(), expected);
    const auto withoutName = list({});
    EXPECT_EQ(withoutName->result(), expected) << "git takes origin";
    EXPECT_EQ(withoutName->error(), std::nullopt) << "its notice of where it asked is no error";

    auto tree = std::make_shared<NEBSourceControlRepository>();
    tree->location = repository.path();
    tree->isRemoteDistributedRepository = true;
    auto asked = NEBSourceControlRequest::initWithType(NEBSourceControlRequestListBranches, tree,
                                                       valuesOf({other.path()}), {});
    EXPECT_EQ(perform(asked)->result(), expected);
}

TEST_F(RemoteBranches, AreEmptyForAnEmptyRepository) {
    const TestRepository empty;
    EXPECT_EQ(list({empty.path()})->result(), NEBSourceControlResult{});
}

TEST_F(RemoteBranches, ReportFailures) {
    EXPECT_THAT(list({repository.path("nosuch")})->error(),
                HasErrorClass(NEBSourceControlRepositoryNotFoundErrorClass));
    EXPECT_THAT(list({"http://127.0.0.1:1/x.git"})->error(),
                HasErrorClass(NEBSourceControlHostUnreachableErrorClass));
    EXPECT_THAT(list({})->error(), HasErrorClass(NEBSourceControlRemoteUnknownErrorClass));
}

}  // namespace
}  // namespace neb
