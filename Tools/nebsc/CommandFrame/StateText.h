// StateText.h - the records of request type 1000 (working copy state) as text for a person.
#pragma once

#include <string>

#include "CommandFrame/WorkingCopyLocation.h"
#include "NEBFoundation/NEBSourceControlOperation.h"

namespace neb::nebsc {

/// Returns a line for the branch: "On branch main, 2 ahead of and 1 behind origin/main"; empty if
/// the records describe none. Thread-safe, as are the next functions.
[[nodiscard]] std::string branchLine(const NEBSourceControlResult& records);

/// Whether the records describe HEAD, and git could not read it.
[[nodiscard]] bool lacksReadableHead(const NEBSourceControlResult& records);

/// Returns a list of paths below a title for each kind of change, each with an empty line before
/// it: conflicts, staged, not staged, untracked and ignored; then the number of stashes. Empty if
/// there is nothing of the kind.
[[nodiscard]] std::string changeLists(const NEBSourceControlResult& records,
                                      const WorkingCopyLocation& workingCopy, bool isColoured);

}  // namespace neb::nebsc
