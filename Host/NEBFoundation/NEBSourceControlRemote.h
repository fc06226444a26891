// NEBSourceControlRemote.h - the remote of a fetch, a push or an update.
#pragma once

#include "NEBFoundation/NEBObject.h"
#include "Platform/Export.h"

namespace neb {

/// Made by the host; not changed once it is part of a request that runs.
class NEB_EXPORT NEBSourceControlRemote : public NEBObject {
public:
    /// Whether the remote is a Subversion repository that git reaches through git-svn(1).
    bool representsGitSVNBridge = false;

    [[nodiscard]] std::string descriptionForAssertionMessage() const override;
};

}  // namespace neb
