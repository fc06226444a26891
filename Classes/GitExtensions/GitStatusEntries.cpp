#include "GitExtensions/GitStatusEntries.h"

#include "GitExtensions/GitChange.h"

namespace neb {

bool GitStatusEntry::isConflict() const {
    return index == 'U' || workingTree == 'U' ||
           (index == workingTree && (index == 'A' || index == 'D'));
}

char GitStatusEntry::letterOfFile() const {
    if (isConflict()) {
        return 'U';
    }
    return workingTree == ' ' ? index : workingTree;
}

char GitStatusEntry::letterOfIndex() const {
    if (isConflict()) {
        return 'U';
    }
    return index == ' ' ? workingTree : index;
}

std::vector<GitStatusEntry> gitStatusEntries(std::string_view output) {
    constexpr std::size_t pathStart = 3;
    std::vector<GitStatusEntry> entries;
    for (const std::string& piece : gitNULSeparatedPieces(output)) {
        if (piece.size() > pathStart) {
            entries.push_back(
                {.index = piece[0], .workingTree = piece[1], .path = piece.substr(pathStart)});
        }
    }
    return entries;
}

}  // namespace neb
