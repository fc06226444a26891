// NEBSourceControlManager.h - services that the host shares with plug-ins.
//
//     LOMLogAspect& log = NEBSourceControlManager::sourceControlLogAspect();
//     log.setSink([](std::string_view message) { appendToLogFile(message); });
//     log.logLevel = 1;
#pragma once

#include "LOMFoundation/LOMLogAspect.h"
#include "Platform/Export.h"

namespace neb {

/// The services. Has no instances.
class NEB_EXPORT NEBSourceControlManager {
public:
    /// Returns the log aspect of source control. It exists once in a process, lives until that
    /// ends, and is off until the host sets its level. Thread-safe.
    static LOMLogAspect& sourceControlLogAspect();
};

}  // namespace neb
