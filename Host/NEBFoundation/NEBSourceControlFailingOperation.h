// NEBSourceControlFailingOperation.h - operations that report an error instead of performing their
// request. Thread-safe.
#pragma once

#include <memory>

#include "NEBFoundation/NEBSourceControlError.h"
#include "NEBFoundation/NEBSourceControlOperation.h"
#include "NEBFoundation/NEBSourceControlRequest.h"
#include "Platform/Export.h"

namespace neb {

/// Returns an operation that finishes with the error at once. Null when the request is null. Throws
/// std::bad_alloc.
[[nodiscard]] NEB_EXPORT std::shared_ptr<NEBSourceControlOperation>
NEBSourceControlFailingOperation(const std::shared_ptr<NEBSourceControlRequest>& request,
                                 NEBSourceControlError error);

/// Returns an operation that fails with NEBSourceControlErrorOfCurrentException(). Must be called
/// in a catch block. Null when the request is null or memory runs out.
[[nodiscard]] NEB_EXPORT std::shared_ptr<NEBSourceControlOperation>
NEBSourceControlOperationOfCurrentException(
    const std::shared_ptr<NEBSourceControlRequest>& request);

}  // namespace neb
