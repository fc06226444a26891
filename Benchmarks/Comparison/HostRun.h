// HostRun.h - a request carried out the way a host does it, and the child that it starts.
#pragma once

#include <cstddef>

#include "Cases.h"
#include "Platform/ChildProcess.h"

namespace neb::benchmarks {

/// Hands the request to the plug-in's controller, runs the operation on this thread, reads the
/// records and lets go of them. Answers how many there were, the empty one left out that marks the
/// end of some. An error of the operation is a std::runtime_error with its words.
std::size_t carryOut(const Request& request);

/// Carries the request out, and answers the command line, the folder and the whole environment of
/// the one child that ran for it.
ChildLaunch launchFor(const Request& request);

}  // namespace neb::benchmarks
