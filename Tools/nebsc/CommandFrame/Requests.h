// Requests.h - the requests that commands start from.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "CommandFrame/WorkingCopyLocation.h"
#include "NEBFoundation/NEBSourceControlRequest.h"

namespace neb::nebsc {

/// What commits are exchanged with.
enum class Peer { remote, subversion };

/// Returns a request about the working copy.
[[nodiscard]] std::shared_ptr<NEBSourceControlRequest> newRequest(
    const WorkingCopyLocation& workingCopy, std::int32_t type);

/// Returns a request of a type that exchanges commits, with empty options.
[[nodiscard]] std::shared_ptr<NEBSourceControlRequest> newExchangeRequest(
    const WorkingCopyLocation& workingCopy, std::int32_t type, Peer peer);

/// Returns a request to fetch from the remote.
[[nodiscard]] std::shared_ptr<NEBSourceControlRequest> newFetchRequest(
    const WorkingCopyLocation& workingCopy, const std::string& remote);

/// Lets the request of a command fetch what a partial clone lacks, as git does.
void allowFetches(NEBSourceControlRequest& request);

}  // namespace neb::nebsc
