#include "GitDispatch.h"

#include <algorithm>
#include <iterator>

#include "GitExtensions/GitAnnotation.h"
#include "GitExtensions/GitChangeBranch.h"
#include "GitExtensions/GitChangeSettings.h"
#include "GitExtensions/GitChangeSubmodules.h"
#include "GitExtensions/GitChangeWorktrees.h"
#include "GitExtensions/GitChanges.h"
#include "GitExtensions/GitContent.h"
#include "GitExtensions/GitCreateCommit.h"
#include "GitExtensions/GitDiscard.h"
#include "GitExtensions/GitFinish.h"
#include "GitExtensions/GitHistory.h"
#include "GitExtensions/GitIntegrate.h"
#include "GitExtensions/GitPick.h"
#include "GitExtensions/GitPublish.h"
#include "GitExtensions/GitReferences.h"
#include "GitExtensions/GitSettings.h"
#include "GitExtensions/GitStage.h"
#include "GitExtensions/GitStash.h"
#include "GitExtensions/GitSubmodules.h"
#include "GitExtensions/GitTag.h"
#include "GitExtensions/GitTree.h"
#include "GitExtensions/GitUnfinishedOperation.h"
#include "GitExtensions/GitWorkingCopyState.h"
#include "GitExtensions/GitWorktrees.h"
#include "GitOperations/GitBlame.h"
#include "GitOperations/GitBranch.h"
#include "GitOperations/GitCheckout.h"
#include "GitOperations/GitCommit.h"
#include "GitOperations/GitCopy.h"
#include "GitOperations/GitDiff.h"
#include "GitOperations/GitExchange.h"
#include "GitOperations/GitExport.h"
#include "GitOperations/GitIgnoreOperation.h"
#include "GitOperations/GitInfo.h"
#include "GitOperations/GitList.h"
#include "GitOperations/GitLog.h"
#include "GitOperations/GitMerge.h"
#include "GitOperations/GitNewRepository.h"
#include "GitOperations/GitRemote.h"
#include "GitOperations/GitStatus.h"
#include "GitOperations/GitSubversion.h"
#include "GitOperations/GitTrackedFiles.h"
#include "GitOperations/GitTrackingBranch.h"
#include "GitOperations/GitUpdate.h"
#include "NEBFoundation/NEBSourceControlAssertions.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"

