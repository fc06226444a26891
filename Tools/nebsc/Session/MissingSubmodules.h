// MissingSubmodules.h - the submodules that a clone could not get.
#pragma once

#include <string>
#include <vector>

#include "Session/Trace.h"

namespace neb::nebsc {

/// Returns the submodules that are in .gitmodules and in the index but are not checked out at the
/// commit of the index, including nested ones, as paths relative to `folder`. Returns an empty list
/// if `folder` is not the top of a working copy, or if git could not check out all its files. Runs
/// several short git commands. Thread-safe.
[[nodiscard]] std::vector<std::string> missingSubmodules(const Trace& trace,
                                                         const std::string& folder);

}  // namespace neb::nebsc
