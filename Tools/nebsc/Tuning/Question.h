// Question.h - a yes-or-no question to the user at the terminal.
#pragma once

#include <optional>
#include <string_view>

#include "Session/Interruption.h"

namespace neb::nebsc {

/// Returns whether a user can be asked: standard input and standard error are terminals.
[[nodiscard]] bool canAsk();

/// Writes the text and " [y/N] " to standard error and reads a line from standard input. Returns
/// true for "y" or "yes", false for anything else and at the end of the input; absent if a signal
/// arrives, which ends the wait.
[[nodiscard]] std::optional<bool> ask(Interruption& interruption, std::string_view text);

}  // namespace neb::nebsc
