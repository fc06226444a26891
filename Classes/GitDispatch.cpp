#include "GitDispatch.h"

#include <algorithm>
#include <iterator>

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

/// The three shapes of a report.
enum class Shape { plain, notNil, nonEmptyString };

/// What a precondition asks of a request: the value that must be there, and how it reads in a
/// report. In the plain shape the text is the condition, in the others the expression of the value.
struct Condition {
    Shape shape;
    std::string_view text;
    NEBValue (*value)(const NEBSourceControlRequest&);
};

/// Present when the condition holds.
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

/// Over the Subversion bridge the remote needs no name: a fetch is not asked for one.
constexpr Condition nonEmptyRemoteNameUnlessBridge{
    Shape::nonEmptyString, remoteNameExpression, [](const NEBSourceControlRequest& request) {
        const bool isBridge = request.remote && request.remote->representsGitSVNBridge;
        return isBridge ? NEBValue("the bridge") : nonEmptyRemoteName.value(request);
    }};

struct Precondition {
    std::int32_t type;
    const Condition& condition;
    int line;
};

/// Sorted by type; the preconditions of one type in the order in which they are reported.
constexpr Precondition preconditions[] = {
    {NEBSourceControlRequestCreateBranch, destination, 107},
    {NEBSourceControlRequestDeleteBranch, destination, 107},
    {NEBSourceControlRequestRemove, someFiles, 136},
    {NEBSourceControlRequestAddFiles, someFiles, 140},
    {NEBSourceControlRequestRevert, someFiles, 146},
    {NEBSourceControlRequestMakeDirectory, destination, 212},
    {NEBSourceControlRequestMerge, destination, 132},
    {NEBSourceControlRequestCopy, someFiles, 206},
    {NEBSourceControlRequestCopy, destination, 207},
    {NEBSourceControlRequestMove, someFiles, 217},
    {NEBSourceControlRequestMove, destination, 218},
    {NEBSourceControlRequestCheckout, destination, 154},
    {NEBSourceControlRequestList, someFiles, 71},
    {NEBSourceControlRequestExportFiles, someFiles, 66},
    {NEBSourceControlRequestExportFiles, startingRevision, 67},
    {NEBSourceControlRequestExport, startingRevision, 166},
    {NEBSourceControlRequestExportTree, destination, 78},
    {NEBSourceControlRequestExportTree, startingRevision, 79},
    {NEBSourceControlRequestCreateRepository, sourceTreeOrRepositoryPath, 57},
    {NEBSourceControlRequestBlame, oneFile, 101},
    {NEBSourceControlRequestClone, destination, 61},
    {NEBSourceControlRequestClone, sourceTreeLocation, 62},
    {NEBSourceControlRequestPush, remote, 83},
    {NEBSourceControlRequestAddRemote, destination, 188},
    {NEBSourceControlRequestAddRemote, oneFile, 189},
    {NEBSourceControlRequestRemoveRemote, nonEmptyDestination, 194},
    {NEBSourceControlRequestTrackRemoteBranch, nonEmptyDestination, 199},
    {NEBSourceControlRequestTrackRemoteBranch, nonEmptyRemoteName, 200},
    {NEBSourceControlRequestTrackRemoteBranch, nonEmptyBranch, 201},
    {NEBSourceControlRequestFetch, remote, 87},
    {NEBSourceControlRequestFetch, nonEmptyRemoteNameUnlessBridge, 91},
    {NEBSourceControlRequestTrackingBranchName, branch, 183},
};

