// Machine.h - what the figures were measured on and with.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace neb::benchmarks {

/// Name and value of each thing that the figures depend on; nothing that tells whose machine it is.
std::vector<std::pair<std::string, std::string>> describeMachine();

}  // namespace neb::benchmarks
