// OwnOperations.h - the operations of nebsc's own that requests run instead of the plug-in's, and
// the recordings with them.
#pragma once

#include <memory>
#include <string>

#include "NEBFoundation/NEBSourceControlTaskOperation.h"
#include "Recording/RecordingFile.h"
#include "Session/HostSession.h"

namespace neb::nebsc {

/// Returns an operation for the request by the name of its class, for a replay, which sets the
/// arguments and the folder; null for an unknown name, and if the request lacks what the
/// operation needs. Thread-safe.
[[nodiscard]] std::shared_ptr<NEBSourceControlTaskOperation> ownOperation(
    const std::string& className, const std::shared_ptr<NEBSourceControlRequest>& request);

/// Returns the change that makes a recording anonymous, or with false none. The session must
/// outlive it.
[[nodiscard]] RecordingFile::Change anonymization(const HostSession& session, bool isAnonymous);

}  // namespace neb::nebsc
