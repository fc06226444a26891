// NEBSourceControlSourceTree.h - the repository or working tree of a request.
#pragma once

#include <optional>
#include <string>

#include "NEBFoundation/NEBObject.h"
#include "Platform/Export.h"

namespace neb {

/// Made by the host, read by the plug-in; not changed once it is part of a request that runs.
class NEB_EXPORT NEBSourceControlSourceTree : public NEBObject {
public:
    /// An absolute path or a URL (a file URL for a local tree). Absent: unknown.
    std::optional<std::string> location;
    /// The name in messages.
    std::string name;
    /// Whether the host can currently reach it.
    bool reachable = true;
    /// Whether it still exists. Operations produce results for valid trees only.
    bool isValid = true;

    /// "NEBSourceControlRepository" or "NEBSourceControlWorkingTree".
    [[nodiscard]] virtual std::string className() const = 0;
    [[nodiscard]] std::string descriptionForAssertionMessage() const override;
};

/// A repository, local or on a server.
class NEB_EXPORT NEBSourceControlRepository : public NEBSourceControlSourceTree {
public:
    /// Whether its branches are listed by contacting its server.
    bool isRemoteDistributedRepository = false;

    [[nodiscard]] std::string className() const override;
};

/// A local working tree.
class NEB_EXPORT NEBSourceControlWorkingTree : public NEBSourceControlSourceTree {
public:
    [[nodiscard]] std::string className() const override;
};

}  // namespace neb
