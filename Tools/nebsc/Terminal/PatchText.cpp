#include "Terminal/PatchText.h"

#include <unistd.h>

#include <algorithm>

#include "Platform/Text.h"
#include "Terminal/Colour.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

/// Colours a hunk header up to its second "@@".
std::string colouredHunkHeader(const std::string& line) {
    const std::size_t end = line.find(" @@");
    const std::size_t after = end == std::string::npos ? end : line.find_first_not_of('@', end + 1);
    const std::size_t length = std::min(after, line.size());
    return coloured(line.substr(0, length), Colour::cyan) + line.substr(length);
}

Colour colourOfHeader(std::string_view line) {
    return line.starts_with("Binary files ") ? Colour::none : Colour::bold;
}

/// A line of a hunk begins with a sign for each old side. None is both "+" and "-".
Colour colourInHunk(std::string_view line, std::size_t oldSides) {
    const std::string_view signs = line.substr(0, oldSides);
    return signs.find('+') != std::string_view::npos   ? Colour::green
           : signs.find('-') != std::string_view::npos ? Colour::red
                                                       : Colour::none;
}

}  // namespace

PatchText::PatchText(int descriptor, bool isColoured)
    : _isForTerminal(::isatty(descriptor) == 1), _isColoured(isColoured) {}

/// In the header of a file, "---" and "+++" do not mark removed or added lines.
std::string PatchText::colouredLine(const std::string& line) {
    if (line.starts_with("diff ")) {
        _isHeader = true;
    } else if (line.starts_with("@@")) {
        _isHeader = false;
        _oldSides = std::min(line.find_first_not_of('@'), line.size()) - 1;
        return colouredHunkHeader(line);
    }
    return coloured(line, _isHeader ? colourOfHeader(line) : colourInHunk(line, _oldSides));
}

std::string PatchText::textOf(std::string lines) {
    if ((!_isForTerminal && !_isColoured) || lines.empty()) {
        return lines;
    }
    const std::string valid = textReplacingInvalidBytes(lines);
    std::string_view rest = valid;
    rest.remove_suffix(rest.ends_with('\n') ? 1 : 0);
    std::string text;
    forEachField(rest, '\n', [&](std::string_view field) {
        const std::string line = _isForTerminal ? printableLine(field) : std::string(field);
        text.append(_isColoured ? colouredLine(line) : line).append("\n");
    });
    return text;
}

}  // namespace neb::nebsc
