// ProgramFile.h - the file of the running nebsc.
#pragma once

#include <string>

namespace neb::nebsc {

/// Returns the absolute path, without symbolic links; empty if the system does not say.
/// Thread-safe.
[[nodiscard]] std::string programFile();

}  // namespace neb::nebsc
