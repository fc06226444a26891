// NEBSourceControlRequestType.h - the types of request, and what a host must know of each.
//
// The table has what hosts and plug-ins share: the number and name of each type, its effect, and
// the values that it requires. A plug-in's dispatch table has what only the plug-in needs: the
// class of the operation, and the text and line number of each report about a missing value. To add
// a type, add its number and row here, its row to the dispatch, and the class.
//
//     const auto& type = NEBSourceControlDescriptionOfRequestType(request.type);
//     if (type.effect == NEBSourceControlRequestEffect::reads) {
//         startAtOnce(request);
//     }
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "Platform/Export.h"

namespace neb {

/// The numbers that a request's `type` may hold. 12, 16 and 23 stand for types that no plug-in of
/// this contract supports.
enum NEBSourceControlRequestType : std::int32_t {
    NEBSourceControlRequestAdd = 0,
    NEBSourceControlRequestCreateBranch = 1,
    NEBSourceControlRequestDeleteBranch = 2,
    NEBSourceControlRequestCommit = 3,
    NEBSourceControlRequestIgnore = 4,
    NEBSourceControlRequestRemove = 5,
    NEBSourceControlRequestAddFiles = 6,
    NEBSourceControlRequestRevert = 7,
    NEBSourceControlRequestMakeDirectory = 8,
    NEBSourceControlRequestMerge = 9,
    NEBSourceControlRequestCopy = 10,
    NEBSourceControlRequestMove = 11,
    NEBSourceControlRequestUpdate = 13,
    NEBSourceControlRequestCheckout = 14,
    NEBSourceControlRequestStatus = 15,
    NEBSourceControlRequestList = 17,
    NEBSourceControlRequestLog = 18,
    NEBSourceControlRequestInfo = 19,
    NEBSourceControlRequestExportFiles = 20,
    NEBSourceControlRequestExport = 21,
    NEBSourceControlRequestExportTree = 22,
    NEBSourceControlRequestListRemotes = 24,
    NEBSourceControlRequestListBranches = 25,
    NEBSourceControlRequestCurrentBranch = 26,
    NEBSourceControlRequestCreateRepository = 27,
    NEBSourceControlRequestBlame = 28,
    NEBSourceControlRequestClone = 29,
    NEBSourceControlRequestDiff = 30,
    NEBSourceControlRequestListRemoteBranches = 31,
    NEBSourceControlRequestListRemoteBranchesSecondForm = 32,
    NEBSourceControlRequestPush = 33,
    NEBSourceControlRequestAddRemote = 34,
    NEBSourceControlRequestRemoveRemote = 35,
    NEBSourceControlRequestTrackRemoteBranch = 36,
    NEBSourceControlRequestFetch = 37,
    NEBSourceControlRequestTrackingBranchName = 38,
    NEBSourceControlRequestMergeBase = 39,
};

/// What an operation does. A host schedules requests by it.
enum class NEBSourceControlRequestEffect : std::uint8_t {
    /// Leaves the repository as it is; may run at any time.
    reads,
    /// Changes the working copy, the index, references or settings; runs alone in its repository.
    changes,
    /// Reads the repository and writes to `destination`; runs alone at that path.
    exports,
};

/// The values of a request that git could take for an option or for another command, because they
/// are arguments without a "--" in front. One bit each; see
/// NEBSourceControlFirstArgumentInjection().
enum NEBSourceControlExposedValue : std::uint32_t {
    NEBSourceControlExposedLocation = 1U << 0,
    NEBSourceControlExposedDestination = 1U << 1,
    NEBSourceControlExposedStartingRevision = 1U << 2,
    NEBSourceControlExposedEndingRevision = 1U << 3,
    NEBSourceControlExposedBranch = 1U << 4,
    NEBSourceControlExposedRemoteName = 1U << 5,
    NEBSourceControlExposedSourceLocation = 1U << 6,
    NEBSourceControlExposedFiles = 1U << 7,
    /// The last component of each file's path is an argument.
    NEBSourceControlExposedFileNames = 1U << 8,
    /// A shell splits the files at blanks; each part is an argument.
    NEBSourceControlExposedFileParts = 1U << 9,
    /// A shell splits the branch at blanks; the first part is prefixed with "HEAD^{".
    NEBSourceControlExposedBranchParts = 1U << 10,
    /// The limit of a log is prefixed with "-".
    NEBSourceControlExposedLogLimit = 1U << 11,
    /// Branch and destination are the two sides of a refspec, "branch:destination".
    NEBSourceControlExposedRefspec = 1U << 12,

    NEBSourceControlExposedNothing = 0,
    NEBSourceControlExposedEverything = (1U << 13) - 1,
};

/// A value without which an operation reports a broken precondition.
enum class NEBSourceControlRequirement : std::uint8_t {
    destination,
    atLeastOneFile,
    exactlyOneFile,
    startingRevision,
    endingRevision,
    sourceTreeLocation,
    sourceTreeOrRepositoryPath,
    remote,
    remoteName,
    branch,
};

/// A row of the table of request types. Immutable; lives as long as the library.
struct NEBSourceControlRequestTypeDescription {
    /// See NEBSourceControlRequestType.
    std::int32_t type;
    /// The plain name, "list remote branches"; "unsupported" for a type without an operation; empty
    /// for a type that is not in the table.
    std::string_view name;
    NEBSourceControlRequestEffect effect;
    /// Whether the operation contacts a server that may ask for credentials.
    bool mayAuthenticate;
    /// Whether the operation works in the folder `destination`, which the host creates before it
    /// runs. Otherwise it works in the source tree.
    bool worksInDestination;
    /// A combination of NEBSourceControlExposedValue.
    std::uint32_t exposedValues;
    /// In the order in which an operation reports them.
    std::span<const NEBSourceControlRequirement> requirements;
};

/// Returns all rows, by ascending number. Thread-safe.
[[nodiscard]] NEB_EXPORT std::span<const NEBSourceControlRequestTypeDescription>
NEBSourceControlAllRequestTypes();

/// Returns the row of a type. For a number that is not in the table, the row assumes the worst: the
/// type changes the repository and all its values are exposed. It does not authenticate, as no
/// operation exists that could. Thread-safe.
[[nodiscard]] NEB_EXPORT const NEBSourceControlRequestTypeDescription&
NEBSourceControlDescriptionOfRequestType(std::int32_t type);

/// Returns the plain name of a type, "unsupported" for 12, 16 and 23; absent for a number that is
/// not in the table. Thread-safe.
[[nodiscard]] NEB_EXPORT std::optional<std::string_view> NEBSourceControlRequestTypeName(
    std::int32_t type);

/// Returns what people call a requirement: "at least one file". Thread-safe.
[[nodiscard]] NEB_EXPORT std::string_view NEBSourceControlRequirementName(
    NEBSourceControlRequirement requirement);

}  // namespace neb
