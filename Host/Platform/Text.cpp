#include "Platform/Text.h"

#include <cstdint>
#include <cstring>

namespace neb {

namespace {

/// One row of the table of well-formed UTF-8 byte sequences in the Unicode standard (table 3-7):
/// the first byte's range, the length, and the second byte's range. Further bytes are 80..BF.
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

/// How many bytes from `position` on are plain ASCII.
std::size_t asciiRun(std::string_view bytes, std::size_t position) {
    std::size_t end = position;
    std::uint64_t word = 0;
    while (end + sizeof word <= bytes.size()) {
        std::memcpy(&word, bytes.data() + end, sizeof word);
        if ((word & 0x8080808080808080ULL) != 0) {
            break;
        }
        end += sizeof word;
    }
    while (end < bytes.size() && static_cast<unsigned char>(bytes[end]) < 0x80) {
        ++end;
    }
    return end - position;
}

struct Sequence {
    std::size_t length;  // of the character, or of the piece that one U+FFFD stands for
    bool isValid;
};

/// Reads the sequence whose first byte, no ASCII, is at `position`.
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

/// Where the first piece that is no UTF-8 begins; the size when there is none.
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

}  // namespace neb
