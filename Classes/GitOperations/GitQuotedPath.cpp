#include "GitOperations/GitQuotedPath.h"

#include "NEBFoundation/NEBSourceControlPathQuoting.h"
#include "Platform/Text.h"

namespace neb {

std::string gitTextOfPath(std::string_view printed) {
    return isUTF8(printed) ? std::string(printed)
                           : NEBSourceControlQuotedPath(NEBSourceControlUnquotedPath(printed));
}

std::string gitTextOfPathLines(std::string_view printed) {
    std::string text;
    text.reserve(printed.size() + printed.size() / 4);
    forEachPiece(printed, '\n', [&](std::string_view line) {
        text += line.data() == printed.data() ? "" : "\n";
        forEachPiece(line, '\t', [&](std::string_view column) {
            text += column.data() == line.data() ? "" : "\t";
            text += gitTextOfPath(column);
        });
    });
    return text;
}

}  // namespace neb
