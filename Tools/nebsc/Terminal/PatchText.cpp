#include "Terminal/PatchText.h"

#include <unistd.h>

#include <algorithm>

#include "Platform/Text.h"
#include "Terminal/Colour.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

/// Colours a patch line by line.
class PatchColours {
public:
    [[nodiscard]] std::string line(const std::string& line) {
        if (line.starts_with("diff ")) {
            _isHeader = true;
        } else if (line.starts_with("@@")) {
            _isHeader = false;
            return hunkHeader(line);
        }
        return coloured(line, colourOf(line));
    }

private:
    /// Colours a hunk header up to its second "@@".
    [[nodiscard]] static std::string hunkHeader(const std::string& line) {
        const std::size_t end = line.find(" @@");
        const std::size_t after =
            end == std::string::npos ? end : line.find_first_not_of('@', end + 1);
        const std::size_t length = std::min(after, line.size());
        return coloured(line.substr(0, length), Colour::cyan) + line.substr(length);
    }
    /// In the header of a file, "---" and "+++" do not mark removed or added lines.
    [[nodiscard]] Colour colourOf(std::string_view line) const {
        if (_isHeader) {
            return line.starts_with("Binary files ") ? Colour::none : Colour::bold;
        }
        return line.starts_with('+')   ? Colour::green
               : line.starts_with('-') ? Colour::red
                                       : Colour::none;
    }

    bool _isHeader = false;
};

}  // namespace

std::string patchText(int descriptor, std::string_view patch, bool isColoured) {
    const bool isForTerminal = ::isatty(descriptor) == 1;
    if (!isForTerminal && !isColoured) {
        return std::string(patch);
    }
    std::string lines;
    PatchColours colours;
    if (patch.ends_with('\n')) {
        patch.remove_suffix(1);
    }
    forEachField(patch, '\n', [&](std::string_view text) {
        const std::string line = isForTerminal ? printableLine(text) : std::string(text);
        lines.append(isColoured ? colours.line(line) : line).append("\n");
    });
    return lines;
}

}  // namespace neb::nebsc
