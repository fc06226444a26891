// OwnOperations.h - the operations of nebsc's own that requests run instead of the plug-in's.
#pragma once

#include <memory>
#include <string>

#include "NEBFoundation/NEBSourceControlTaskOperation.h"

namespace neb::nebsc {

/// Returns an operation for the request by the name of its class, for a replay, which sets the
/// arguments and the folder; null for an unknown name, and if the request lacks what the
/// operation needs. Thread-safe.
[[nodiscard]] std::shared_ptr<NEBSourceControlTaskOperation> ownOperation(
    const std::string& className, const std::shared_ptr<NEBSourceControlRequest>& request);

}  // namespace neb::nebsc
