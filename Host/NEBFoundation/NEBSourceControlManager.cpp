#include "NEBFoundation/NEBSourceControlManager.h"

namespace neb {

LOMLogAspect& NEBSourceControlManager::sourceControlLogAspect() {
    static LOMLogAspect aspect("source control");
    return aspect;
}

}  // namespace neb
