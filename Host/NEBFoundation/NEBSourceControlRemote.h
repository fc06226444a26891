// NEBSourceControlRemote.h - the remote of a fetch, a push or an update.
#pragma once

#include "NEBFoundation/NEBObject.h"
#include "Platform/Export.h"

namespace neb {

class NEB_EXPORT NEBSourceControlRemote : public NEBObject {
public:
    /// Whether it is a Subversion repository reached through git's Subversion bridge.
    bool representsGitSVNBridge = false;

    [[nodiscard]] std::string descriptionForAssertionMessage() const override;
};

}  // namespace neb
