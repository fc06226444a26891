// NEBSourceControlManager.h - services that the host shares with plug-ins.
#pragma once

#include "LOMFoundation/LOMLogAspect.h"
#include "Platform/Export.h"

namespace neb {

/// The services. Has no instances.
class NEB_EXPORT NEBSourceControlManager {
public:
    /// Returns the log aspect of source control, which exists once in a process. Thread-safe.
    static LOMLogAspect& sourceControlLogAspect();
};

}  // namespace neb
