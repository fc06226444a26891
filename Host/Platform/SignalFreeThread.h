// SignalFreeThread.h - a thread that takes none of the process's signals.
//
// The signals of a host are the host's: its handlers expect to run on the threads that it made, and
// the system may choose any thread that does not block them.
#pragma once

#include <functional>
#include <thread>

#include "Platform/Export.h"

namespace neb {

/// A new thread that does `work` with every signal blocked but those that a fault of its own code
/// raises (SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS). The caller's own mask is as
/// before. Not joinable when the system has no thread or no memory for it: the work is not done
/// then. Throws nothing. Thread-safe.
NEB_EXPORT std::thread startSignalFreeThread(std::function<void()> work);

}  // namespace neb
