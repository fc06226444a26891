// LargeHost.h - whether a host with much memory in use waits longer.
#pragma once

#include <optional>

#include "Cases.h"
#include "Rounds.h"

namespace neb::benchmarks {

/// The time of the whole operation in this process with 4 GiB of touched memory, to its time
/// without, of as many rounds. Nothing where the machine has not that much memory to spare.
std::optional<Spread> measureLargeHost(const Case& what, const std::string& path, int rounds);

}  // namespace neb::benchmarks