namespace neb {

namespace {

// ---- preconditions ----------------------------------------------------------------------------

/// The three forms of a report.
enum class Shape { plain, notNil, nonEmptyString };

/// A value that must be present, and its text in a report: the condition in the plain form, the
/// expression in the others.
struct Condition {
    Shape shape;
    std::string_view text;
    NEBValue (*value)(const NEBSourceControlRequest&);
};

/// Returns a present value if the condition holds.
NEBValue presentIf(bool holds) {
    return holds ? NEBValue(true) : NEBValue();
}

constexpr Condition destination{
    Shape::plain, "request.destination",
    [](const NEBSourceControlRequest& request) { return request.destination; }};

constexpr Condition someFiles{
    Shape::plain, "[request.files count] > 0",
    [](const NEBSourceControlRequest& request) { return presentIf(request.fileCount() > 0); }};

constexpr Condition oneFile{
    Shape::plain, "[request.files count] == 1",
    [](const NEBSourceControlRequest& request) { return presentIf(request.fileCount() == 1); }};

constexpr Condition startingRevision{
    Shape::plain, "request.startingRevision",
    [](const NEBSourceControlRequest& request) { return request.startingRevision; }};

constexpr Condition sourceTreeLocation{
    Shape::plain, "request.sourceTree.location", [](const NEBSourceControlRequest& request) {
        return presentIf(request.sourceTree && request.sourceTree->location);
    }};

constexpr Condition sourceTreeOrRepositoryPath{
    Shape::plain,
    "request.sourceTree || [request.options "
    "objectForKey:NEBSourceControlRequestOptionRepositoryPath]",
    [](const NEBSourceControlRequest& request) {
        return request.sourceTree ? NEBValue(true)
                                  : request.option(NEBSourceControlRequestOptionRepositoryPath);
    }};

constexpr std::string_view branchExpression =
    "[request.options objectForKey:NEBSourceControlRequestOptionBranch]";
constexpr std::string_view remoteNameExpression =
    "[request.options objectForKey:NEBSourceControlRequestOptionRemoteName]";

constexpr Condition branch{Shape::plain, branchExpression,
                           [](const NEBSourceControlRequest& request) {
                               return request.option(NEBSourceControlRequestOptionBranch);
                           }};

constexpr Condition remote{
    Shape::notNil, "(request.remote)",
    [](const NEBSourceControlRequest& request) { return presentIf(request.remote != nullptr); }};

constexpr Condition nonEmptyDestination{Shape::nonEmptyString, destination.text, destination.value};

constexpr Condition nonEmptyBranch{Shape::nonEmptyString, branchExpression, branch.value};

constexpr Condition nonEmptyRemoteName{
    Shape::nonEmptyString, remoteNameExpression, [](const NEBSourceControlRequest& request) {
        return request.option(NEBSourceControlRequestOptionRemoteName);
    }};

/// A fetch over the Subversion bridge needs no remote name.
constexpr Condition nonEmptyRemoteNameUnlessBridge{
    Shape::nonEmptyString, remoteNameExpression, [](const NEBSourceControlRequest& request) {
        const bool isBridge = request.remote && request.remote->representsGitSVNBridge;
        return isBridge ? NEBValue("the bridge") : nonEmptyRemoteName.value(request);
    }};

/// A condition and the line number in its report.
struct Precondition {
    const Condition* condition = nullptr;
    int line = 0;
};

void check(const NEBSourceControlRequest& request, const Precondition& precondition) {
    const NEBSourceControlAssertionSite site{.function = "-[GitController operationForRequest:]",
                                             .file = "Classes/GitController",
                                             .line = precondition.line};
    const auto& [shape, text, valueOf] = *precondition.condition;
    const NEBValue value = valueOf(request);
    switch (shape) {
        case Shape::plain:
            NEBSourceControlAssert(site, value.isPresent(), text);
            break;
        case Shape::notNil:
            NEBSourceControlAssertNotNil(site, value.isPresent(), text);
            break;
        case Shape::nonEmptyString:
            NEBSourceControlAssertNonEmptyString(site, value, text);
            break;
    }
}

// ---- classes ----------------------------------------------------------------------------------

using Request = std::shared_ptr<NEBSourceControlRequest>;
using Maker = std::shared_ptr<NEBSourceControlOperation> (*)(const Request&);

template <typename Op>
std::shared_ptr<NEBSourceControlOperation> make(const Request& request) {
    return initWithRequest<Op>(request);
}

/// The branches of a remote repository are listed by its server.
std::shared_ptr<NEBSourceControlOperation> makeListBranches(const Request& request) {
    const auto repository =
        std::dynamic_pointer_cast<NEBSourceControlRepository>(request->sourceTree);
    return repository && repository->isRemoteDistributedRepository
               ? make<GitListRemoteBranchesOperation>(request)
               : make<GitListBranchesOperation>(request);
}

std::shared_ptr<NEBSourceControlOperation> makeFetch(const Request& request) {
    return request->remote && request->remote->representsGitSVNBridge
               ? make<GitSvnFetchOperation>(request)
               : make<GitFetchOperation>(request);
}

/// A class for the actions of a type that only read, and one for the others.
template <typename Reading, typename Changing>
std::shared_ptr<NEBSourceControlOperation> makeByEffect(const Request& request) {
    return NEBSourceControlEffectOfRequest(*request) == NEBSourceControlRequestEffect::reads
               ? make<Reading>(request)
               : make<Changing>(request);
}

struct DispatchRow {
    std::int32_t type;
    Maker maker;
    /// In the order of the reports; unused elements are empty.
    Precondition preconditions[3] = {};
};

/// The operation and the preconditions of each type. Types that are not listed have no operation.
constexpr DispatchRow dispatchRows[] = {
    {NEBSourceControlRequestAdd, &make<GitAddOperation>},
    {NEBSourceControlRequestCreateBranch, &make<GitBranchOperation>, {{&destination, 107}}},
    {NEBSourceControlRequestDeleteBranch, &make<GitBranchOperation>, {{&destination, 107}}},
    {NEBSourceControlRequestCommit, &make<GitCommitOperation>},
    {NEBSourceControlRequestIgnore, &make<GitIgnoreOperation>},
    {NEBSourceControlRequestRemove, &make<GitRemoveOperation>, {{&someFiles, 136}}},
    {NEBSourceControlRequestAddFiles, &make<GitAddOperation>, {{&someFiles, 140}}},
    {NEBSourceControlRequestRevert, &make<GitCheckoutOperation>, {{&someFiles, 146}}},
    {NEBSourceControlRequestMakeDirectory, &make<GitMakeDirectoryOperation>, {{&destination, 212}}},
    {NEBSourceControlRequestMerge, &make<GitMergeOperation>, {{&destination, 132}}},
    {NEBSourceControlRequestCopy,
     &make<GitCopyOperation>,
     {{&someFiles, 206}, {&destination, 207}}},
    {NEBSourceControlRequestMove,
     &make<GitMoveOperation>,
     {{&someFiles, 217}, {&destination, 218}}},
    {NEBSourceControlRequestUpdate, &make<GitUpdateOperation>},
    {NEBSourceControlRequestCheckout, &make<GitCheckoutOperation>, {{&destination, 154}}},
    {NEBSourceControlRequestStatus, &make<GitStatusOperation>},
    {NEBSourceControlRequestList, &make<GitListOperation>, {{&someFiles, 71}}},
    {NEBSourceControlRequestLog, &make<GitLogOperation>},
    {NEBSourceControlRequestInfo, &make<GitInfoOperation>},
    {NEBSourceControlRequestExportFiles,
     &make<GitExportFileOperation>,
     {{&someFiles, 66}, {&startingRevision, 67}}},
    {NEBSourceControlRequestExport, &make<GitExportFileOperation>, {{&startingRevision, 166}}},
    {NEBSourceControlRequestExportTree,
     &make<GitExportTreeOperation>,
     {{&destination, 78}, {&startingRevision, 79}}},
    {NEBSourceControlRequestListRemotes, &make<GitListRemotesOperation>},
    {NEBSourceControlRequestListBranches, &makeListBranches},
    {NEBSourceControlRequestCurrentBranch, &make<GitCurrentBranchOperation>},
    {NEBSourceControlRequestCreateRepository,
     &make<GitCreateRepositoryOperation>,
     {{&sourceTreeOrRepositoryPath, 57}}},
    {NEBSourceControlRequestBlame, &make<GitBlameOperation>, {{&oneFile, 101}}},
    {NEBSourceControlRequestClone,
     &make<GitCloneOperation>,
     {{&destination, 61}, {&sourceTreeLocation, 62}}},
    {NEBSourceControlRequestDiff, &make<GitDiffOperation>},
    {NEBSourceControlRequestListRemoteBranches, &make<GitListRemoteBranchesOperation>},
    {NEBSourceControlRequestListRemoteBranchesSecondForm, &make<GitListRemoteBranchesOperation>},
    {NEBSourceControlRequestPush, &make<GitPushOperation>, {{&remote, 83}}},
    {NEBSourceControlRequestAddRemote,
     &make<GitAddRemoteOperation>,
     {{&destination, 188}, {&oneFile, 189}}},
    {NEBSourceControlRequestRemoveRemote,
     &make<GitRemoveRemoteOperation>,
     {{&nonEmptyDestination, 194}}},
    {NEBSourceControlRequestTrackRemoteBranch,
     &make<GitTrackRemoteBranchOperation>,
     {{&nonEmptyDestination, 199}, {&nonEmptyRemoteName, 200}, {&nonEmptyBranch, 201}}},
    {NEBSourceControlRequestFetch,
     &makeFetch,
     {{&remote, 87}, {&nonEmptyRemoteNameUnlessBridge, 91}}},
    {NEBSourceControlRequestTrackingBranchName,
     &make<GitTrackingBranchNameOperation>,
     {{&branch, 183}}},
    {NEBSourceControlRequestMergeBase, &make<GitMergeBaseOperation>},
    {NEBSourceControlRequestWorkingCopyState, &make<GitWorkingCopyStateOperation>},
    {NEBSourceControlRequestHistory, &make<GitHistoryOperation>},
    {NEBSourceControlRequestContent, &make<GitContentOperation>, {{&oneFile, 1002}}},
    {NEBSourceControlRequestAnnotation, &make<GitAnnotationOperation>, {{&oneFile, 1003}}},
    {NEBSourceControlRequestChanges, &make<GitChangesOperation>},
    {NEBSourceControlRequestReferences, &make<GitReferencesOperation>},
    {NEBSourceControlRequestUnfinishedOperation, &make<GitUnfinishedOperation>},
    {NEBSourceControlRequestSubmodules,
     &makeByEffect<GitSubmodulesOperation, GitChangeSubmodulesOperation>},
    {NEBSourceControlRequestWorktrees,
     &makeByEffect<GitWorktreesOperation, GitChangeWorktreesOperation>},
    {NEBSourceControlRequestSettings,
     &makeByEffect<GitSettingsOperation, GitChangeSettingsOperation>},
    {NEBSourceControlRequestTree, &make<GitTreeOperation>},
    {NEBSourceControlRequestStage, &make<GitStageOperation>},
    {NEBSourceControlRequestUnstage, &make<GitUnstageOperation>},
    {NEBSourceControlRequestDiscard, &make<GitDiscardOperation>},
    {NEBSourceControlRequestStash, &make<GitStashOperation>},
    {NEBSourceControlRequestCreateCommit, &make<GitCreateCommitOperation>},
    {NEBSourceControlRequestPublish, &make<GitPublishOperation>},
    {NEBSourceControlRequestIntegrate, &make<GitIntegrateOperation>},
    {NEBSourceControlRequestPick, &make<GitPickOperation>, {{&startingRevision, 1014}}},
    {NEBSourceControlRequestTag, &make<GitTagOperation>, {{&destination, 1015}}},
    {NEBSourceControlRequestFinish, &make<GitFinishOperation>},
    {NEBSourceControlRequestChangeBranch, &make<GitChangeBranchOperation>},
};

const DispatchRow* rowOfType(std::int32_t type) {
    const auto* row = std::ranges::find(dispatchRows, type, &DispatchRow::type);
    return row != std::end(dispatchRows) ? row : nullptr;
}

}  // namespace

void gitReportBrokenPreconditions(const NEBSourceControlRequest& request) {
    const DispatchRow* row = rowOfType(request.type);
    if (row == nullptr) {
        return;
    }
    for (const Precondition& precondition : row->preconditions) {
        if (precondition.condition != nullptr) {
            check(request, precondition);
        }
    }
}

std::shared_ptr<NEBSourceControlOperation> gitMakeOperation(const Request& request) {
    const DispatchRow* row = rowOfType(request->type);
    return row != nullptr ? row->maker(request) : nullptr;
}

}  // namespace neb
