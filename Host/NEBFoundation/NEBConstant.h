// NEBConstant.h - the texts by which the host and its plug-ins name things.
#pragma once

#include <string>
#include <string_view>

namespace neb {

/// A text with the life of the process, made from a literal only. So a dictionary can hold it as a
/// key without a copy.
class NEBConstant {
public:
    template <std::size_t size>
    consteval explicit NEBConstant(const char (&literal)[size]) : _text(literal, size - 1) {
        static_assert(size <= 255, "a dictionary notes the length of a key in one byte");
    }

    [[nodiscard]] constexpr std::string_view text() const { return _text; }
    constexpr operator std::string_view() const { return _text; }
    explicit operator std::string() const { return std::string(_text); }

    friend constexpr bool operator==(NEBConstant constant, std::string_view other) {
        return constant._text == other;
    }

private:
    std::string_view _text;
};

}  // namespace neb
