// CommitListing.h - `nebsc ls REVISION:FOLDER`.
#pragma once

#include "CommandLine/Command.h"

namespace neb::nebsc {

/// Lists the folder of a commit that the argument "DIR" names, which must be an object name with a
/// revision; see objectNameIn(). For the main thread.
[[nodiscard]] CommandOutput listFolderOfCommit(const CommandCall& call);

}  // namespace neb::nebsc
