// FileLines.h - the files in the records of the request types 15 (status) and 30 (diff with names).
#pragma once

#include <string>

#include "CommandFrame/WorkingCopyLocation.h"
#include "NEBFoundation/NEBSourceControlOperation.h"

namespace neb::nebsc {

/// Returns a line for each record: the state of the file, and its path as the user sees it.
/// Thread-safe.
[[nodiscard]] std::string linesOfFiles(const NEBSourceControlResult& records,
                                       const WorkingCopyLocation& workingCopy, bool isColoured);

}  // namespace neb::nebsc
