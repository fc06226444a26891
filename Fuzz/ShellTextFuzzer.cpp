// Escapes names and reads the result with the rules of the shell grammar. An escaped name must be
// one argument with the bytes of the name. A pattern may differ from it only in spaces and
// wildcards.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "GitOperations/GitShellText.h"

namespace {

bool isIn(std::string_view characters, char character) {
    return characters.find(character) != std::string_view::npos;
}

/// Returns the text as the shell reads it. `plain` has the characters that may occur without
/// escape. Aborts at a character with a meaning for the shell.
std::string readByShell(std::string_view text, std::string_view plain) {
    constexpr std::string_view active = ";&|<>()$`\"#!{}*?[] \t\n";
    std::string read;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isAtWordStart = i == 0 || isIn(" \t", text[i - 1]);
        if (text[i] == '\\') {
            if (++i == text.size() || text[i] == '\n') {
                std::abort();
            }
        } else if (text.substr(i).starts_with("'\n'")) {
            ++i;
            read += '\n';
            ++i;
            continue;
        } else if (text[i] == '\'' || (text[i] == '~' && isAtWordStart) ||
                   (isIn(active, text[i]) && !isIn(plain, text[i]))) {
            std::abort();
        }
        read += text[i];
    }
    return read;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string name(reinterpret_cast<const char*>(data), size);
    if (readByShell(neb::gitShellWord(name), "") != name ||
        readByShell(neb::gitShellPattern(name), " \t*?[]") != name) {
        std::abort();
    }
    return 0;
}
