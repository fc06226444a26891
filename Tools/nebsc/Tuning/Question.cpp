#include "Tuning/Question.h"

#include <unistd.h>

#include <string>

#include "Platform/FileDescriptor.h"
#include "Platform/Text.h"
#include "Session/LineInput.h"

namespace neb::nebsc {

bool canAsk() {
    return ::isatty(STDIN_FILENO) == 1 && ::isatty(STDERR_FILENO) == 1;
}

std::optional<bool> ask(Interruption& interruption, std::string_view text) {
    static_cast<void>(writeAll(STDERR_FILENO, std::string(text) + " [y/N] "));
    const std::optional<InputLine> line = readInputLine(interruption);
    if (!line) {
        return std::nullopt;
    }
    const std::string answer = lowercaseASCII(trimmed(line->text));
    return answer == "y" || answer == "yes";
}

}  // namespace neb::nebsc
