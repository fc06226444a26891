#include "CommandFrame/TreeQuery.h"

#include <utility>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlPathQuoting.h"
#include "Platform/Scanner.h"

namespace neb::nebsc {

TreeQuery::TreeQuery(std::shared_ptr<NEBSourceControlRequest> request, const std::string& object)
    : EntryQuery(std::move(request)) {
    setCurrentDirectoryPath(this->request()->sourceTree->location);
    setArguments({"ls-tree", "--full-tree", "-z", object});
    setWritesWholeBuffers(true);
}

/// An entry is "MODE TYPE OBJECT" TAB "NAME" NUL.
std::optional<TreeEntry> TreeQuery::entryIn(std::string_view text) {
    Scanner scanner(text);
    scanner.takeUpToSpace();  // the mode
    scanner.skipSpace();
    const bool isFile = scanner.takeUpToSpace() == "blob";
    return TreeEntry{.name = std::string(text.substr(text.find('\t') + 1)), .isFile = isFile};
}

NEBDictionary TreeQuery::recordOf(const TreeEntry& entry) const {
    NEBDictionary record;
    record.reserve(2);
    record.set(NEBSourceControlOperationIsLeafKey, entry.isFile);
    record.set(NEBSourceControlOperationNameKey, NEBSourceControlPathText(entry.name));
    return record;
}

}  // namespace neb::nebsc
