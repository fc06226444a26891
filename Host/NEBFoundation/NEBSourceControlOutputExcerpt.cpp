#include "NEBFoundation/NEBSourceControlOutputExcerpt.h"

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

/// Returns the text without the warnings of git, which can be as many as there are files.
std::string withoutWarnings(std::string_view text) {
    std::string rest;
    for (std::size_t end = 0; !text.empty(); text.remove_prefix(end)) {
        end = std::min(text.find('\n'), text.size() - 1) + 1;
        rest += text.starts_with("warning: ") ? "" : text.substr(0, end);
    }
    return rest;
}

std::string markOf(std::size_t omittedBytes) {
    return "[" + std::to_string(omittedBytes) + " bytes are left out here]\n";
}

}  // namespace

std::string NEBSourceControlOutputExcerpt(std::string_view text) {
    if (text.size() <= NEBSourceControlLongestMessages) {
        return std::string(text);
    }
    constexpr std::size_t longestRest = NEBSourceControlLongestMessages - 64;  // beside the mark
    const std::string errors = withoutWarnings(text);
    if (!errors.empty() && errors.size() <= longestRest) {
        return markOf(text.size() - errors.size()) + errors;
    }
    // Warnings alone say what is wrong, too.
    const std::string_view rest = errors.empty() ? text : std::string_view(errors);
    const std::size_t end = endOfFirstPart(rest, longestRest / 2);
    const std::size_t start = startOfLastPart(rest, longestRest / 2);
    std::string excerpt(rest.substr(0, end));
    excerpt += excerpt.ends_with('\n') ? "" : "\n";
    excerpt += markOf(text.size() - rest.size() + start - end);
    return excerpt.append(rest.substr(start));
}

}  // namespace neb
