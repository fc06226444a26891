// GitDispatch.h - which class carries out which type of request, and what each type needs.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "NEBFoundation/NEBSourceControlOperation.h"
#include "NEBFoundation/NEBSourceControlRequest.h"

namespace neb {

/// Reports every precondition of the request's type that does not hold, in their order. For a type
/// outside 0 to 39 there is none. From any thread.
void gitReportBrokenPreconditions(const NEBSourceControlRequest& request);

/// A new operation of the class for the request's type; nothing for a type that has none.
[[nodiscard]] std::shared_ptr<NEBSourceControlOperation> gitMakeOperation(
    const std::shared_ptr<NEBSourceControlRequest>& request);

}  // namespace neb
