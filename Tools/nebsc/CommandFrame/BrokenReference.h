// BrokenReference.h - the search for a branch, tag or other reference that exists but cannot be
// read.
#pragma once

#include <optional>
#include <string>

#include "CommandFrame/GitQueries.h"
#include "NEBFoundation/NEBSourceControlError.h"

namespace neb::nebsc {

/// Returns an error that names the reference in `revision`, or in a side of a range, if that
/// reference is broken: its file holds no commit id, or its object is not in the repository. Finds
/// the reference by the rules of gitrevisions(7). Absent for a reference that is intact, does not
/// exist or names a branch without a commit: then the revision has another fault. Runs about a
/// dozen git processes; call it only after git has failed.
[[nodiscard]] std::optional<NEBSourceControlError> brokenReference(const GitQueries& git,
                                                                   const std::string& revision);

}  // namespace neb::nebsc
