// NEBConstant.h - texts that the host and its plug-ins share.
#pragma once

#include <string>
#include <string_view>

namespace neb {

/// A text that lives as long as the process, as it is made from a literal only. A dictionary can
/// use it as a key without a copy. Thread-safe.
class NEBConstant {
public:
    template <std::size_t size>
    consteval explicit NEBConstant(const char (&literal)[size]) : _text(literal, size - 1) {
        static_assert(size <= 255, "a dictionary stores the length of a key in one byte");
    }

    /// The text.
    [[nodiscard]] constexpr std::string_view text() const { return _text; }
    constexpr operator std::string_view() const { return _text; }
    explicit operator std::string() const { return std::string(_text); }

    /// Compares the text.
    friend constexpr bool operator==(NEBConstant constant, std::string_view other) {
        return constant._text == other;
    }

private:
    std::string_view _text;
};

}  // namespace neb
