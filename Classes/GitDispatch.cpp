#include "GitDispatch.h"

#include <algorithm>
#include <iterator>

#include "GitOperations/GitIgnoreOperation.h"
#include "GitOperations/GitStatus.h"
#include "NEBFoundation/NEBSourceControlAssertions.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"

namespace neb {

namespace {

// ---- preconditions ----------------------------------------------------------------------------

/// What a precondition asks of a request. Each stands for the condition text beside it.
enum class Need {
    destination,         // "request.destination"
    files,               // "[request.files count] > 0"
    oneFile,             // "[request.files count] == 1"
    startingRevision,    // "request.startingRevision"
    sourceTreeLocation,  // "request.sourceTree.location"
    sourceTreeOrRepositoryPath,
    branch,  // the branch option, whatever it is
    remote,  // "(request.remote)" is not nil
    nonEmptyDestination,
    nonEmptyRemoteName,  // the remote-name option
    nonEmptyBranch,      // the branch option
    nonEmptyRemoteNameUnlessBridge,
};

struct Precondition {
    std::int32_t type;
    Need need;
    int line;
};

/// Sorted by type; the preconditions of one type in the order in which they are reported.
constexpr Precondition preconditions[] = {
    {NEBSourceControlRequestCreateBranch, Need::destination, 107},
    {NEBSourceControlRequestDeleteBranch, Need::destination, 107},
    {NEBSourceControlRequestRemove, Need::files, 136},
    {NEBSourceControlRequestAddFiles, Need::files, 140},
    {NEBSourceControlRequestRevert, Need::files, 146},
    {NEBSourceControlRequestMakeDirectory, Need::destination, 212},
    {NEBSourceControlRequestMerge, Need::destination, 132},
    {NEBSourceControlRequestCopy, Need::files, 206},
    {NEBSourceControlRequestCopy, Need::destination, 207},
    {NEBSourceControlRequestMove, Need::files, 217},
    {NEBSourceControlRequestMove, Need::destination, 218},
    {NEBSourceControlRequestCheckout, Need::destination, 154},
    {NEBSourceControlRequestList, Need::files, 71},
    {NEBSourceControlRequestExportFiles, Need::files, 66},
    {NEBSourceControlRequestExportFiles, Need::startingRevision, 67},
    {NEBSourceControlRequestExport, Need::startingRevision, 166},
    {NEBSourceControlRequestExportTree, Need::destination, 78},
    {NEBSourceControlRequestExportTree, Need::startingRevision, 79},
    {NEBSourceControlRequestCreateRepository, Need::sourceTreeOrRepositoryPath, 57},
    {NEBSourceControlRequestBlame, Need::oneFile, 101},
    {NEBSourceControlRequestClone, Need::destination, 61},
    {NEBSourceControlRequestClone, Need::sourceTreeLocation, 62},
    {NEBSourceControlRequestPush, Need::remote, 83},
    {NEBSourceControlRequestAddRemote, Need::destination, 188},
    {NEBSourceControlRequestAddRemote, Need::oneFile, 189},
    {NEBSourceControlRequestRemoveRemote, Need::nonEmptyDestination, 194},
    {NEBSourceControlRequestTrackRemoteBranch, Need::nonEmptyDestination, 199},
    {NEBSourceControlRequestTrackRemoteBranch, Need::nonEmptyRemoteName, 200},
    {NEBSourceControlRequestTrackRemoteBranch, Need::nonEmptyBranch, 201},
    {NEBSourceControlRequestFetch, Need::remote, 87},
    {NEBSourceControlRequestFetch, Need::nonEmptyRemoteNameUnlessBridge, 91},
    {NEBSourceControlRequestTrackingBranchName, Need::branch, 183},
};

constexpr std::string_view branchExpression =
    "[request.options objectForKey:NEBSourceControlRequestOptionBranch]";
constexpr std::string_view remoteNameExpression =
    "[request.options objectForKey:NEBSourceControlRequestOptionRemoteName]";

bool representsBridge(const NEBSourceControlRequest& request) {
    return request.remote && request.remote->representsGitSVNBridge;
}

void check(const NEBSourceControlRequest& request, const Precondition& precondition) {
    const NEBSourceControlAssertionSite site{.function = "-[GitController operationForRequest:]",
                                             .file = "Classes/GitController",
                                             .line = precondition.line};
    const auto& tree = request.sourceTree;
    const NEBValue& branch = request.option(NEBSourceControlRequestOptionBranch);
    const NEBValue& remoteName = request.option(NEBSourceControlRequestOptionRemoteName);
    switch (precondition.need) {
        case Need::destination:
            NEBSourceControlAssert(site, request.destination.isPresent(), "request.destination");
            break;
        case Need::files:
            NEBSourceControlAssert(site, request.fileCount() > 0, "[request.files count] > 0");
            break;
        case Need::oneFile:
            NEBSourceControlAssert(site, request.fileCount() == 1, "[request.files count] == 1");
            break;
        case Need::startingRevision:
            NEBSourceControlAssert(site, request.startingRevision.isPresent(),
                                   "request.startingRevision");
            break;
        case Need::sourceTreeLocation:
            NEBSourceControlAssert(site, tree && tree->location, "request.sourceTree.location");
            break;
        case Need::sourceTreeOrRepositoryPath:
            NEBSourceControlAssert(
                site,
                tree || request.option(NEBSourceControlRequestOptionRepositoryPath).isPresent(),
                "request.sourceTree || [request.options "
                "objectForKey:NEBSourceControlRequestOptionRepositoryPath]");
            break;
        case Need::branch:
            NEBSourceControlAssert(site, branch.isPresent(), branchExpression);
            break;
        case Need::remote:
            NEBSourceControlAssertNotNil(site, request.remote != nullptr, "(request.remote)");
            break;
        case Need::nonEmptyDestination:
            NEBSourceControlAssertNonEmptyString(site, request.destination, "request.destination");
            break;
        case Need::nonEmptyRemoteNameUnlessBridge:
            if (representsBridge(request)) {
                break;
            }
            [[fallthrough]];
        case Need::nonEmptyRemoteName:
            NEBSourceControlAssertNonEmptyString(site, remoteName, remoteNameExpression);
            break;
        case Need::nonEmptyBranch:
            NEBSourceControlAssertNonEmptyString(site, branch, branchExpression);
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

struct DispatchRow {
    std::int32_t type;
    Maker maker;
};

/// Types that are not here have no operation.
constexpr DispatchRow dispatchRows[] = {
    {NEBSourceControlRequestIgnore, &make<GitIgnoreOperation>},
    {NEBSourceControlRequestStatus, &make<GitStatusOperation>},
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
