// Command lines and output of fetches, pulls and pushes.

#include "GitOperations/GitExchange.h"

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

#include <memory>

#include "Classes/GitOperations/ExchangeRequests.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/RequestRun.h"
#include "Support/TemporaryFolder.h"

namespace neb {
namespace {

using test::HasErrorClass;
using test::IsSourceControlError;
using test::ReportCollector;
using test::TemporaryFolder;
using test::exchange::content;
using test::exchange::originAndTopic;
using test::exchange::remoteNameKey;
using test::exchange::request;
using test::exchange::withPaths;
using testing::ElementsAre;
using testing::IsEmpty;

struct ExpectedReport {
    int line;
    std::string expression;
};

/// Expects one report per element, in order, about a nil value.
void expectNilReports(const ReportCollector& collector, const std::string& function,
                      const std::vector<ExpectedReport>& expected) {
    ASSERT_EQ(collector.reports().size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const LOMAssertionReport& report = collector.reports()[i];
        EXPECT_EQ(report.function, function);
        EXPECT_EQ(report.file, "Classes/GitOperations");
        EXPECT_EQ(report.line, expected[i].line);
        EXPECT_EQ(report.message,
                  expected[i].expression + " should be a non-empty string, but it is nil");
        EXPECT_EQ(report.condition, "(" + expected[i].expression + ") != nil");
    }
}

const std::string remoteNameExpression =
    "[request.options objectForKey:NEBSourceControlRequestOptionRemoteName]";
const std::string branchExpression =
    "[request.options objectForKey:NEBSourceControlRequestOptionBranch]";

// ---- the command lines ------------------------------------------------------------------------

TEST(FetchArguments, NameTheRemoteWithoutDefaultArguments) {
    EXPECT_THAT(GitFetchOperation(request(NEBSourceControlRequestFetch, withPaths(originAndTopic)))
                    .arguments(),
                ElementsAre("fetch", "-q", "origin"));
}

TEST(FetchArguments, ReportAMissingRemote) {
    const ReportCollector collector;
    EXPECT_THAT(GitFetchOperation(request(NEBSourceControlRequestFetch)).arguments(),
                ElementsAre("fetch", "-q"));
    expectNilReports(collector, "-[GitFetchOperation initWithRequest:]",
                     {{634, remoteNameExpression}});
    EXPECT_THAT(
        GitFetchOperation(request(NEBSourceControlRequestFetch, NEBDictionary{{remoteNameKey, 7}}))
            .arguments(),
        ElementsAre("fetch", "-q", "7"));
    EXPECT_THAT(
        GitFetchOperation(request(NEBSourceControlRequestFetch, NEBDictionary{{remoteNameKey, ""}}))
            .arguments(),
        ElementsAre("fetch", "-q", ""));
    EXPECT_EQ(collector.reports()[1].condition,
              "CFGetTypeID(" + remoteNameExpression + ") == CFStringGetTypeID()");
    EXPECT_EQ(collector.reports()[2].condition,
              "![@\"\" isEqualToString:(" + remoteNameExpression + ")]");
}

TEST(PullArguments, FastForwardAfterTheDefaultArguments) {
    EXPECT_THAT(
        GitPullOperation(request(NEBSourceControlRequestUpdate, originAndTopic)).arguments(),
        ElementsAre("pull", "--ff-only", "origin", "topic"));
    EXPECT_THAT(
        GitPullOperation(request(NEBSourceControlRequestUpdate, withPaths(originAndTopic)))
            .arguments(),
        ElementsAre("--git-dir=/r/.git", "--work-tree=/r", "pull", "--ff-only", "origin", "topic"));
}

TEST(PullArguments, ReportAMissingRemoteOrBranch) {
    const ReportCollector collector;
    EXPECT_THAT(GitPullOperation(request(NEBSourceControlRequestUpdate)).arguments(),
                ElementsAre("pull", "--ff-only"));
    expectNilReports(collector, "-[GitPullOperation initWithRequest:]",
                     {{1818, remoteNameExpression}, {1819, branchExpression}});
}

TEST(PushArguments, NameTheRemoteAndBothBranchesWithoutDefaultArguments) {
    EXPECT_THAT(
        GitPushOperation(request(NEBSourceControlRequestPush, withPaths(originAndTopic), "main"))
            .arguments(),
        ElementsAre("push", "origin", "topic:main"));
}

TEST(PushArguments, ReportMissingValues) {
    const ReportCollector collector;
    EXPECT_THAT(GitPushOperation(request(NEBSourceControlRequestPush)).arguments(),
                ElementsAre("push", "(null):(null)"));
    expectNilReports(collector, "-[GitPushOperation initWithRequest:]",
                     {{1868, "self.request.destination"},
                      {1869, remoteNameExpression},
                      {1870, branchExpression}});
    EXPECT_THAT(
        GitPushOperation(request(NEBSourceControlRequestPush, originAndTopic, 7)).arguments(),
        ElementsAre("push", "origin", "topic:7"));
    EXPECT_EQ(collector.reports()[3].condition,
              "CFGetTypeID(self.request.destination) == CFStringGetTypeID()");
    static_cast<void>(GitPushOperation(request(NEBSourceControlRequestPush, originAndTopic, "")));
    EXPECT_EQ(collector.reports()[4].condition,
              "![@\"\" isEqualToString:(self.request.destination)]");
}

TEST(PushArguments, OverTheBridgeAreFixed) {
    const ReportCollector collector;
    auto asked = request(NEBSourceControlRequestPush, withPaths({}));
    asked->remote->representsGitSVNBridge = true;
    EXPECT_THAT(GitPushOperation(asked).arguments(), ElementsAre("svn", "dcommit", "--quiet"));
    EXPECT_THAT(collector.reports(), IsEmpty());
}

// ---- what git prints --------------------------------------------------------------------------

template <typename Op>
struct Parsed {
    Parsed(const std::optional<Data>& output, const std::optional<Data>& errors)
        : operation(request(NEBSourceControlRequestPush, originAndTopic, "main")) {
        operation.setData(output);
        operation.setErrorData(errors);
        operation.parseData();
    }
    Op operation;
};

TEST(FetchOutput, IsAlwaysAnEmptyResult) {
    const Parsed<GitFetchOperation> fetched("", "fatal: x\n");
    EXPECT_EQ(fetched.operation.result(), NEBSourceControlResult{});
    EXPECT_EQ(fetched.operation.errorData(), "fatal: x\n");
}

TEST(FetchOutput, IgnoresTwoMessagesOfTheBridgeAtTheBeginning) {
    for (const char* harmless :
         {"Couldn't find revmap for x\n", "W: -empty_dir: keep\nW: more\n"}) {
        EXPECT_EQ(Parsed<GitFetchOperation>("", harmless).operation.errorData(), std::nullopt);
    }
    for (const char* kept : {"x Couldn't find revmap", "W: W: -empty_dir: keep\n",
                             "\nW: -empty_dir:", "W: +empty_dir: x", "w: -empty_dir:"}) {
        EXPECT_EQ(Parsed<GitFetchOperation>("", kept).operation.errorData(), kept);
    }
}

TEST(FetchOutput, WithoutDataIsNotParsed) {
    const Parsed<GitFetchOperation> fetched(std::nullopt, "W: -empty_dir: keep\n");
    EXPECT_EQ(fetched.operation.errorData(), "W: -empty_dir: keep\n");
    EXPECT_EQ(fetched.operation.result(), std::nullopt);
}

TEST(PullOutput, IsTheContent) {
    const Parsed<GitPullOperation> pulled("Updating a..b\nFast-forward\n", "From /r\n");
    EXPECT_EQ(pulled.operation.result(), content("Updating a..b\nFast-forward\n"));
    EXPECT_EQ(pulled.operation.error(), std::nullopt);
    EXPECT_EQ(pulled.operation.errorData(), std::nullopt) << "no word of a fatal failure";
    EXPECT_EQ(Parsed<GitPullOperation>("", std::nullopt).operation.result(), content(""));
}

TEST(PullOutput, WithoutDataIsAnEmptyResult) {
    const Parsed<GitPullOperation> pulled(std::nullopt, std::nullopt);
    EXPECT_EQ(pulled.operation.result(), NEBSourceControlResult{});
    EXPECT_EQ(pulled.operation.error(), std::nullopt);
}

/// git prints it without hyphens since 2.15. The wording of the suggestion is what hosts have
/// always shown.
TEST(PullOutput, WithoutNewCommitsIsAnError) {
    for (const char* output :
         {"x Already up-to-date x\n", "x\nAlready up to date.\n", "Already up to date.\n"}) {
        const Parsed<GitPullOperation> pulled(output, "From /r\n");
        EXPECT_THAT(pulled.operation.error(),
                    IsSourceControlError(-34, "The local repository \"demo\" is up to date."));
        EXPECT_EQ(pulled.operation.error()->localizedRecoverySuggestion(),
                  "The are no changes to pull from \"main\".");
        EXPECT_THAT(pulled.operation.error(), HasErrorClass(NEBSourceControlUpToDateErrorClass));
        EXPECT_EQ(pulled.operation.result(), NEBSourceControlResult{});
    }
}

TEST(PullOutput, ThatNamesAFileOfThatNameIsContent) {
    const std::string output = "Fast-forward\n Already up to date.txt | 1 +\n";
    EXPECT_EQ(Parsed<GitPullOperation>(output, std::nullopt).operation.result(), content(output));
}

TEST(PullOutput, OfAFailureIsNotUpToDate) {
    const TemporaryFolder folder;
    test::StandIn<GitPullOperation> operation(
        folder.writeProgram("git",
                            "#!/bin/sh\necho 'Already up to date.'\n"
                            "echo 'error: disk on fire' >&2\nexit 1\n"),
        request(NEBSourceControlRequestUpdate, originAndTopic, "main", folder.path()));
    operation.start();
    EXPECT_THAT(operation.error(), IsSourceControlError(-1, "error: disk on fire"));
}

TEST(PullOutput, LeavesAFatalErrorToTheErrorTable) {
    EXPECT_EQ(Parsed<GitPullOperation>("", "x fatal y").operation.errorData(), "x fatal y");
}

TEST(PushOutput, IsTheStandardErrorOfGit) {
    const std::string words = "To /r.git\n   a..b  main -> main\n";
    const Parsed<GitPushOperation> pushed("ignored", words);
    EXPECT_EQ(pushed.operation.result(), content(words));
    EXPECT_EQ(pushed.operation.data(), words);
    EXPECT_EQ(pushed.operation.errorData(), std::nullopt);
}

TEST(PushOutput, WithoutErrorDataIsAnEmptyResult) {
    const Parsed<GitPushOperation> pushed("out", std::nullopt);
    EXPECT_EQ(pushed.operation.result(), NEBSourceControlResult{});
    EXPECT_EQ(pushed.operation.data(), "out");
}

TEST(PushOutput, LeavesAFatalErrorToTheErrorTable) {
    const Parsed<GitPushOperation> pushed("out", "x fatal y");
    EXPECT_EQ(pushed.operation.result(), std::nullopt);
    EXPECT_EQ(pushed.operation.data(), "out");
    EXPECT_EQ(pushed.operation.errorData(), "x fatal y");
}

}  // namespace
}  // namespace neb
