// Plot.h - time and memory against the length of a history, as a picture.
#pragma once

#include <filesystem>

#include "Results.h"

namespace neb::benchmarks {

/// Lets gnuplot write an SVG file with the logs of all sizes. A gnuplot that cannot is a
/// std::runtime_error with its words.
void writePlot(const std::filesystem::path& file, const Results& results);

}  // namespace neb::benchmarks
