#include "Terminal/PrintableText.h"

#include <algorithm>

#include "Platform/Text.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view hexDigits = "0123456789abcdef";

std::string hexByte(unsigned char byte) {
    return {hexDigits[byte >> 4U], hexDigits[byte & 0xFU]};
}

std::string controlCharacter(unsigned char byte) {
    switch (byte) {
        case '\n':
            return "\\n";
        case '\t':
            return "\\t";
        case '\r':
            return "\\r";
        default:
            return "\\x" + hexByte(byte);
    }
}

bool isControlCharacter(unsigned char byte) {
    constexpr unsigned char firstPrintable = 0x20;
    constexpr unsigned char deletion = 0x7F;
    return byte < firstPrintable || byte == deletion;
}

bool isPrintableASCII(char character) {
    const auto byte = static_cast<unsigned char>(character);
    constexpr unsigned char firstBeyondASCII = 0x80;
    return byte < firstBeyondASCII && !isControlCharacter(byte);
}

/// Returns whether the valid UTF-8 text has one of U+0080 to U+009F at `offset`.
bool isC1(std::string_view text, std::size_t offset) {
    return text[offset] == '\xC2' && static_cast<unsigned char>(text[offset + 1]) < 0xA0;
}

/// Returns whether the character changes the direction of text: U+202A to U+202E, U+2066 to U+2069.
bool isDirectionControl(std::string_view character) {
    return (character >= "\xE2\x80\xAA" && character <= "\xE2\x80\xAE") ||
           (character >= "\xE2\x81\xA6" && character <= "\xE2\x81\xA9");
}

}  // namespace

std::string printable(std::string_view bytes) {
    if (std::all_of(bytes.begin(), bytes.end(), isPrintableASCII)) {
        return std::string(bytes);
    }
    std::string result;
    result.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size();) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        const std::size_t length = lengthOfCharacterAt(bytes, i);
        if (isControlCharacter(byte)) {
            result += controlCharacter(byte);
        } else if (length == 0) {
            result += "\\x" + hexByte(byte);
        } else if (isC1(bytes, i)) {
            result += "\\u00" + hexByte(static_cast<unsigned char>(bytes[i + 1]));
        } else if (isDirectionControl(bytes.substr(i, length))) {
            const auto second = static_cast<unsigned char>(bytes[i + 1]);
            const auto third = static_cast<unsigned char>(bytes[i + 2]);
            result += "\\u20" +
                      hexByte(static_cast<unsigned char>((second & 0x03U) << 6U | (third & 0x3FU)));
        } else {
            result += bytes.substr(i, length);
        }
        i += std::max<std::size_t>(length, 1);
    }
    return result;
}

std::string printableLine(std::string_view bytes) {
    const bool hasCR = bytes.ends_with('\r');
    bytes.remove_suffix(hasCR ? 1 : 0);
    std::string line;
    forEachField(bytes, '\t', [&line, &bytes](std::string_view part) {
        line.append(part.data() == bytes.data() ? "" : "\t").append(printable(part));
    });
    return line + (hasCR ? "\r" : "");
}

std::string inQuotes(std::string_view text) {
    return std::string("'").append(text).append("'");
}

}  // namespace neb::nebsc
