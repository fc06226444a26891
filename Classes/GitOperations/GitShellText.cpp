#include "GitOperations/GitShellText.h"

namespace neb {

namespace {

/// The characters of the shell's grammar, and braces, which some shells that are installed as
/// /bin/sh expand.
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
            result += "'\n'";  // the shell removes a line end after a backslash
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
