// SignalFreeThread.h - a thread that handles no signals of the process.
//
// The system may deliver a signal to any thread that does not block it. The signal handlers of a
// host expect to run on the threads of the host.
#pragma once

#include <functional>
#include <thread>

#include "Platform/Export.h"

namespace neb {

/// Starts a thread that calls `work` with all signals blocked, except those for faults in its own
/// code (SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS). The signal mask of the caller
/// does not change. Returns a thread that is not joinable, and does not call `work`, if the system
/// cannot create a thread. Throws nothing. Thread-safe.
NEB_EXPORT std::thread startSignalFreeThread(std::function<void()> work);

}  // namespace neb
