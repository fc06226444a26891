// ObjectName.h - names for a file or folder of a commit or of the index; see gitrevisions(7).
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "CommandFrame/GitQueries.h"
#include "NEBFoundation/NEBSourceControlRequest.h"
#include "Terminal/CommandOutput.h"

namespace neb::nebsc {

/// The parts of "REVISION:PATH", ":PATH" or ":STAGE:PATH".
struct ObjectName {
    /// Absent for the index.
    std::optional<std::string> revision{};
    /// In the index: 0, or 1 to 3 for a file in conflict.
    std::int64_t stage = 0;
    /// As written.
    std::string path{};
};

/// Returns the parts of the name; absent if it has no colon, apart from those in braces, which
/// belong to the revision. Thread-safe.
[[nodiscard]] std::optional<ObjectName> objectNameIn(const std::string& text);

/// The path of an object.
struct ObjectPath {
    /// From the top of the repository, without "/" at its end; empty for the top.
    std::string path{};
    /// Why the path cannot be used; the path does not count then.
    std::optional<CommandOutput> refused{};
};

/// Returns the path of the named object. As in git, a path that begins with "./" or "../" starts in
/// the current folder, any other at the top. An absolute path must lie in the working copy.
[[nodiscard]] ObjectPath findObjectPath(const GitQueries& git, const ObjectName& name);

/// Sets the revision or stage of the request. Does not set its file.
void setRevision(NEBSourceControlRequest& request, const GitQueries& git, const ObjectName& name);

}  // namespace neb::nebsc
