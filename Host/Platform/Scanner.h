// Scanner.h - reads a text from its start to its end.
//
//     Scanner scanner("  AM name");
//     scanner.skip(CharacterSet::whitespace());          // the two spaces
//     scanner.take(CharacterSet("AM"));                  // "AM"
//     scanner.rest();                                    // " name"
#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

#include "Platform/Text.h"

namespace neb {

/// A set of single-byte characters.
class CharacterSet {
public:
    /// A set of the characters in `members`.
    constexpr explicit CharacterSet(std::string_view members) {
        for (const char member : members) {
            _isMember[static_cast<unsigned char>(member)] = true;
        }
    }
    /// Space and TAB.
    static const CharacterSet& whitespace();
    /// A to Z.
    static const CharacterSet& uppercaseLetters();

    [[nodiscard]] constexpr CharacterSet operator|(const CharacterSet& other) const {
        CharacterSet both = *this;
        for (std::size_t i = 0; i < _isMember.size(); ++i) {
            both._isMember[i] = both._isMember[i] || other._isMember[i];
        }
        return both;
    }
    [[nodiscard]] constexpr bool contains(char character) const {
        return _isMember[static_cast<unsigned char>(character)];
    }

private:
    std::array<bool, 256> _isMember{};
};

inline const CharacterSet& CharacterSet::whitespace() {
    static constexpr CharacterSet set(" \t");
    return set;
}

inline const CharacterSet& CharacterSet::uppercaseLetters() {
    static constexpr CharacterSet set("ABCDEFGHIJKLMNOPQRSTUVWXYZ");
    return set;
}

/// A position in a text. The text must outlive the scanner and the views that it returns. Never
/// reads beyond the end. Not thread-safe.
class Scanner {
public:
    explicit Scanner(std::string_view text) : _text(text) {}

    /// Returns and skips the longest run of characters in the set. It may be empty.
    std::string_view take(const CharacterSet& set) {
        std::size_t length = 0;
        while (length < _text.size() && set.contains(_text[length])) {
            ++length;
        }
        return takeLength(length);
    }
    /// Returns and skips the text before the next `end`, or all remaining text without one.
    std::string_view takeUpTo(char end) { return takeLength(_text.find(end)); }
    /// Returns and skips the text before the next white space (see lengthOfSpaceAt() in Text.h), or
    /// all remaining text without any.
    std::string_view takeUpToSpace() {
        std::size_t length = 0;
        while (length < _text.size() &&
               (isPlain(_text[length]) || lengthOfSpaceAt(_text, length) == 0)) {
            ++length;
        }
        return takeLength(length);
    }
    /// Returns and skips a decimal integer with an optional sign. A value out of range becomes the
    /// nearest one in range. Returns and skips nothing if there is no digit.
    std::optional<std::int32_t> takeInteger() {
        const std::size_t sign = _text.starts_with('-') || _text.starts_with('+') ? 1 : 0;
        const bool isNegative = _text.starts_with('-');
        std::size_t end = sign;
        while (end < _text.size() && _text[end] >= '0' && _text[end] <= '9') {
            ++end;
        }
        if (end == sign) {
            return std::nullopt;
        }
        using Limits = std::numeric_limits<std::int32_t>;
        std::int64_t value = 0;
        const auto read = std::from_chars(_text.data() + sign, _text.data() + end, value);
        if (read.ec != std::errc()) {
            value = std::numeric_limits<std::int64_t>::max();
        }
        _text.remove_prefix(end);
        value = isNegative ? -value : value;
        return static_cast<std::int32_t>(
            std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
    }
    /// Skips a run of characters in the set.
    void skip(const CharacterSet& set) { static_cast<void>(take(set)); }
    /// Skips the next character if it is this one.
    void skipOne(char character) {
        if (_text.starts_with(character)) {
            _text.remove_prefix(1);
        }
    }
    /// Skips a run of white space (see lengthOfSpaceAt() in Text.h).
    void skipSpace() {
        while (!_text.empty() && !isPlain(_text.front())) {
            const std::size_t length = lengthOfSpaceAt(_text, 0);
            if (length == 0) {
                return;
            }
            _text.remove_prefix(length);
        }
    }
    /// Returns the text that has not been read yet.
    [[nodiscard]] std::string_view rest() const { return _text; }

private:
    /// Whether the character is a visible ASCII character, which no white space starts with.
    static bool isPlain(char character) { return character > ' ' && character < '\x7F'; }
    std::string_view takeLength(std::size_t length) {
        const std::string_view run = _text.substr(0, length);
        _text.remove_prefix(run.size());
        return run;
    }

    std::string_view _text;
};

}  // namespace neb
