// TextWidth.h - how much room a text takes on a terminal. From any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace neb::nebsc {

/// The columns that a printable text in UTF-8 takes: two for a wide character, none for a combining
/// one.
[[nodiscard]] std::size_t columnsOf(std::string_view text);

/// The text, with blanks behind it up to so many columns; a wider one as it is.
[[nodiscard]] std::string paddedTo(std::size_t columns, std::string_view text);

}  // namespace neb::nebsc
