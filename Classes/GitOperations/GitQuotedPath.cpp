#include "GitOperations/GitQuotedPath.h"

#include "Platform/Text.h"

namespace neb {

std::string gitTextOfPath(std::string_view printed) {
    if (isUTF8(printed)) {
        return std::string(printed);
    }
    // A name that begins with a quote is printed in quotes too.
    const std::string_view quote = printed.starts_with('"') ? "" : "\"";
    std::string text(quote);
    for (const char character : printed) {
        if (static_cast<unsigned char>(character) < 0x80U) {
            text += character;
        } else {
            text += octalEscape(character);
        }
    }
    return text.append(quote);
}

std::string gitTextOfPathLines(std::string_view printed) {
    std::string text;
    text.reserve(printed.size() + printed.size() / 4);
    forEachField(printed, '\n', [&](std::string_view line) {
        text += line.data() == printed.data() ? "" : "\n";
        forEachField(line, '\t', [&](std::string_view column) {
            text += column.data() == line.data() ? "" : "\t";
            text += gitTextOfPath(column);
        });
    });
    return text;
}

}  // namespace neb
