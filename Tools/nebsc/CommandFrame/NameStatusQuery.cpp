#include "CommandFrame/NameStatusQuery.h"

#include "Session/GitProgram.h"

namespace neb::nebsc {

/// An entry is "LETTER[SCORE]" NUL "PATH" NUL; a renamed or copied file has its old path and a NUL
/// before the path.
std::vector<NameStatusEntry> nameStatusEntriesIn(std::string_view output) {
    std::vector<NameStatusEntry> entries;
    const std::vector<std::string> texts = splitAtNUL(output);
    std::size_t i = 0;
    while (i + 1 < texts.size() && !texts[i].empty()) {
        NameStatusEntry entry{.letter = texts[i].front(), .path = texts[i + 1]};
        i += 2;
        if (entry.letter == 'R' || entry.letter == 'C') {
            if (i == texts.size()) {
                break;
            }
            entry.oldPath = std::move(entry.path);
            entry.path = texts[i++];
        }
        entries.push_back(std::move(entry));
    }
    return entries;
}

NameStatusQuery::NameStatusQuery(std::shared_ptr<NEBSourceControlRequest> request,
                                 std::string_view dots)
    : NEBSourceControlTaskOperation(std::move(request)) {
    const NEBSourceControlRequest& diff = *this->request();
    setCurrentDirectoryPath(diff.sourceTree->location);
    std::vector<std::string> arguments{"diff", "--no-ext-diff", "--name-status", "-z",
                                       "--end-of-options"};
    std::string revisions(diff.startingRevision.string().value_or("HEAD"));
    if (const auto end = diff.endingRevision.string()) {
        revisions.append(dots).append(*end);
    }
    arguments.insert(arguments.end(), {std::move(revisions), "--"});
    for (std::size_t i = 0; i < diff.fileCount(); ++i) {
        arguments.push_back((*diff.files)[i].description());
    }
    setArguments(std::move(arguments));
    setWritesWholeBuffers(true);
}

std::string NameStatusQuery::launchPath() {
    return gitPath();
}

void NameStatusQuery::parseData() {
    _entries = nameStatusEntriesIn(data() ? data()->bytes() : std::string_view());
    setResult(NEBSourceControlResult());
}

}  // namespace neb::nebsc