void check(const NEBSourceControlRequest& request, const Precondition& precondition) {
    const NEBSourceControlAssertionSite site{.function = "-[GitController operationForRequest:]",
                                             .file = "Classes/GitController",
                                             .line = precondition.line};
    const auto& [shape, text, valueOf] = precondition.condition;
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

/// A repository on another machine is asked there.
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

struct DispatchRow {
    std::int32_t type;
    Maker maker;
};

/// Types that are not here have no operation.
constexpr DispatchRow dispatchRows[] = {
    {NEBSourceControlRequestAdd, &make<GitAddOperation>},
    {NEBSourceControlRequestCreateBranch, &make<GitBranchOperation>},
    {NEBSourceControlRequestDeleteBranch, &make<GitBranchOperation>},
    {NEBSourceControlRequestCommit, &make<GitCommitOperation>},
    {NEBSourceControlRequestIgnore, &make<GitIgnoreOperation>},
    {NEBSourceControlRequestRemove, &make<GitRemoveOperation>},
    {NEBSourceControlRequestAddFiles, &make<GitAddOperation>},
    {NEBSourceControlRequestRevert, &make<GitCheckoutOperation>},
    {NEBSourceControlRequestMakeDirectory, &make<GitMakeDirectoryOperation>},
    {NEBSourceControlRequestMerge, &make<GitMergeOperation>},
    {NEBSourceControlRequestCopy, &make<GitCopyOperation>},
    {NEBSourceControlRequestMove, &make<GitMoveOperation>},
    {NEBSourceControlRequestUpdate, &make<GitUpdateOperation>},
    {NEBSourceControlRequestCheckout, &make<GitCheckoutOperation>},
    {NEBSourceControlRequestStatus, &make<GitStatusOperation>},
    {NEBSourceControlRequestList, &make<GitListOperation>},
    {NEBSourceControlRequestLog, &make<GitLogOperation>},
    {NEBSourceControlRequestInfo, &make<GitInfoOperation>},
    {NEBSourceControlRequestExportFiles, &make<GitExportFileOperation>},
    {NEBSourceControlRequestExport, &make<GitExportFileOperation>},
    {NEBSourceControlRequestExportTree, &make<GitExportTreeOperation>},
    {NEBSourceControlRequestListRemotes, &make<GitListRemotesOperation>},
    {NEBSourceControlRequestListBranches, &makeListBranches},
    {NEBSourceControlRequestCurrentBranch, &make<GitCurrentBranchOperation>},
    {NEBSourceControlRequestCreateRepository, &make<GitCreateRepositoryOperation>},
    {NEBSourceControlRequestBlame, &make<GitBlameOperation>},
    {NEBSourceControlRequestClone, &make<GitCloneOperation>},
    {NEBSourceControlRequestDiff, &make<GitDiffOperation>},
    {NEBSourceControlRequestListRemoteBranches, &make<GitListRemoteBranchesOperation>},
    {NEBSourceControlRequestListRemoteBranchesSecondForm, &make<GitListRemoteBranchesOperation>},
    {NEBSourceControlRequestPush, &make<GitPushOperation>},
    {NEBSourceControlRequestAddRemote, &make<GitAddRemoteOperation>},
    {NEBSourceControlRequestRemoveRemote, &make<GitRemoveRemoteOperation>},
    {NEBSourceControlRequestTrackRemoteBranch, &make<GitTrackRemoteBranchOperation>},
    {NEBSourceControlRequestFetch, &makeFetch},
    {NEBSourceControlRequestTrackingBranchName, &make<GitTrackingBranchNameOperation>},
    {NEBSourceControlRequestMergeBase, &make<GitMergeBaseOperation>},
};

}  // namespace

void gitReportBrokenPreconditions(const NEBSourceControlRequest& request) {
    for (const Precondition& precondition : preconditions) {
        if (precondition.type == request.type) {
            check(request, precondition);
        }
    }
}

std::shared_ptr<NEBSourceControlOperation> gitMakeOperation(const Request& request) {
    const auto* row = std::find_if(
        std::begin(dispatchRows), std::end(dispatchRows),
        [&request](const DispatchRow& candidate) { return candidate.type == request->type; });
    return row != std::end(dispatchRows) ? row->maker(request) : nullptr;
}

}  // namespace neb
