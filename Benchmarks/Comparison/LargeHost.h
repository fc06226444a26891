// LargeHost.h - the time of an operation in a host that uses much memory.
#pragma once

#include <optional>

#include "Cases.h"
#include "Rounds.h"

namespace neb::benchmarks {

/// Returns the time of the whole operation in this process with 4 GiB of touched memory, relative
/// to the time without, over that many rounds. Absent if the machine lacks the memory.
std::optional<Spread> measureLargeHost(const Case& what, const std::string& path, int rounds);

}  // namespace neb::benchmarks
