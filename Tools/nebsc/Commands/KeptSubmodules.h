// KeptSubmodules.h - changes of submodules, which git leaves as they are when it restores files.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "CommandFrame/GitQueries.h"
#include "NEBFoundation/NEBSourceControlError.h"

namespace neb::nebsc {

/// Returns the error that submodules at or below the paths, which are absolute, still have changes:
/// other commits than the index, or changed tracked files. Its files are the submodules, from the
/// top of the working copy. Absent if they have none, or if there are no submodules. If git fails,
/// returns its error.
[[nodiscard]] std::optional<NEBSourceControlError> errorOfKeptSubmodules(
    const GitQueries& git, const std::vector<std::string>& paths);

/// Returns how to discard the changes of the error's submodules; empty for any other error.
[[nodiscard]] std::string adviceOnKeptSubmodules(const WorkingCopyLocation& workingCopy,
                                                 const NEBSourceControlError& error);

}  // namespace neb::nebsc
