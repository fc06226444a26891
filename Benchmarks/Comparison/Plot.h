// Plot.h - a plot of time and memory against the length of a history.
#pragma once

#include <filesystem>

#include "Results.h"

namespace neb::benchmarks {

/// Writes an SVG file with the logs of all sizes, using gnuplot. Throws std::runtime_error with its
/// message if that fails.
void writePlot(const std::filesystem::path& file, const Results& results);

}  // namespace neb::benchmarks
