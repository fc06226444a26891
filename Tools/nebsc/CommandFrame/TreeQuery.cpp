#include "CommandFrame/TreeQuery.h"

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlPathQuoting.h"
#include "Platform/Scanner.h"
#include "Platform/Text.h"
#include "Session/GitProgram.h"

namespace neb::nebsc {

/// An entry is "MODE TYPE OBJECT" TAB "NAME" NUL.
std::vector<TreeEntry> treeEntriesIn(std::string_view output) {
    std::vector<TreeEntry> entries;
    for (const std::string& text : splitAtNUL(output)) {
        Scanner scanner(text);
        scanner.takeUpToSpace();  // the mode
        scanner.skipSpace();
        const bool isFile = scanner.takeUpToSpace() == "blob";
        entries.push_back({.name = text.substr(text.find('\t') + 1), .isFile = isFile});
    }
    return entries;
}

TreeQuery::TreeQuery(std::shared_ptr<NEBSourceControlRequest> request, const std::string& object)
    : NEBSourceControlTaskOperation(std::move(request)) {
    setCurrentDirectoryPath(this->request()->sourceTree->location);
    setArguments({"ls-tree", "--full-tree", "-z", object});
    setWritesWholeBuffers(true);
}

std::string TreeQuery::launchPath() {
    return gitPath();
}

void TreeQuery::parseData() {
    _entries = treeEntriesIn(data() ? data()->bytes() : std::string_view());
    NEBSourceControlResult records;
    records.reserve(_entries.size());
    for (const TreeEntry& entry : _entries) {
        NEBDictionary record;
        record.reserve(2);
        record.set(NEBSourceControlOperationIsLeafKey, entry.isFile);
        record.set(NEBSourceControlOperationNameKey, NEBSourceControlPathText(entry.name));
        records.push_back(std::move(record));
    }
    setResult(std::move(records));
}

}  // namespace neb::nebsc
