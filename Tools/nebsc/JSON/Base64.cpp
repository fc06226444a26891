#include "JSON/Base64.h"

#include <algorithm>
#include <cstdint>

namespace neb::nebsc {

namespace {

constexpr std::string_view digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t bytesPerGroup = 3;
constexpr std::size_t digitsPerGroup = 4;
constexpr unsigned bitsPerByte = 8;
constexpr unsigned bitsPerDigit = 6;

}  // namespace

void appendBase64(std::string& text, std::string_view bytes) {
    text.reserve(text.size() + (bytes.size() + 2) / bytesPerGroup * digitsPerGroup);
    for (std::size_t start = 0; start < bytes.size(); start += bytesPerGroup) {
        const std::string_view group = bytes.substr(start, bytesPerGroup);
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < bytesPerGroup; ++i) {
            bits = bits << bitsPerByte |
                   (i < group.size() ? static_cast<unsigned char>(group[i]) : 0U);
        }
        for (std::size_t i = 0; i < digitsPerGroup; ++i) {
            const std::size_t shift = (digitsPerGroup - 1 - i) * bitsPerDigit;
            text += i <= group.size() ? digits[bits >> shift & 0x3FU] : '=';
        }
    }
}

std::optional<std::string> bytesOfBase64(std::string_view text) {
    if (text.size() % digitsPerGroup != 0) {
        return std::nullopt;
    }
    const std::size_t padding =
        std::min<std::size_t>(text.size() - (text.find_last_not_of('=') + 1), text.size());
    if (padding >= bytesPerGroup) {
        return std::nullopt;
    }
    std::string bytes;
    bytes.reserve(text.size() / digitsPerGroup * bytesPerGroup);
    std::uint32_t bits = 0;
    unsigned bitCount = 0;
    for (const char digit : text.substr(0, text.size() - padding)) {
        const std::size_t value = digits.find(digit);
        if (value == std::string_view::npos) {
            return std::nullopt;
        }
        bits = bits << bitsPerDigit | static_cast<std::uint32_t>(value);
        bitCount += bitsPerDigit;
        if (bitCount >= bitsPerByte) {
            bitCount -= bitsPerByte;
            bytes += static_cast<char>(bits >> bitCount & 0xFFU);
        }
    }
    const bool isCanonical = (bits & ((1U << bitCount) - 1)) == 0;
    return isCanonical ? std::optional(std::move(bytes)) : std::nullopt;
}

}  // namespace neb::nebsc
