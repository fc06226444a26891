// PrintableText.h - bytes as text that is safe to print on a terminal. Every function is
// thread-safe.
#pragma once

#include <string>
#include <string_view>

namespace neb::nebsc {

/// The bytes as UTF-8 on one line that drives no terminal: each control character (C0, DEL, C1) is
/// written out ("\n", "\t", "\x1b", "\u009b"), and so is what turns the direction of a text
/// ("\u202e") and each byte that is not UTF-8 ("\xe4").
[[nodiscard]] std::string printable(std::string_view bytes);

/// The same of a line of a file: TABs stay, and so does the CR of a line end.
[[nodiscard]] std::string printableLine(std::string_view bytes);

/// Returns the text between single quotes, unchanged.
[[nodiscard]] std::string inQuotes(std::string_view text);

}  // namespace neb::nebsc
