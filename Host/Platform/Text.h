// Text.h - UTF-8, white space, lines.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "Platform/Data.h"
#include "Platform/Export.h"

namespace neb {

/// Whether the bytes are well-formed UTF-8 (no overlong forms, no surrogates, nothing above
/// U+10FFFF). No bytes at all are.
[[nodiscard]] NEB_EXPORT bool isUTF8(std::string_view bytes);

/// The bytes as UTF-8, with one U+FFFD in place of each longest piece that is no UTF-8 but could
/// have begun one, the way of the Unicode standard and of the web's decoders.
[[nodiscard]] NEB_EXPORT std::string textReplacingInvalidBytes(std::string_view bytes);

/// How many bytes the well-formed UTF-8 character at `position` has; 0 where the bytes are none.
[[nodiscard]] NEB_EXPORT std::size_t lengthOfCharacterAt(std::string_view text,
                                                         std::size_t position);

/// How many bytes the white-space character at `position` has, 0 when there is none: blank, TAB and
/// Unicode's other space separators, no line ends.
[[nodiscard]] NEB_EXPORT std::size_t lengthOfSpaceAt(std::string_view text, std::size_t position);

/// The text without the line ends at both its ends: LF, CR, vertical tab, form feed, U+0085, U+2028
/// and U+2029.
[[nodiscard]] NEB_EXPORT std::string_view textByTrimmingLineEnds(std::string_view text);

/// Calls `visit` with each piece of the text between separators, in order: one piece more than
/// there are separators, so a text without any is one piece, and one that ends with a separator has
/// an empty last one.
template <typename Visit>
void forEachPiece(std::string_view text, char separator, Visit visit) {
    std::size_t end = 0;
    while ((end = text.find(separator)) != std::string_view::npos) {
        visit(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    visit(text);
}

/// How many pieces those are.
[[nodiscard]] inline std::size_t pieceCount(std::string_view text, char separator) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), separator)) + 1;
}

}  // namespace neb
