// NEBConstant.h - texts that the host and its plug-ins share.
//
//     inline constexpr NEBConstant NEBExampleKey{"NEBExampleKey"};
//     record.set(NEBExampleKey, 7);              // the key is not copied
//     NEBExampleKey == "NEBExampleKey";          // true
//     const std::string text(NEBExampleKey);     // a copy, only when written explicitly
#pragma once

#include <string>
#include <string_view>

namespace neb {

/// A text that lives as long as the process, as it is made from a literal only. A dictionary can
/// use it as a key without a copy. Thread-safe.
class NEBConstant {
public:
    /// Creates a constant at compile time. `literal` must have at most 254 characters;
    /// longer literals do not compile.
    template <std::size_t size>
    consteval explicit NEBConstant(const char (&literal)[size]) : _text(literal, size - 1) {
        static_assert(size <= 255, "a dictionary stores the length of a key in one byte");
    }

    /// Returns the text, which is valid until the process ends or the plug-in that defines the
    /// constant is unloaded.
    [[nodiscard]] constexpr std::string_view text() const { return _text; }
    /// Returns text(), so that a constant can be used as a text.
    constexpr operator std::string_view() const { return _text; }
    /// Returns a copy of the text.
    explicit operator std::string() const { return std::string(_text); }

    /// Compares the text byte by byte. A constant equals every text with the same characters, at
    /// whatever address.
    friend constexpr bool operator==(NEBConstant constant, std::string_view other) {
        return constant._text == other;
    }

private:
    std::string_view _text;
};

}  // namespace neb
