#include "NEBFoundation/NEBSourceControlRemote.h"

namespace neb {

std::string NEBSourceControlRemote::descriptionForAssertionMessage() const {
    return representsGitSVNBridge ? "<NEBSourceControlRemote: Subversion bridge>"
                                  : "<NEBSourceControlRemote>";
}

}  // namespace neb
