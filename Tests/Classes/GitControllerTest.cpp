#include "GitController.h"

#include <gmock/gmock.h>

#include <tuple>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/Matchers.h"

namespace neb {
namespace {

using test::IsSourceControlError;
using test::ReportCollector;
using test::requestFor;

const GitController controller;

// ---- preconditions ----------------------------------------------------------------------------

struct Report {
    int line;
    std::string message;
    std::string condition;

    bool operator==(const Report&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Report& report) {
    return stream << report.line << ": " << report.message << " [" << report.condition << "]";
}

/// Returns the reports of the controller; those of operations are tested with the operations.
std::vector<Report> reportsFor(const std::shared_ptr<NEBSourceControlRequest>& request) {
    const ReportCollector collector;
    static_cast<void>(controller.operationForRequest(request));
    std::vector<Report> reports;
    for (const LOMAssertionReport& report : collector.reports()) {
        if (report.file == "Classes/GitController") {
            EXPECT_EQ(report.function, "-[GitController operationForRequest:]");
            reports.push_back({report.line, report.message, report.condition});
        }
    }
    return reports;
}

std::shared_ptr<NEBSourceControlRequest> emptyRequest(std::int32_t type) {
    return NEBSourceControlRequest::initWithType(type, nullptr, std::nullopt, std::nullopt);
}

Report plain(int line, const std::string& condition) {
    return {line, "Assertion failed: " + condition, condition};
}
Report notNil(int line) {
    return {line, "(request.remote) should not be nil.", "((request.remote)) != nil"};
}

const std::string remoteNameOption =
    "[request.options objectForKey:NEBSourceControlRequestOptionRemoteName]";
const std::string branchOption =
    "[request.options objectForKey:NEBSourceControlRequestOptionBranch]";

Report isNil(int line, const std::string& expression) {
    return {line, expression + " should be a non-empty string, but it is nil",
            "(" + expression + ") != nil"};
}
Report isNoString(int line, const std::string& expression, const std::string& description) {
    return {line, expression + " should be a non-empty string, but it is " + description,
            "CFGetTypeID(" + expression + ") == CFStringGetTypeID()"};
}
Report isEmpty(int line, const std::string& expression) {
    return {line, expression + " should be a non-empty string, but it's an empty string",
            "![@\"\" isEqualToString:(" + expression + ")]"};
}

const std::string destination = "request.destination";
const std::string someFiles = "[request.files count] > 0";
const std::string oneFile = "[request.files count] == 1";
const std::string startingRevision = "request.startingRevision";

TEST(Preconditions, AreReportedInOrderForEachType) {
    const std::vector<std::pair<std::int32_t, std::vector<Report>>> expected{
        {-1, {}},
        {NEBSourceControlRequestAdd, {}},
        {NEBSourceControlRequestCreateBranch, {plain(107, destination)}},
        {NEBSourceControlRequestDeleteBranch, {plain(107, destination)}},
        {NEBSourceControlRequestCommit, {}},
        {NEBSourceControlRequestIgnore, {}},
        {NEBSourceControlRequestRemove, {plain(136, someFiles)}},
        {NEBSourceControlRequestAddFiles, {plain(140, someFiles)}},
        {NEBSourceControlRequestRevert, {plain(146, someFiles)}},
        {NEBSourceControlRequestMakeDirectory, {plain(212, destination)}},
        {NEBSourceControlRequestMerge, {plain(132, destination)}},
        {NEBSourceControlRequestCopy, {plain(206, someFiles), plain(207, destination)}},
        {NEBSourceControlRequestMove, {plain(217, someFiles), plain(218, destination)}},
        {12, {}},
        {NEBSourceControlRequestUpdate, {}},
        {NEBSourceControlRequestCheckout, {plain(154, destination)}},
        {NEBSourceControlRequestStatus, {}},
        {16, {}},
        {NEBSourceControlRequestList, {plain(71, someFiles)}},
        {NEBSourceControlRequestLog, {}},
        {NEBSourceControlRequestInfo, {}},
        {NEBSourceControlRequestExportFiles, {plain(66, someFiles), plain(67, startingRevision)}},
        {NEBSourceControlRequestExport, {plain(166, startingRevision)}},
        {NEBSourceControlRequestExportTree, {plain(78, destination), plain(79, startingRevision)}},
        {23, {}},
        {NEBSourceControlRequestListRemotes, {}},
        {NEBSourceControlRequestListBranches, {}},
        {NEBSourceControlRequestCurrentBranch, {}},
        {27,
         {plain(57,
                "request.sourceTree || [request.options "
                "objectForKey:NEBSourceControlRequestOptionRepositoryPath]")}},
        {NEBSourceControlRequestBlame, {plain(101, oneFile)}},
        {NEBSourceControlRequestClone,
         {plain(61, destination), plain(62, "request.sourceTree.location")}},
        {NEBSourceControlRequestDiff, {}},
        {NEBSourceControlRequestListRemoteBranches, {}},
        {NEBSourceControlRequestListRemoteBranchesSecondForm, {}},
        {NEBSourceControlRequestPush, {notNil(83)}},
        {NEBSourceControlRequestAddRemote, {plain(188, destination), plain(189, oneFile)}},
        {NEBSourceControlRequestRemoveRemote, {isNil(194, destination)}},
        {NEBSourceControlRequestTrackRemoteBranch,
         {isNil(199, destination), isNil(200, remoteNameOption), isNil(201, branchOption)}},
        {NEBSourceControlRequestFetch, {notNil(87), isNil(91, remoteNameOption)}},
        {NEBSourceControlRequestTrackingBranchName, {plain(183, branchOption)}},
        {NEBSourceControlRequestMergeBase, {}},
        {40, {}},
    };
    ASSERT_EQ(expected.size(), 42U);
    for (const auto& [type, reports] : expected) {
        EXPECT_EQ(reportsFor(emptyRequest(type)), reports) << "type " << type;
    }
}

/// Returns a request that meets the preconditions of each type, except those that need exactly one
/// file.
std::shared_ptr<NEBSourceControlRequest> fullRequest(std::int32_t type, std::size_t files) {
    auto request = requestFor(type, "/w");
    request->destination = "there";
    request->files = std::vector<NEBValue>(files, NEBValue("/w/a"));
    request->startingRevision = "abc";
    request->remote = std::make_shared<NEBSourceControlRemote>();
    request->options = NEBDictionary{{NEBSourceControlRequestOptionRemoteName, "origin"},
                                     {NEBSourceControlRequestOptionBranch, "topic"}};
    return request;
}

TEST(Preconditions, ThatHoldAreNotReported) {
    for (std::int32_t type = -1; type <= 40; ++type) {
        EXPECT_EQ(reportsFor(fullRequest(type, 1)), std::vector<Report>{}) << "type " << type;
    }
}

TEST(Preconditions, ExactlyOneFileExcludesTwo) {
    EXPECT_EQ(reportsFor(fullRequest(NEBSourceControlRequestBlame, 2)),
              std::vector{plain(101, oneFile)});
    EXPECT_EQ(reportsFor(fullRequest(NEBSourceControlRequestAddRemote, 2)),
              std::vector{plain(189, oneFile)});
    EXPECT_EQ(reportsFor(fullRequest(NEBSourceControlRequestExportFiles, 2)),
              std::vector<Report>{});
    EXPECT_EQ(reportsFor(fullRequest(NEBSourceControlRequestList, 0)),
              std::vector{plain(71, someFiles)})
        << "an empty list is no files";
}

TEST(Preconditions, DistinguishAbsentWrongKindAndEmpty) {
    auto request = fullRequest(NEBSourceControlRequestRemoveRemote, 1);
    request->destination = 7;
    EXPECT_EQ(reportsFor(request), std::vector{isNoString(194, destination, "7")});
    request->destination = "";
    EXPECT_EQ(reportsFor(request), std::vector{isEmpty(194, destination)});

    request = fullRequest(NEBSourceControlRequestTrackRemoteBranch, 1);
    request->destination = 5;
    request->options = NEBDictionary{{NEBSourceControlRequestOptionRemoteName, ""},
                                     {NEBSourceControlRequestOptionBranch, true}};
    EXPECT_EQ(reportsFor(request),
              (std::vector{isNoString(199, destination, "5"), isEmpty(200, remoteNameOption),
                           isNoString(201, branchOption, "true")}));
    request->options = NEBDictionary{{NEBSourceControlRequestOptionRemoteName, 1},
                                     {NEBSourceControlRequestOptionBranch, ""}};
    request->destination = "topic";
    EXPECT_EQ(reportsFor(request),
              (std::vector{isNoString(200, remoteNameOption, "1"), isEmpty(201, branchOption)}));
}

TEST(Preconditions, AFetchOverTheBridgeNeedsNoRemoteName) {
    auto request = fullRequest(NEBSourceControlRequestFetch, 0);
    request->options = std::nullopt;
    EXPECT_EQ(reportsFor(request), std::vector{isNil(91, remoteNameOption)});
    request->remote->representsGitSVNBridge = true;
    EXPECT_EQ(reportsFor(request), std::vector<Report>{});
    request->remote->representsGitSVNBridge = false;
    request->options = NEBDictionary{{NEBSourceControlRequestOptionRemoteName, 2}};
    EXPECT_EQ(reportsFor(request), std::vector{isNoString(91, remoteNameOption, "2")});
    request->options = NEBDictionary{{NEBSourceControlRequestOptionRemoteName, ""}};
    EXPECT_EQ(reportsFor(request), std::vector{isEmpty(91, remoteNameOption)});
}

TEST(Preconditions, CreateRepositoryNeedsATreeOrAPath) {
    auto request = emptyRequest(NEBSourceControlRequestCreateRepository);
    request->options = NEBDictionary{{NEBSourceControlRequestOptionRepositoryPath, "/r.git"}};
    EXPECT_EQ(reportsFor(request), std::vector<Report>{});
    EXPECT_EQ(reportsFor(requestFor(NEBSourceControlRequestCreateRepository, std::nullopt)),
              std::vector<Report>{});
}

TEST(Preconditions, ACloneNeedsTheLocationOfItsSource) {
    auto request = fullRequest(NEBSourceControlRequestClone, 0);
    request->sourceTree->location.reset();
    EXPECT_EQ(reportsFor(request), std::vector{plain(62, "request.sourceTree.location")});
}

TEST(Preconditions, AcceptADestinationOfAnyKind) {
    auto request = emptyRequest(NEBSourceControlRequestCheckout);
    request->destination = 0;
    EXPECT_EQ(reportsFor(request), std::vector<Report>{});
}

// ---- dispatch ---------------------------------------------------------------------------------

TEST(Dispatch, MakesTheClassOfTheType) {
    const std::pair<std::int32_t, const char*> classes[] = {
        {NEBSourceControlRequestAdd, "GitAddOperation"},
        {NEBSourceControlRequestCreateBranch, "GitBranchOperation"},
        {NEBSourceControlRequestDeleteBranch, "GitBranchOperation"},
        {NEBSourceControlRequestCommit, "GitCommitOperation"},
        {NEBSourceControlRequestIgnore, "GitIgnoreOperation"},
        {NEBSourceControlRequestRemove, "GitRemoveOperation"},
        {NEBSourceControlRequestAddFiles, "GitAddOperation"},
        {NEBSourceControlRequestRevert, "GitCheckoutOperation"},
        {NEBSourceControlRequestMakeDirectory, "GitMakeDirectoryOperation"},
        {NEBSourceControlRequestMerge, "GitMergeOperation"},
        {NEBSourceControlRequestCopy, "GitCopyOperation"},
        {NEBSourceControlRequestMove, "GitMoveOperation"},
        {NEBSourceControlRequestUpdate, "GitUpdateOperation"},
        {NEBSourceControlRequestCheckout, "GitCheckoutOperation"},
        {NEBSourceControlRequestStatus, "GitStatusOperation"},
        {NEBSourceControlRequestList, "GitListOperation"},
        {NEBSourceControlRequestLog, "GitLogOperation"},
        {NEBSourceControlRequestInfo, "GitInfoOperation"},
        {NEBSourceControlRequestExportFiles, "GitExportFileOperation"},
        {NEBSourceControlRequestExport, "GitExportFileOperation"},
        {NEBSourceControlRequestExportTree, "GitExportTreeOperation"},
        {NEBSourceControlRequestListRemotes, "GitListRemotesOperation"},
        {NEBSourceControlRequestListBranches, "GitListBranchesOperation"},
        {NEBSourceControlRequestCurrentBranch, "GitCurrentBranchOperation"},
        {NEBSourceControlRequestCreateRepository, "GitCreateRepositoryOperation"},
        {NEBSourceControlRequestBlame, "GitBlameOperation"},
        {NEBSourceControlRequestClone, "GitCloneOperation"},
        {NEBSourceControlRequestDiff, "GitDiffOperation"},
        {NEBSourceControlRequestListRemoteBranches, "GitListRemoteBranchesOperation"},
        {NEBSourceControlRequestListRemoteBranchesSecondForm, "GitListRemoteBranchesOperation"},
        {NEBSourceControlRequestPush, "GitPushOperation"},
        {NEBSourceControlRequestAddRemote, "GitAddRemoteOperation"},
        {NEBSourceControlRequestRemoveRemote, "GitRemoveRemoteOperation"},
        {NEBSourceControlRequestTrackRemoteBranch, "GitTrackRemoteBranchOperation"},
        {NEBSourceControlRequestFetch, "GitFetchOperation"},
        {NEBSourceControlRequestTrackingBranchName, "GitTrackingBranchNameOperation"},
        {NEBSourceControlRequestMergeBase, "GitMergeBaseOperation"},
    };
    for (const auto& [type, name] : classes) {
        const auto request = requestFor(type, "/w");
        const auto operation = controller.operationForRequest(request);
        ASSERT_NE(operation, nullptr) << type;
        EXPECT_EQ(operation->className(), name);
        EXPECT_EQ(operation->request(), request);
        EXPECT_FALSE(operation->isFinished());
        EXPECT_NE(operation, controller.operationForRequest(request)) << "a new one each time";
    }
}

TEST(Dispatch, ReturnsNullForTypesWithoutOperation) {
    for (const std::int32_t type : {-2147483647 - 1, -1, 12, 16, 23, 40, 999, 1999, 2147483647}) {
        const ReportCollector collector;
        EXPECT_EQ(controller.operationForRequest(fullRequest(type, 0)), nullptr) << type;
        EXPECT_TRUE(collector.reports().empty());
    }
}

TEST(Dispatch, ListsBranchesOfARemoteRepositoryOnItsServer) {
    const auto classFor = [](std::shared_ptr<NEBSourceControlSourceTree> tree) {
        return controller
            .operationForRequest(NEBSourceControlRequest::initWithType(
                NEBSourceControlRequestListBranches, std::move(tree), {}, {}))
            ->className();
    };
    auto elsewhere = std::make_shared<NEBSourceControlRepository>();
    elsewhere->isRemoteDistributedRepository = true;
    EXPECT_EQ(classFor(elsewhere), "GitListRemoteBranchesOperation");
    EXPECT_EQ(classFor(std::make_shared<NEBSourceControlRepository>()), "GitListBranchesOperation");
    EXPECT_EQ(classFor(std::make_shared<NEBSourceControlWorkingTree>()),
              "GitListBranchesOperation");
    EXPECT_EQ(classFor(nullptr), "GitListBranchesOperation");
}

TEST(Dispatch, UsesAnotherClassForAFetchOverTheBridge) {
    auto request = fullRequest(NEBSourceControlRequestFetch, 0);
    EXPECT_EQ(controller.operationForRequest(request)->className(), "GitFetchOperation");
    request->remote->representsGitSVNBridge = true;
    EXPECT_EQ(controller.operationForRequest(request)->className(), "GitSvnFetchOperation");
    request->remote = nullptr;
    const ReportCollector collector;
    EXPECT_EQ(controller.operationForRequest(request)->className(), "GitFetchOperation");
}

/// A broken precondition is reported and does not prevent the operation.
TEST(Dispatch, ReturnsAnOperationDespiteBrokenPreconditions) {
    for (const auto& row : NEBSourceControlAllRequestTypes()) {
        if (row.requirements.empty()) {
            continue;
        }
        const ReportCollector collector;
        EXPECT_NE(controller.operationForRequest(emptyRequest(row.type)), nullptr) << row.name;
        EXPECT_FALSE(collector.reports().empty()) << row.name;
    }
}

TEST(Dispatch, ReturnsNullForNoRequest) {
    EXPECT_EQ(controller.operationForRequest(nullptr), nullptr);
}

/// Throws when its description is read.
class Throwing : public NEBObject {
public:
    [[nodiscard]] std::string descriptionForAssertionMessage() const override { throw 42; }
};

TEST(Dispatch, TurnsAnExceptionIntoTheErrorOfTheOperation) {
    const auto request = requestFor(NEBSourceControlRequestCheckout, "/w");
    request->destination = NEBValue(std::make_shared<const Throwing>());
    const auto operation = controller.operationForRequest(request);
    ASSERT_NE(operation, nullptr);
    EXPECT_EQ(operation->request(), request);
    operation->start();
    EXPECT_THAT(operation->error(), IsSourceControlError(-1, testing::HasSubstr("\"int\"")));
}

TEST(Ignore, CompletesWithNeitherResultNorError) {
    const auto operation = controller.operationForRequest(
        requestFor(NEBSourceControlRequestIgnore, "/no/such/folder"));
    operation->start();
    EXPECT_TRUE(operation->isFinished());
    EXPECT_EQ(operation->result(), std::nullopt);
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_FALSE(operation->command().has_value());
}

}  // namespace
}  // namespace neb
