// Colour.h - coloured text for terminals. Every function is thread-safe.
#pragma once

#include <string>
#include <string_view>

namespace neb::nebsc {

/// The colours of a terminal, by their usual names.
enum class Colour {
    none,
    bold,
    red,
    boldRed,
    green,
    boldGreen,
    yellow,
    boldYellow,
    blue,
    boldBlue,
    magenta,
    boldMagenta,
    cyan,
    boldCyan,
};

/// The values of `--color`.
enum class Colours { automatic, always, never };

/// Returns whether to colour the text written to the descriptor. `automatic` colours a terminal
/// unless TERM is "dumb" or NO_COLOR is set and not empty.
[[nodiscard]] bool wantsColour(Colours colours, int descriptor);

/// Returns the text between the escape sequences that turn the colour on and off.
[[nodiscard]] std::string coloured(std::string_view text, Colour colour);

}  // namespace neb::nebsc
