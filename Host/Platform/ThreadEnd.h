// ThreadEnd.h - the exception with which pthread_cancel() and pthread_exit() end a thread.
#pragma once

#include <cxxabi.h>

#include <cstddef>

namespace neb {

#ifdef __GLIBCXX__
/// Reaches `catch (...)`, like other exceptions. A handler must rethrow it, or the process is
/// aborted.
using ThreadEnd = abi::__forced_unwind;
#else
/// In libc++, the end of a thread passes all handlers. Never thrown.
struct ThreadEnd {};
#endif

}  // namespace neb
