// TextWidth.h - how much room a text takes on a terminal. From any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace neb::nebsc {

/// The columns that a printable text in UTF-8 takes: two for a wide character, none for a combining
/// one.
[[nodiscard]] std::size_t columnsOf(std::string_view text);

/// The text, with blanks behind it up to so many columns; a wider one as it is.
[[nodiscard]] std::string paddedTo(std::size_t columns, std::string_view text);

/// The text, its end replaced by "…" where it is wider than so many columns, of which there is one
/// at least.
[[nodiscard]] std::string cutTo(std::size_t columns, std::string_view text);

/// The columns of the terminal; nothing for what is none, or does not know its size.
[[nodiscard]] std::optional<std::size_t> columnsOfTerminal(int descriptor);

/// The text, cut so that it fits on the terminal's line behind so many columns. Whole for what is
/// no terminal.
[[nodiscard]] std::string fitting(int descriptor, std::size_t columnsBefore, std::string_view text);

/// The text, cut into lines at blanks so that it fits behind so many columns, as many blanks in
/// front of each line but the first. Whole for what is no terminal.
[[nodiscard]] std::string wrapped(int descriptor, std::size_t columnsBefore, std::string_view text);

}  // namespace neb::nebsc
