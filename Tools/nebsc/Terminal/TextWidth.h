// TextWidth.h - the width of text on a terminal. Every function is thread-safe.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace neb::nebsc {

/// Returns the width of printable UTF-8 text in columns: two for a wide character, none for a
/// combining one.
[[nodiscard]] std::size_t columnsOf(std::string_view text);

/// Returns the text, padded with blanks to `columns`. Does not change wider text.
[[nodiscard]] std::string paddedTo(std::size_t columns, std::string_view text);

/// Returns the text, truncated with "…" if it is wider than `columns`, which must be at least 1.
[[nodiscard]] std::string truncated(std::size_t columns, std::string_view text);

/// Returns the width of the terminal in columns; absent if the descriptor is not a terminal or its
/// size is unknown.
[[nodiscard]] std::optional<std::size_t> columnsOfTerminal(int descriptor);

/// Returns the text, truncated so that it fits on a line of the terminal after `columnsBefore`
/// columns. Does not truncate if columnsOfTerminal() is absent.
[[nodiscard]] std::string fitting(int descriptor, std::size_t columnsBefore, std::string_view text);

/// Returns the text, wrapped at blanks so that it fits on the terminal after `columnsBefore`
/// columns. All lines but the first are indented by `columnsBefore`. Does not wrap if
/// columnsOfTerminal() is absent.
[[nodiscard]] std::string wrapped(int descriptor, std::size_t columnsBefore, std::string_view text);

}  // namespace neb::nebsc
