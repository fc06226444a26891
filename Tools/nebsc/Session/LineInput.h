// LineInput.h - lines that a user types, or that a program writes to standard input.
#pragma once

#include <optional>
#include <string>

#include "Session/Interruption.h"

namespace neb::nebsc {

struct InputLine {
    /// The bytes of the line, without its end.
    std::string text{};
    /// Whether the input has ended, and there is no line.
    bool isEnd = false;
};

/// Reads the next line from standard input, and nothing beyond it. Absent if a signal arrives or
/// the time is up, which ends the wait. An input that cannot be read has ended.
[[nodiscard]] std::optional<InputLine> readInputLine(Interruption& interruption);

}  // namespace neb::nebsc
