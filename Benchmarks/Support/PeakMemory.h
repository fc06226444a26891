// PeakMemory.h - the peak memory of a function.
#pragma once

#include <cstdint>
#include <functional>

namespace neb::benchmarks {

/// Returns the number of bytes by which a copy of this process grows at its peak while it runs the
/// function, without its own child processes. Throws std::runtime_error if the function fails. The
/// process must have no other threads.
std::int64_t peakGrowth(const std::function<void()>& work);

}  // namespace neb::benchmarks
