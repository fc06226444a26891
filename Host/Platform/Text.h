// Text.h - UTF-8, white space, letters and lines.
//
// All functions are thread-safe, never read outside the given text, and throw only std::bad_alloc.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "Platform/Export.h"

namespace neb {

// ---- UTF-8 ------------------------------------------------------------------------------------

/// Whether the bytes are well-formed UTF-8: no overlong forms, no surrogates, nothing above
/// U+10FFFF. True for no bytes.
[[nodiscard]] NEB_EXPORT bool isUTF8(std::string_view bytes);

/// Returns the bytes as UTF-8. Each longest invalid sequence that could have begun a character is
/// replaced by one U+FFFD, as the Unicode standard recommends and web browsers do.
[[nodiscard]] NEB_EXPORT std::string textReplacingInvalidBytes(std::string_view bytes);

/// Returns the number of bytes of the character at `position`, 0 if the bytes there are not UTF-8.
/// `position` must be less than the size of the text.
[[nodiscard]] NEB_EXPORT std::size_t lengthOfCharacterAt(std::string_view text,
                                                         std::size_t position);

// ---- white space ------------------------------------------------------------------------------

/// Returns the number of bytes of the white space character at `position`; 0 for any other text.
/// White space is space, TAB and the other space separators of Unicode (class Zs), but not line
/// ends.
[[nodiscard]] NEB_EXPORT std::size_t lengthOfSpaceAt(std::string_view text, std::size_t position);

/// Returns the text without the line ends at its start and end: LF, CR, vertical tab, form feed,
/// U+0085, U+2028 and U+2029.
[[nodiscard]] NEB_EXPORT std::string_view textByTrimmingLineEnds(std::string_view text);

/// Returns the text without the given characters at its start and end.
[[nodiscard]] NEB_EXPORT std::string_view trimmed(std::string_view text,
                                                  std::string_view characters = " \t\r\n");

// ---- ASCII letters ----------------------------------------------------------------------------

/// Returns a to z for A to Z, every other character unchanged. Independent of the locale.
[[nodiscard]] constexpr char lowercaseASCII(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

/// Returns the text with lowercaseASCII() applied to each byte. UTF-8 stays UTF-8.
[[nodiscard]] NEB_EXPORT std::string lowercaseASCII(std::string_view text);

/// Whether the texts are equal except for the case of ASCII letters.
[[nodiscard]] NEB_EXPORT bool equalIgnoringASCIICase(std::string_view left, std::string_view right);

// ---- escapes ----------------------------------------------------------------------------------

/// Returns a backslash and the three octal digits of a byte, as in C: "\\344".
[[nodiscard]] inline std::string octalEscape(char byte) {
    const auto digit = [bits = static_cast<unsigned char>(byte)](unsigned shift) {
        return static_cast<char>('0' + ((bits >> shift) & 7U));
    };
    return {'\\', digit(6), digit(3), digit(0)};
}

// ---- separators and lines ---------------------------------------------------------------------

/// Calls `visit` with each substring between separators, in order. A text without a separator is
/// one substring; a text that ends with a separator has an empty last one.
template <typename Visit>
void forEachField(std::string_view text, char separator, Visit visit) {
    std::size_t end = 0;
    while ((end = text.find(separator)) != std::string_view::npos) {
        visit(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    visit(text);
}

/// Returns the number of substrings that forEachField() visits.
[[nodiscard]] inline std::size_t fieldCount(std::string_view text, char separator) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), separator)) + 1;
}

/// Calls `visit` with each line, in order, without its LF. The last line may lack the LF. An empty
/// text has no lines.
template <typename Visit>
void forEachLine(std::string_view text, Visit visit) {
    if (text.ends_with('\n')) {
        text.remove_suffix(1);
    } else if (text.empty()) {
        return;
    }
    forEachField(text, '\n', visit);
}

}  // namespace neb
