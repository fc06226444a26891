#include "NEBFoundation/NEBSourceControlRequestType.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb {

namespace {

using Requirement = NEBSourceControlRequirement;
using enum NEBSourceControlRequestEffect;
using enum NEBSourceControlRequirement;

template <Requirement... requirements>
constexpr std::array<Requirement, sizeof...(requirements)> needs{requirements...};

/// Short names for a column of the table.
namespace exposed {
constexpr std::uint32_t nothing = NEBSourceControlExposedNothing;
constexpr std::uint32_t location = NEBSourceControlExposedLocation;
constexpr std::uint32_t destination = NEBSourceControlExposedDestination;
constexpr std::uint32_t start = NEBSourceControlExposedStartingRevision;
constexpr std::uint32_t end = NEBSourceControlExposedEndingRevision;
constexpr std::uint32_t branch = NEBSourceControlExposedBranch;
constexpr std::uint32_t remoteName = NEBSourceControlExposedRemoteName;
constexpr std::uint32_t sourceLocation = NEBSourceControlExposedSourceLocation;
constexpr std::uint32_t files = NEBSourceControlExposedFiles;
constexpr std::uint32_t fileNames = NEBSourceControlExposedFileNames;
constexpr std::uint32_t fileParts = NEBSourceControlExposedFileParts;
constexpr std::uint32_t branchParts = NEBSourceControlExposedBranchParts;
constexpr std::uint32_t logLimit = NEBSourceControlExposedLogLimit;
constexpr std::uint32_t refspec = NEBSourceControlExposedRefspec;
}  // namespace exposed

constexpr bool authenticates = true;
constexpr bool offline = false;
constexpr bool inDestination = true;
constexpr bool inTree = false;
constexpr std::string_view unsupported = "unsupported";

constexpr NEBSourceControlRequestTypeDescription rows[] = {
    {NEBSourceControlRequestAdd, "add", changes, offline, inTree, exposed::nothing, {}},
    {NEBSourceControlRequestCreateBranch, "create branch", changes, offline, inTree,
     exposed::destination | exposed::sourceLocation, needs<destination>},
    {NEBSourceControlRequestDeleteBranch, "delete branch", changes, offline, inTree,
     exposed::destination, needs<destination>},
    {NEBSourceControlRequestCommit, "commit", changes, offline, inTree, exposed::nothing, {}},
    {NEBSourceControlRequestIgnore, "ignore", changes, offline, inTree, exposed::nothing, {}},
    {NEBSourceControlRequestRemove, "remove", changes, offline, inTree, exposed::nothing,
     needs<atLeastOneFile>},
    {NEBSourceControlRequestAddFiles, "add files", changes, offline, inTree, exposed::nothing,
     needs<atLeastOneFile>},
    {NEBSourceControlRequestRevert, "revert", changes, offline, inTree, exposed::nothing,
     needs<atLeastOneFile>},
    {NEBSourceControlRequestMakeDirectory, "make directory", changes, offline, inTree,
     exposed::nothing, needs<destination>},
    {NEBSourceControlRequestMerge, "merge", changes, offline, inTree,
     exposed::destination | exposed::end, needs<destination>},
    {NEBSourceControlRequestCopy, "copy", changes, offline, inTree, exposed::nothing,
     needs<atLeastOneFile, destination>},
    {NEBSourceControlRequestMove, "move", changes, offline, inTree,
     exposed::destination | exposed::files, needs<atLeastOneFile, destination>},
    {12, unsupported, changes, offline, inTree, exposed::nothing, {}},
    {NEBSourceControlRequestUpdate,
     "update",
     changes,
     authenticates,
     inTree,
     exposed::destination | exposed::end | exposed::remoteName | exposed::branch,
     {}},
    {NEBSourceControlRequestCheckout, "checkout", changes, offline, inTree, exposed::destination,
     needs<destination>},
    {NEBSourceControlRequestStatus, "status", reads, offline, inTree, exposed::nothing, {}},
    {16, unsupported, changes, offline, inTree, exposed::nothing, {}},
    {NEBSourceControlRequestList, "list", reads, offline, inTree,
     exposed::fileParts | exposed::branchParts, needs<atLeastOneFile>},
    {NEBSourceControlRequestLog,
     "log",
     reads,
     offline,
     inTree,
     exposed::start | exposed::end | exposed::branch | exposed::logLimit,
     {}},
    {NEBSourceControlRequestInfo, "info", reads, offline, inTree, exposed::nothing, {}},
    {NEBSourceControlRequestExportFiles, "export files", exports, offline, inTree,
     exposed::start | exposed::files | exposed::fileNames, needs<atLeastOneFile, startingRevision>},
    {NEBSourceControlRequestExport, "export", exports, offline, inTree,
     exposed::start | exposed::files | exposed::fileNames, needs<startingRevision, atLeastOneFile>},
    {NEBSourceControlRequestExportTree, "export tree", exports, offline, inTree, exposed::nothing,
     needs<destination, startingRevision>},
    {23, unsupported, changes, offline, inTree, exposed::nothing, {}},
    {NEBSourceControlRequestListRemotes,
     "list remotes",
     reads,
     offline,
     inTree,
     exposed::nothing,
     {}},
    {NEBSourceControlRequestListBranches,
     "list branches",
     reads,
     authenticates,
     inTree,
     exposed::files,
     {}},
    {NEBSourceControlRequestCurrentBranch,
     "current branch",
     reads,
     offline,
     inTree,
     exposed::nothing,
     {}},
    {NEBSourceControlRequestCreateRepository, "create repository", changes, offline, inTree,
     exposed::nothing, needs<sourceTreeOrRepositoryPath>},
    {NEBSourceControlRequestBlame, "blame", reads, offline, inTree, exposed::start | exposed::end,
     needs<exactlyOneFile>},
    {NEBSourceControlRequestClone, "clone", changes, authenticates, inDestination,
     exposed::location | exposed::destination | exposed::branch,
     needs<destination, sourceTreeLocation>},
    {NEBSourceControlRequestDiff,
     "diff",
     reads,
     offline,
     inTree,
     exposed::start | exposed::end | exposed::destination,
     {}},
    {NEBSourceControlRequestListRemoteBranches,
     "list remote branches",
     reads,
     offline,
     inTree,
     exposed::files,
     {}},
    {NEBSourceControlRequestListRemoteBranchesSecondForm,
     "list remote branches (second form)",
     reads,
     offline,
     inTree,
     exposed::files,
     {}},
    {NEBSourceControlRequestPush, "push", changes, authenticates, inTree,
     exposed::remoteName | exposed::branch | exposed::refspec,
     needs<remote, destination, remoteName, branch>},
    {NEBSourceControlRequestAddRemote, "add remote", changes, offline, inTree,
     exposed::destination | exposed::files, needs<destination, exactlyOneFile>},
    {NEBSourceControlRequestRemoveRemote, "remove remote", changes, offline, inTree,
     exposed::destination, needs<destination>},
    {NEBSourceControlRequestTrackRemoteBranch, "track remote branch", changes, offline, inTree,
     exposed::destination | exposed::remoteName | exposed::branch,
     needs<destination, remoteName, branch>},
    {NEBSourceControlRequestFetch, "fetch", changes, authenticates, inTree, exposed::remoteName,
     needs<remote, remoteName>},
    {NEBSourceControlRequestTrackingBranchName, "tracking branch name", reads, offline, inTree,
     exposed::nothing, needs<branch>},
    {NEBSourceControlRequestMergeBase, "merge base", reads, offline, inTree,
     exposed::start | exposed::end, needs<startingRevision, endingRevision>},

    {NEBSourceControlRequestWorkingCopyState,
     "working copy state",
     reads,
     offline,
     inTree,
     exposed::nothing,
     {}},
    {NEBSourceControlRequestHistory,
     "history",
     reads,
     offline,
     inTree,
     exposed::start | exposed::logLimit,
     {}},
    {NEBSourceControlRequestContent, "content", reads, offline, inTree, exposed::start,
     needs<exactlyOneFile>},
    {NEBSourceControlRequestAnnotation, "annotation", reads, offline, inTree, exposed::start,
     needs<exactlyOneFile>},
    {NEBSourceControlRequestChanges,
     "changes",
     reads,
     offline,
     inTree,
     exposed::start | exposed::end,
     {}},
    {NEBSourceControlRequestStage, "stage", changes, offline, inTree, exposed::nothing, {}},
    {NEBSourceControlRequestUnstage, "unstage", changes, offline, inTree, exposed::nothing, {}},
    {NEBSourceControlRequestDiscard, "discard", changes, offline, inTree, exposed::nothing, {}},
    {NEBSourceControlRequestReferences, "references", reads, offline, inTree, exposed::nothing, {}},
    {NEBSourceControlRequestStash, "stash", changes, offline, inTree, exposed::nothing, {}},
    {NEBSourceControlRequestUnfinishedOperation,
     "unfinished operation",
     reads,
     offline,
     inTree,
     exposed::nothing,
     {}},
    {NEBSourceControlRequestCreateCommit,
     "create commit",
     changes,
     offline,
     inTree,
     exposed::nothing,
     {}},
    {NEBSourceControlRequestPublish,
     "publish",
     changes,
     authenticates,
     inTree,
     exposed::remoteName | exposed::branch | exposed::refspec,
     {}},
    {NEBSourceControlRequestIntegrate,
     "integrate",
     changes,
     authenticates,
     inTree,
     exposed::destination | exposed::remoteName | exposed::branch,
     {}},
    {NEBSourceControlRequestPick, "pick", changes, offline, inTree, exposed::nothing,
     needs<startingRevision>},
    {NEBSourceControlRequestTag, "tag", changes, offline, inTree, exposed::nothing,
     needs<destination>},
    {NEBSourceControlRequestSubmodules,
     "submodules",
     changes,
     authenticates,
     inTree,
     exposed::nothing,
     {}},
    {NEBSourceControlRequestWorktrees, "worktrees", changes, offline, inTree, exposed::nothing, {}},
    {NEBSourceControlRequestSettings,
     "identity and settings",
     changes,
     offline,
     inTree,
     exposed::nothing,
     {}},
    {NEBSourceControlRequestTree, "tree", reads, offline, inTree, exposed::start, {}},
    {NEBSourceControlRequestFinish, "finish", changes, offline, inTree, exposed::nothing, {}},
    {NEBSourceControlRequestChangeBranch,
     "change branch",
     changes,
     offline,
     inTree,
     exposed::nothing,
     {}},
};

/// An action that does less than the row of its type says: it contacts no server.
struct LesserAction {
    std::int32_t type;
    std::string_view action;
    NEBSourceControlRequestEffect effect;
};

/// What a request of these types does without the option.
constexpr std::string_view usualAction = "list";

constexpr LesserAction lesserActions[] = {
    {NEBSourceControlRequestStash, usualAction, reads},
    {NEBSourceControlRequestStash, "show", reads},
    {NEBSourceControlRequestSubmodules, usualAction, reads},
    {NEBSourceControlRequestSubmodules, "init", changes},
    {NEBSourceControlRequestWorktrees, usualAction, reads},
    {NEBSourceControlRequestSettings, usualAction, reads},
};

/// Null if the request does what the row of its type says.
const LesserAction* lesserActionOf(const NEBSourceControlRequest& request) {
    const NEBValue& option = request.option(NEBSourceControlRequestOptionAction);
    const std::string action = option.isPresent() ? option.description() : std::string(usualAction);
    const auto* row = std::ranges::find_if(lesserActions, [&](const LesserAction& other) {
        return other.type == request.type && other.action == action;
    });
    return row != std::end(lesserActions) ? row : nullptr;
}

constexpr auto typeOf = [](const NEBSourceControlRequestTypeDescription& row) { return row.type; };
static_assert(std::ranges::adjacent_find(rows, std::ranges::greater_equal{}, typeOf) ==
              std::ranges::end(rows));

constexpr NEBSourceControlRequestTypeDescription unlisted{
    -1, "", changes, offline, inTree, NEBSourceControlExposedEverything, {}};

}  // namespace

