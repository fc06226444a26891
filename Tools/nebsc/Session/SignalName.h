// SignalName.h - signals by name.
#pragma once

#include <string>

namespace neb::nebsc {

/// Returns the name of the signal, such as `SIGTERM`, or `SIG` with its number if it has no name,
/// such as a real-time signal. Thread-safe.
[[nodiscard]] std::string signalName(int signalNumber);

}  // namespace neb::nebsc
