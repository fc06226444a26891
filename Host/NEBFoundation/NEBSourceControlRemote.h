// NEBSourceControlRemote.h - the remote of a fetch, a push or an update.
//
//     request->remote = std::make_shared<NEBSourceControlRemote>();
//     request->remote->representsGitSVNBridge = true;   // `git svn fetch` instead of `git fetch`
//
// The name of a git remote is not stored here: it is NEBSourceControlRequestOptionRemoteName.
#pragma once

#include "NEBFoundation/NEBObject.h"
#include "Platform/Export.h"

namespace neb {

/// Made by the host; not changed once it is part of a request that runs.
class NEB_EXPORT NEBSourceControlRemote : public NEBObject {
public:
    /// Whether the remote is a Subversion repository that git reaches through git-svn(1).
    bool representsGitSVNBridge = false;

    /// Returns the name of the class, and whether it is a Subversion repository.
    [[nodiscard]] std::string descriptionForAssertionMessage() const override;
};

}  // namespace neb
