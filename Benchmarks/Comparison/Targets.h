// Targets.h - the targets for the figures, and whether they are met.
#pragma once

#include <string>
#include <vector>

#include "Results.h"

namespace neb::benchmarks {

struct Target {
    std::string what;
    /// "at most 1.03".
    std::string asked;
    /// "1.010 (1.002–1.024)"; empty when it was not measured.
    std::string figure;
    /// "met", "missed", "not measured".
    std::string verdict;
};

/// Returns all targets, in order.
std::vector<Target> targetsOf(const Results& results);

}  // namespace neb::benchmarks
