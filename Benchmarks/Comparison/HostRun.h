// HostRun.h - runs a request like a host, and inspects its child process.
#pragma once

#include <cstddef>

#include "Cases.h"
#include "Platform/ChildProcess.h"

namespace neb::benchmarks {

/// Makes the operation with the controller of the plug-in, runs it on this thread, reads the
/// records and releases them. Returns their number without the empty record at the end of some.
/// Throws std::runtime_error with the text of an error.
std::size_t performOperation(const Request& request);

/// Runs the request and returns the command line, folder and environment of its only child.
ChildLaunch launchFor(const Request& request);

}  // namespace neb::benchmarks
