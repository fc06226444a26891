#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace neb {

namespace {

/// A row of table 3-7 of the Unicode standard, the well-formed UTF-8 byte sequences: the range of
/// the first byte, the length, and the range of the second byte. Further bytes are 80..BF.
struct SequenceForm {
    unsigned char firstLow, firstHigh;
    std::size_t length;
    unsigned char secondLow, secondHigh;
};

constexpr SequenceForm sequenceForms[] = {
    {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF}, {0xE1, 0xEC, 3, 0x80, 0xBF},
    {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF}, {0xF0, 0xF0, 4, 0x90, 0xBF},
    {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

constexpr std::string_view replacement = "\xEF\xBF\xBD";

/// Returns the number of ASCII bytes from `position` on.
std::size_t asciiRun(std::string_view bytes, std::size_t position) {
    std::size_t end = position;
    std::array<std::uint64_t, 4> blocks{};
    while (end + sizeof blocks <= bytes.size()) {
        std::memcpy(blocks.data(), bytes.data() + end, sizeof blocks);
        if (((blocks[0] | blocks[1] | blocks[2] | blocks[3]) & 0x8080808080808080ULL) != 0) {
            break;
        }
        end += sizeof blocks;
    }
    while (end < bytes.size() && static_cast<unsigned char>(bytes[end]) < 0x80) {
        ++end;
    }
    return end - position;
}

struct Sequence {
    std::size_t length;  // of the character, or of the bytes that one U+FFFD replaces
    bool isValid;
};

/// Reads the sequence at `position`, whose first byte is not ASCII.
Sequence sequenceAt(std::string_view bytes, std::size_t position) {
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned char first = byteAt(position);
    for (const SequenceForm& form : sequenceForms) {
        if (first < form.firstLow || first > form.firstHigh) {
            continue;
        }
        std::size_t length = 1;
        while (length < form.length && position + length < bytes.size()) {
            const unsigned char low = length == 1 ? form.secondLow : 0x80;
            const unsigned char high = length == 1 ? form.secondHigh : 0xBF;
            if (byteAt(position + length) < low || byteAt(position + length) > high) {
                break;
            }
            ++length;
        }
        return {length, length == form.length};
    }
    return {1, false};
}

/// Returns the position of the first invalid sequence, or the size if the text is valid.
std::size_t firstInvalid(std::string_view bytes) {
    std::size_t position = asciiRun(bytes, 0);
    while (position < bytes.size()) {
        const Sequence sequence = sequenceAt(bytes, position);
        if (!sequence.isValid) {
            return position;
        }
        position += sequence.length;
        position += asciiRun(bytes, position);
    }
    return position;
}

/// The space separators (class Zs) of Unicode other than the ASCII space.
constexpr std::string_view spaces[] = {
    "\xC2\xA0",                                                      // U+00A0 no-break space
    "\xE1\x9A\x80",                                                  // U+1680
    "\xE2\x80\x80", "\xE2\x80\x81", "\xE2\x80\x82", "\xE2\x80\x83",  // U+2000 to U+200A
    "\xE2\x80\x84", "\xE2\x80\x85", "\xE2\x80\x86", "\xE2\x80\x87",
    "\xE2\x80\x88", "\xE2\x80\x89", "\xE2\x80\x8A",
    "\xE2\x80\xAF",  // U+202F
    "\xE2\x81\x9F",  // U+205F
    "\xE3\x80\x80",  // U+3000 ideographic space
};

constexpr std::string_view lineEnds[] = {
    "\n", "\r", "\v", "\f", "\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9",
};

bool removeLineEndAtStart(std::string_view& text) {
    for (const std::string_view lineEnd : lineEnds) {
        if (text.starts_with(lineEnd)) {
            text.remove_prefix(lineEnd.size());
            return true;
        }
    }
    return false;
}

bool removeLineEndAtEnd(std::string_view& text) {
    for (const std::string_view lineEnd : lineEnds) {
        if (text.ends_with(lineEnd)) {
            text.remove_suffix(lineEnd.size());
            return true;
        }
    }
    return false;
}

}  // namespace

bool isUTF8(std::string_view bytes) {
    return firstInvalid(bytes) == bytes.size();
}

std::string textReplacingInvalidBytes(std::string_view bytes) {
    std::size_t valid = firstInvalid(bytes);
    std::string text(bytes.substr(0, valid));
    while (valid < bytes.size()) {
        bytes.remove_prefix(valid);
        text += replacement;
        bytes.remove_prefix(sequenceAt(bytes, 0).length);
        valid = firstInvalid(bytes);
        text += bytes.substr(0, valid);
    }
    return text;
}

std::size_t lengthOfCharacterAt(std::string_view text, std::size_t position) {
    if (static_cast<unsigned char>(text[position]) < 0x80) {
        return 1;
    }
    const Sequence sequence = sequenceAt(text, position);
    return sequence.isValid ? sequence.length : 0;
}

std::size_t lengthOfSpaceAt(std::string_view text, std::size_t position) {
    const std::string_view rest = text.substr(std::min(position, text.size()));
    if (rest.starts_with(' ') || rest.starts_with('\t')) {
        return 1;
    }
    if (rest.empty() || static_cast<unsigned char>(rest.front()) < 0x80) {
        return 0;
    }
    const auto* found =
        std::find_if(std::begin(spaces), std::end(spaces),
                     [rest](std::string_view space) { return rest.starts_with(space); });
    return found != std::end(spaces) ? found->size() : 0;
}

std::string_view textByTrimmingLineEnds(std::string_view text) {
    while (removeLineEndAtStart(text)) {
    }
    while (removeLineEndAtEnd(text)) {
    }
    return text;
}

std::string_view trimmed(std::string_view text, std::string_view characters) {
    const std::size_t first = text.find_first_not_of(characters);
    return first == std::string_view::npos
               ? std::string_view()
               : text.substr(first, text.find_last_not_of(characters) + 1 - first);
}

std::string lowercaseASCII(std::string_view text) {
    std::string lowercase(text);
    for (char& character : lowercase) {
        character = lowercaseASCII(character);
    }
    return lowercase;
}

bool equalIgnoringASCIICase(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return lowercaseASCII(a) == lowercaseASCII(b); });
}

}  // namespace neb
