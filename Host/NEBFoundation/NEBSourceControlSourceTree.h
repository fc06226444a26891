// NEBSourceControlSourceTree.h - what a request is about: a repository or a working tree.
#pragma once

#include <optional>
#include <string>

#include "NEBFoundation/NEBObject.h"
#include "Platform/Export.h"

namespace neb {

/// Made by the host, read by the plug-in; unchanged once it is in a request that runs.
class NEB_EXPORT NEBSourceControlSourceTree : public NEBObject {
public:
    /// An absolute path, or a URL's text (a file URL for a local tree). Absent: not known.
    std::optional<std::string> location;
    /// The name by which messages call it.
    std::string name;
    /// Whether the host can reach it at present.
    bool reachable = true;
    /// Whether it still stands for something; results are made only for a valid one.
    bool isValid = true;

    /// "NEBSourceControlRepository" or "NEBSourceControlWorkingTree".
    [[nodiscard]] virtual std::string className() const = 0;
    [[nodiscard]] std::string descriptionForAssertionMessage() const override;
};

class NEB_EXPORT NEBSourceControlRepository : public NEBSourceControlSourceTree {
public:
    /// Whether it is a repository on another machine whose branches are to be asked for there.
    bool isRemoteDistributedRepository = false;

    [[nodiscard]] std::string className() const override;
};

class NEB_EXPORT NEBSourceControlWorkingTree : public NEBSourceControlSourceTree {
public:
    [[nodiscard]] std::string className() const override;
};

}  // namespace neb
