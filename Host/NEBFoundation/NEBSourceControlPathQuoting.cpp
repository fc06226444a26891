#include "NEBFoundation/NEBSourceControlPathQuoting.h"

#include <algorithm>
#include <array>

#include "Platform/Text.h"

namespace neb {

namespace {

struct Escape {
    char letter, byte;
};

/// The escapes with a letter; every other byte that needs an escape has an octal one.
constexpr std::array<Escape, 9> escapes{{{'a', '\a'},
                                         {'b', '\b'},
                                         {'f', '\f'},
                                         {'n', '\n'},
                                         {'r', '\r'},
                                         {'t', '\t'},
                                         {'v', '\v'},
                                         {'"', '"'},
                                         {'\\', '\\'}}};

constexpr std::size_t octalDigits = 3;

bool isOctal(std::string_view digits) {
    return digits.size() == octalDigits && digits.front() <= '3' &&
           digits.find_first_not_of("01234567") == std::string_view::npos;
}

char byteOfOctal(std::string_view digits) {
    unsigned value = 0;
    for (const char digit : digits) {
        value = value * 8 + static_cast<unsigned>(digit - '0');
    }
    return static_cast<char>(static_cast<unsigned char>(value));
}

}  // namespace

std::string NEBSourceControlUnquotedPath(std::string_view text) {
    if (text.find('\\') == std::string_view::npos) {
        return std::string(text);
    }
    text.remove_prefix(text.starts_with('"') ? 1 : 0);
    std::string path;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '"' && i + 1 == text.size()) {
            break;  // the closing quote; one inside the name has a backslash
        }
        if (text[i] != '\\' || i + 1 == text.size()) {
            path += text[i];
            continue;
        }
        const char letter = text[++i];
        const auto* row =
            std::find_if(escapes.begin(), escapes.end(),
                         [letter](const Escape& escape) { return escape.letter == letter; });
        if (row != escapes.end()) {
            path += row->byte;
        } else if (isOctal(text.substr(i, octalDigits))) {
            path += byteOfOctal(text.substr(i, octalDigits));
            i += octalDigits - 1;
        } else {
            path.append("\\").append(1, letter);
        }
    }
    return path;
}

std::string NEBSourceControlQuotedPath(std::string_view path) {
    std::string text = "\"";
    for (const char byte : path) {
        const auto* row =
            std::find_if(escapes.begin(), escapes.end(),
                         [byte](const Escape& escape) { return escape.byte == byte; });
        if (row != escapes.end()) {
            text.append("\\").append(1, row->letter);
        } else if (byte < ' ' || byte > '~') {
            text += octalEscape(byte);
        } else {
            text += byte;
        }
    }
    return text + "\"";
}

std::string NEBSourceControlPathText(std::string_view path) {
    return isUTF8(path) ? std::string(path) : NEBSourceControlQuotedPath(path);
}

}  // namespace neb
