// MissingSubmodules.h - what a clone lacks whose submodules could not all be cloned.
#pragma once

#include <string>
#include <vector>

#include "Session/Trace.h"

namespace neb::nebsc {

/// The submodules that .gitmodules names and the index has, and that are not checked out at the
/// index's commit; those of submodules too. Paths from the top of the working copy. Empty where
/// `folder` is not the top of a working copy, or git could not check out all files of it. Runs git
/// some times, briefly. Thread-safe.
[[nodiscard]] std::vector<std::string> missingSubmodules(const Trace& trace,
                                                         const std::string& folder);

}  // namespace neb::nebsc
