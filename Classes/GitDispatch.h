// GitDispatch.h - the operation class of each type of request, and the reports of its
// preconditions. NEBSourceControlRequestType.h says which values a type requires; here are the
// texts and line numbers of the reports.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "NEBFoundation/NEBSourceControlOperation.h"
#include "NEBFoundation/NEBSourceControlRequest.h"

namespace neb {

/// Reports each precondition of the request's type that does not hold, in order. Unknown types have
/// none. Thread-safe.
void gitReportBrokenPreconditions(const NEBSourceControlRequest& request);

/// Returns a new operation for the request; null when its type has none.
[[nodiscard]] std::shared_ptr<NEBSourceControlOperation> gitMakeOperation(
    const std::shared_ptr<NEBSourceControlRequest>& request);

}  // namespace neb
