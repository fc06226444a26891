// Results.h - all that one run of the comparison found out.
#pragma once

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "Collection.h"
#include "Measurement.h"
#include "ServerLoad.h"

namespace neb::benchmarks {

/// What was not measured is absent.
struct Results {
    std::vector<Measurement> measurements;
    /// Of each small command.
    std::vector<std::pair<std::string_view, Spread>> largeHost;
    std::optional<Collection> collection;
    std::optional<ServerLoad> serverLoad;
};

}  // namespace neb::benchmarks
