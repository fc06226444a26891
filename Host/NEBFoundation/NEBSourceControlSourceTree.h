// NEBSourceControlSourceTree.h - the repository or working tree of a request.
//
//     auto server = std::make_shared<NEBSourceControlRepository>();
//     server->location = "https://example.org/demo.git";
//     server->name = "demo";
//     request->repositoryToAuthenticate = server;
#pragma once

#include <optional>
#include <string>

#include "NEBFoundation/NEBObject.h"
#include "NEBFoundation/NEBSourceControlTrust.h"
#include "Platform/Export.h"

namespace neb {

/// Made by the host, read by the plug-in; not changed once it is part of a request that runs.
class NEB_EXPORT NEBSourceControlSourceTree : public NEBObject {
public:
    /// An absolute path or a URL (a file URL for a local tree). Absent: unknown.
    std::optional<std::string> location;
    /// The name in messages, such as "demo". May be empty.
    std::string name;
    /// Whether the host can currently reach it. A request that may authenticate is refused
    /// otherwise, with the code NEBSourceControlNotReachableError.
    bool reachable = true;
    /// Whether it still exists. A status of a tree that is not valid has no records.
    bool isValid = true;
    /// Whether the programs that it names may run.
    NEBSourceControlTrust trust = NEBSourceControlTrust::trusted;

    /// "NEBSourceControlRepository" or "NEBSourceControlWorkingTree".
    [[nodiscard]] virtual std::string className() const = 0;
    /// Returns class, name and location.
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
