// PatchText.h - a patch in the form for a terminal or a file.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace neb::nebsc {

/// Makes the text of one patch, which arrives in parts. Not thread-safe.
class PatchText {
public:
    /// For output to the descriptor, in git's colours if `isColoured`.
    PatchText(int descriptor, bool isColoured);

    /// Returns the text of the next lines. For a terminal and in colour, control characters of a
    /// terminal are made printable, invalid UTF-8 is replaced by U+FFFD, and the last line gets a
    /// line end. Otherwise the bytes are unchanged, so that a program can apply the patch.
    [[nodiscard]] std::string textOf(std::string lines);

private:
    [[nodiscard]] std::string colouredLine(const std::string& line);

    bool _isForTerminal;
    bool _isColoured;
    /// Whether the next line belongs to the header of a file.
    bool _isHeader = false;
    /// How many sides the hunk compares with the new one: one, or those of a merge.
    std::size_t _oldSides = 1;
};

}  // namespace neb::nebsc
