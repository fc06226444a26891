#include "Platform/TextEnds.h"

#include <algorithm>

namespace neb {

namespace {

/// Whether the byte continues a character of UTF-8.
bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// Returns the offset of the first character at or after `offset`. Searches no further than a
/// character is long, because the bytes may not be UTF-8.
std::size_t nextCharacter(std::string_view text, std::size_t offset) {
    constexpr std::size_t longestContinuation = 3;
    const std::size_t last = std::min(offset + longestContinuation, text.size());
    while (offset < last && isContinuation(text[offset])) {
        ++offset;
    }
    return offset;
}

/// How far from the limit of a part a line end is searched, in bytes.
constexpr std::size_t longestUncutLine = 4096;

/// Returns where the first part ends, which has at most about `limit` bytes.
std::size_t endOfFirstPart(std::string_view text, std::size_t limit) {
    const std::size_t searchStart = limit - longestUncutLine;
    const std::size_t lineEnd = text.substr(searchStart, longestUncutLine).rfind('\n');
    return lineEnd == std::string_view::npos ? nextCharacter(text, limit)
                                             : searchStart + lineEnd + 1;
}

/// Returns where the last part starts, which has at most `limit` bytes.
std::size_t startOfLastPart(std::string_view text, std::size_t limit) {
    const std::size_t start = text.size() - limit;
    const std::size_t lineEnd = text.substr(start - 1, longestUncutLine).find('\n');
    return lineEnd == std::string_view::npos ? nextCharacter(text, start) : start + lineEnd;
}

}  // namespace

TextEnds endsOf(std::string_view text, std::size_t limit) {
    return {.first = text.substr(0, endOfFirstPart(text, limit / 2)),
            .last = text.substr(startOfLastPart(text, limit / 2))};
}

}  // namespace neb
