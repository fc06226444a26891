#include "CommandFrame/FileLines.h"

#include "CommandFrame/RecordNames.h"
#include "Terminal/StatusLabels.h"

namespace neb::nebsc {

std::string linesOfFiles(const NEBSourceControlResult& records,
                         const WorkingCopyLocation& workingCopy, bool isColoured) {
    std::string lines;
    for (const NEBDictionary& record : records) {
        const NEBValue& state = record.value(NEBSourceControlOperationWCStatusKey);
        const std::string path(bytesOfName(record, pathKeys));
        lines += statusColumn(state, isColoured) + shownPath(workingCopy, path) + "\n";
    }
    return lines;
}

}  // namespace neb::nebsc
