// NEBSourceControlManager.h - the host's own services for source control.
#pragma once

#include "LOMFoundation/LOMLogAspect.h"
#include "Platform/Export.h"

namespace neb {

class NEB_EXPORT NEBSourceControlManager {
public:
    /// The log aspect of all source control, one for the process. From any thread.
    static LOMLogAspect& sourceControlLogAspect();
};

}  // namespace neb
