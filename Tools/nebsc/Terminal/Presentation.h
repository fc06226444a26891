// Presentation.h - text for a person at a terminal. Every function may be called from any thread.
#pragma once

#include <string>
#include <string_view>

#include "NEBFoundation/NEBSourceControlError.h"

namespace neb::nebsc {

/// The bytes as UTF-8 on one line that drives no terminal: each control character (C0, DEL, C1) is
/// written out ("\n", "\t", "\x1b", "\u009b"), and so is what turns the direction of a text
/// ("\u202e") and each byte that is not UTF-8 ("\xe4").
[[nodiscard]] std::string printable(std::string_view bytes);

/// The same of a line of a file: TABs stay, and so does the CR of a line end.
[[nodiscard]] std::string printableLine(std::string_view bytes);

/// The text between quotes, as it is.
[[nodiscard]] std::string inQuotes(std::string_view text);

/// The colours in which things are shown, as terminals name them.
enum class Colour { none, bold, red, boldRed, green, yellow, cyan };

/// When to use them.
enum class Colours { automatic, always, never };

/// Whether to colour what goes to the descriptor. By itself it is coloured where that is a terminal
/// that is not "dumb", and the user has not set NO_COLOR to anything but the empty text.
[[nodiscard]] bool wantsColour(Colours colours, int descriptor);

/// The text between the sequences that switch the colour on and off.
[[nodiscard]] std::string coloured(std::string_view text, Colour colour);

/// An error as lines for standard error: "nebsc: " and its description as a sentence, without git's
/// "fatal: " (of a longer one the line that says what happened), the recovery suggestion on a line
/// of its own, then, indented, the description's other lines, the tool's own words where they say
/// more than it, and the files that none of it reports as such (NEBSourceControlFilesInText).
/// Hints that are the suggestion are not repeated.
[[nodiscard]] std::string errorLines(const NEBSourceControlError& error);

}  // namespace neb::nebsc
