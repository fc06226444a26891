// ProgramStart.h - starts a program that runs beside the test.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/ChildSpawn.h"

namespace neb::test {

/// Changes to environment variables. An absent value removes the variable.
using VariableChanges = std::vector<std::pair<std::string, std::optional<std::string>>>;

/// Returns the environment of the test with the changes, each element "NAME=value".
[[nodiscard]] std::vector<std::string> environmentWith(const VariableChanges& changes);

/// Starts the program args[0], which is looked up in PATH unless it is a path. The caller reaps the
/// process. Throws if the program cannot be started.
[[nodiscard]] pid_t startProgram(const std::vector<std::string>& args,
                                 const std::vector<std::string>& environment,
                                 const SpawnOptions& options,
                                 std::optional<std::string> folder = std::nullopt);

/// Reads a line that a program writes to a pipe, and returns it without its end.
[[nodiscard]] std::string readLine(int descriptor);

}  // namespace neb::test
