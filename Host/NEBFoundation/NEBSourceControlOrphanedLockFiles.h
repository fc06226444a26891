// NEBSourceControlOrphanedLockFiles.h - a run of git processes that leaves no lock file behind when
// it is cancelled.
//
// git removes its lock files on SIGTERM, except one that it is just creating: after open() has
// returned and before git has recorded the name. On a busy machine this happens in about one of a
// hundred cancelled runs.
#pragma once

#include <vector>

#include "Platform/ChildProcess.h"
#include "Platform/Export.h"

namespace neb {

/// Runs the launches like ChildProcess::run() and removes the lock files that cancelled git
/// processes leave behind. Lock files of other processes stay. `observers.stopped` is not called.
[[nodiscard]] NEB_EXPORT std::vector<ChildOutcome> NEBSourceControlRunChildren(
    ChildProcess& process, const std::vector<ChildLaunch>& launches,
    ChildProcess::Observers observers, const ChildLimits& limits = {});

}  // namespace neb
