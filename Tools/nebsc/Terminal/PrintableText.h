// PrintableText.h - text that is safe to print on a terminal. Every function is thread-safe.
#pragma once

#include <string>
#include <string_view>

namespace neb::nebsc {

/// Returns the bytes as one line of UTF-8 without control functions. Control characters (C0, DEL,
/// C1), characters that change the direction of text, and bytes that are not UTF-8 are written as
/// escape sequences: "\n", "\t", "\x1b", "\u009b", "\u202e", "\xe4".
[[nodiscard]] std::string printable(std::string_view bytes);

/// The same for a line of a file: keeps TABs and a CR at the end.
[[nodiscard]] std::string printableLine(std::string_view bytes);

/// Returns the text between single quotes, unchanged.
[[nodiscard]] std::string inQuotes(std::string_view text);

}  // namespace neb::nebsc
