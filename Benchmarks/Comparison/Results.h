// Results.h - the results of a run of the comparison.
#pragma once

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "Collection.h"
#include "Measurement.h"
#include "ServerLoad.h"

namespace neb::benchmarks {

/// Absent values were not measured.
struct Results {
    std::vector<Measurement> measurements;
    /// Of each small command.
    std::vector<std::pair<std::string_view, Spread>> largeHost;
    std::optional<Collection> collection;
    std::optional<ServerLoad> serverLoad;
};

}  // namespace neb::benchmarks
