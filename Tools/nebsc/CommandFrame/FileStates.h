// FileStates.h - the files of an outcome, as lists that people read.
#pragma once

#include <string>

#include "CommandFrame/WorkingCopyLocation.h"
#include "NEBFoundation/NEBConstant.h"
#include "NEBFoundation/NEBSourceControlOperation.h"

namespace neb::nebsc {

/// Returns a line for each record that has a path: "    modified  src/main.c". `state` is the key
/// of the first column. The paths start at the top of the working copy, and are shown as the user
/// sees them.
[[nodiscard]] std::string fileStateLines(const WorkingCopyLocation& workingCopy,
                                         const NEBSourceControlResult& records, NEBConstant state);

}  // namespace neb::nebsc