std::span<const NEBSourceControlRequestTypeDescription> NEBSourceControlAllRequestTypes() {
    return rows;
}

const NEBSourceControlRequestTypeDescription& NEBSourceControlDescriptionOfRequestType(
    std::int32_t type) {
    const auto* row = std::ranges::lower_bound(rows, type, {}, typeOf);
    return row != std::ranges::end(rows) && row->type == type ? *row : unlisted;
}

NEBSourceControlRequestEffect NEBSourceControlEffectOfRequest(
    const NEBSourceControlRequest& request) {
    const LesserAction* action = lesserActionOf(request);
    return action != nullptr ? action->effect
                             : NEBSourceControlDescriptionOfRequestType(request.type).effect;
}

bool NEBSourceControlRequestMayAuthenticate(const NEBSourceControlRequest& request) {
    return lesserActionOf(request) == nullptr &&
           NEBSourceControlDescriptionOfRequestType(request.type).mayAuthenticate;
}

std::optional<std::string_view> NEBSourceControlRequestTypeName(std::int32_t type) {
    const std::string_view name = NEBSourceControlDescriptionOfRequestType(type).name;
    return name.empty() ? std::nullopt : std::optional(name);
}

std::string_view NEBSourceControlRequirementName(NEBSourceControlRequirement requirement) {
    switch (requirement) {
        case Requirement::destination:
            return "destination";
        case Requirement::atLeastOneFile:
            return "at least one file";
        case Requirement::exactlyOneFile:
            return "exactly one file";
        case Requirement::startingRevision:
            return "starting revision";
        case Requirement::endingRevision:
            return "ending revision";
        case Requirement::sourceTreeLocation:
            return "source tree location";
        case Requirement::sourceTreeOrRepositoryPath:
            return "source tree or repository path option";
        case Requirement::remote:
            return "remote";
        case Requirement::remoteName:
            return "remote name option";
        case Requirement::branch:
            return "branch option";
    }
    return "";
}

}  // namespace neb
