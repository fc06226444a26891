// NEBSourceControlRequestType.h - the kinds of request and their plain names.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "Platform/Export.h"

namespace neb {

/// The numbers that a request's `type` may hold. 12, 16 and 23 stand for kinds that no plug-in of
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

inline constexpr std::int32_t NEBSourceControlFirstRequestType = 0;
inline constexpr std::int32_t NEBSourceControlLastRequestType = 39;

/// The plain name ("list remote branches"), "unsupported" for 12, 16 and 23, nothing for a number
/// outside 0 to 39.
[[nodiscard]] NEB_EXPORT std::optional<std::string_view> NEBSourceControlRequestTypeName(
    std::int32_t type);

}  // namespace neb
