// BrokenReference.h - finds the branch, tag or other reference that exists and cannot be read.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "NEBFoundation/NEBSourceControlError.h"
#include "Platform/ChildProcess.h"

namespace neb::nebsc {

/// Runs git with the arguments in the repository and returns how it ended.
using AskGit = std::function<ChildOutcome(std::vector<std::string> arguments)>;

/// Looks for the reference that `revision`, or a side of a range, stands for, by the rules of
/// gitrevisions(7), and returns an error that names it where it is broken: its file holds no
/// commit's name, or the object is not in the repository. Returns nothing for a reference that is
/// whole, that does not exist or that names a branch without a commit; then the revision has
/// another fault. Call it where git has failed: it runs a dozen git processes. `folder` is the one
/// in which `ask` runs git.
[[nodiscard]] std::optional<NEBSourceControlError> brokenReferenceIn(const std::string& revision,
                                                                     const std::string& folder,
                                                                     const AskGit& ask);

}  // namespace neb::nebsc
