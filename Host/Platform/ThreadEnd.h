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
/// Never thrown. With libc++, a thread must not end in this way while functions of the host library
/// run: the C library unwinds the stack with libgcc, which the handlers of libc++ cannot rethrow.
struct ThreadEnd {};
#endif

}  // namespace neb
