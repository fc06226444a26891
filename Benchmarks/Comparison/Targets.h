// Targets.h - what the figures are asked to be, and whether they are.
#pragma once

#include <string>
#include <vector>

#include "Results.h"

namespace neb::benchmarks {

struct Target {
    std::string what;
    /// "at most 1.03".
    std::string asked;
    /// "1.01 (1.00 to 1.02)"; "not measured".
    std::string figure;
    /// "met", "missed"; empty when it was not measured.
    std::string verdict;
};

/// All of them, in order.
std::vector<Target> targetsOf(const Results& results);

}  // namespace neb::benchmarks
