// ConstantLines.h - writes lines of text while the compiler runs.
//
//     constexpr auto facts = [] {
//         std::array<char, 100> text{};
//         ConstantLines lines(text.data());
//         lines.append("size of a pointer", sizeof(void*));
//         return text;
//     }();
//
// facts contains the text "size of a pointer=8\n". Neither std::string nor the functions that
// format numbers can be used in a constant expression of every compiler that is supported.
#pragma once

#include <cstddef>
#include <string_view>

namespace neb {

/// Writes lines of the form "NAME=VALUE" to an array, in a constant expression. More than the array
/// can hold is no constant expression, and so a compiler error.
///
/// The array belongs to the caller, and is often a member of an object that is being created. Lines
/// are in the order of the calls. Not thread-safe, which does not matter while a program is
/// compiled.
class ConstantLines {
public:
    /// Writes to an array that contains zeros and outlives this object. The text ends with a zero
    /// byte if the array is longer than the lines.
    constexpr explicit ConstantLines(char* begin) : _end(begin) {}

    /// Appends a line with this name and value, which contain no "=" or line feed.
    constexpr void append(std::string_view item, std::string_view value) {
        for (const std::string_view text : {item, std::string_view("="), value}) {
            for (const char character : text) {
                *_end++ = character;
            }
        }
        *_end++ = '\n';
    }
    /// Appends a line with this name and a decimal number without leading zeros. 20 digits are
    /// enough for every number of 64 bits.
    constexpr void append(std::string_view item, std::size_t value) {
        char digits[20] = {};
        std::size_t begin = sizeof digits;
        do {
            digits[--begin] = static_cast<char>('0' + value % 10);
            value /= 10;
        } while (value > 0);
        append(item, std::string_view(digits + begin, sizeof digits - begin));
    }

private:
    char* _end;  // behind the last line
};

}  // namespace neb
