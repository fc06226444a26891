#include "GitOperations/GitShellText.h"

namespace neb {

namespace {

/// Beside the characters of the shell's grammar the braces: some shells that serve as /bin/sh
/// expand them too.
constexpr std::string_view special = ";&|<>()$`\"'\\#!{}";
constexpr std::string_view blanks = " \t";
constexpr std::string_view wildcards = "*?[]";

bool isIn(std::string_view characters, char character) {
    return characters.find(character) != std::string_view::npos;
}

std::string escaped(std::string_view text, bool isOneWord) {
    std::string result;
    bool isAtWordStart = true;
    for (const char character : text) {
        const bool isBlank = isIn(blanks, character);
        const bool isHomeFolder = character == '~' && isAtWordStart;
        if (character == '\n') {
            result += "'\n'";  // with a backslash in front it would be left out
        } else {
            const bool needsEscape = isIn(special, character) || isHomeFolder ||
                                     (isOneWord && (isBlank || isIn(wildcards, character)));
            result.append(needsEscape ? "\\" : "").push_back(character);
        }
        isAtWordStart = isBlank;
    }
    return result;
}

}  // namespace

std::string gitShellPattern(std::string_view text) {
    return escaped(text, false);
}

std::string gitShellWord(std::string_view text) {
    return escaped(text, true);
}

}  // namespace neb
