// PeakMemory.h - how much memory a piece of work takes.
#pragma once

#include <cstdint>
#include <functional>

namespace neb::benchmarks {

/// By how many bytes a copy of this process that does the work has grown at its peak, as the copy
/// itself tells it; what children of its own take does not count. Work that cannot be done is a
/// std::runtime_error. Not while the process has other threads.
std::int64_t peakGrowth(const std::function<void()>& work);

}  // namespace neb::benchmarks
