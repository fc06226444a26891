#include "CommandFrame/FileStates.h"

#include <algorithm>

#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb::nebsc {

namespace {

/// The path as git has it, whatever bytes it has.
std::string pathOf(const NEBDictionary& record) {
    const NEBValue& bytes = record.value(NEBSourceControlOperationPathBytesKey);
    return bytes.bytes() != nullptr ? std::string(bytes.bytes()->bytes())
                                    : std::string(record.text(NEBSourceControlOperationPathKey));
}

}  // namespace

std::string fileStateLines(const WorkingCopyLocation& workingCopy,
                           const NEBSourceControlResult& records, NEBConstant state) {
    std::size_t width = 0;
    for (const NEBDictionary& record : records) {
        width = std::max(width, record.text(state).size());
    }
    std::string lines;
    for (const NEBDictionary& record : records) {
        const std::string path = pathOf(record);
        if (!path.empty()) {
            const std::string_view label = record.text(state);
            lines.append("    ").append(label).append(width - label.size() + 2, ' ');
            lines.append(shownPath(workingCopy, path)).append("\n");
        }
    }
    return lines;
}

}  // namespace neb::nebsc
