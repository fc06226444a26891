// Machine.h - the machine and software of the measurement.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace neb::benchmarks {

/// Returns names and values of everything that affects the figures, and nothing that identifies the
/// machine.
std::vector<std::pair<std::string, std::string>> describeMachine();

}  // namespace neb::benchmarks
