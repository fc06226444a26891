// OrdinaryWorkingCopy.h - finds a working copy without git, where git is certain to find the same.
//
// Starting git takes longer than the rest of a small command. Most working copies are ordinary: a
// folder with a git directory called ".git", found from a folder within it, with no setting or
// variable that moves either. Only for those does the answer not need git.
#pragma once

#include <optional>
#include <string>

#include "CommandFrame/WorkingCopyLocation.h"

namespace neb::nebsc {

/// Returns the working copy around the folder, an absolute path without symbolic links, if it is an
/// ordinary one; absent in any doubt, as for linked working trees, submodules, bare repositories,
/// repositories of other owners, and with variables such as GIT_DIR. Has the branch of HEAD, but
/// not whether HEAD names a commit. Runs no git.
[[nodiscard]] std::optional<WorkingCopyLocation> ordinaryWorkingCopy(const std::string& folder);

}  // namespace neb::nebsc
