#include "Terminal/Colour.h"

#include <unistd.h>

#include <array>
#include <cstdlib>

namespace neb::nebsc {

namespace {

struct ColourSequence {
    Colour colour;
    std::string_view sequence;
};

constexpr std::array<ColourSequence, 13> colourSequences{{
    {Colour::bold, "\x1b[1m"},
    {Colour::red, "\x1b[31m"},
    {Colour::boldRed, "\x1b[1;31m"},
    {Colour::green, "\x1b[32m"},
    {Colour::boldGreen, "\x1b[1;32m"},
    {Colour::yellow, "\x1b[33m"},
    {Colour::boldYellow, "\x1b[1;33m"},
    {Colour::blue, "\x1b[34m"},
    {Colour::boldBlue, "\x1b[1;34m"},
    {Colour::magenta, "\x1b[35m"},
    {Colour::boldMagenta, "\x1b[1;35m"},
    {Colour::cyan, "\x1b[36m"},
    {Colour::boldCyan, "\x1b[1;36m"},
}};

}  // namespace

bool wantsColour(Colours colours, int descriptor) {
    if (colours != Colours::automatic) {
        return colours == Colours::always;
    }
    const auto variable = [](const char* name) {
        const char* value = std::getenv(name);
        return std::string_view(value == nullptr ? "" : value);
    };
    return ::isatty(descriptor) == 1 && variable("NO_COLOR").empty() && variable("TERM") != "dumb";
}

std::string coloured(std::string_view text, Colour colour) {
    for (const ColourSequence& row : colourSequences) {
        if (row.colour == colour) {
            return std::string(row.sequence).append(text).append("\x1b[0m");
        }
    }
    return std::string(text);
}

}  // namespace neb::nebsc
