#include "CommandFrame/StatusQuery.h"

#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlPathQuoting.h"
#include "Platform/PathString.h"
#include "Session/GitProgram.h"
#include "Terminal/StatusLabels.h"

namespace neb::nebsc {

namespace {

/// An entry is "XY PATH" NUL; a renamed or copied file has its old path and a NUL after that.
constexpr std::size_t lettersAndBlankLength = 3;

bool hasOldPath(const StatusEntry& entry) {
    const auto isMoved = [](char letter) { return letter == 'R' || letter == 'C'; };
    return isMoved(entry.index) || isMoved(entry.workTree);
}

/// Removes and returns the text before the next NUL; absent if no NUL follows.
std::optional<std::string_view> takeText(std::string_view& output) {
    const std::size_t end = output.find('\0');
    if (end == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view text = output.substr(0, end);
    output.remove_prefix(end + 1);
    return text;
}

}  // namespace

std::vector<StatusEntry> statusEntriesIn(std::string_view output) {
    std::vector<StatusEntry> entries;
    while (const auto text = takeText(output)) {
        if (text->size() <= lettersAndBlankLength) {
            continue;
        }
        StatusEntry entry{.index = text->front(),
                          .workTree = (*text)[1],
                          .path = std::string(text->substr(lettersAndBlankLength))};
        if (hasOldPath(entry)) {
            entry.oldPath = takeText(output);
        }
        if (entry.letter() != '!') {  // ignored
            entries.push_back(std::move(entry));
        }
    }
    return entries;
}

StatusQuery::StatusQuery(std::shared_ptr<NEBSourceControlRequest> request,
                         bool expandsUntrackedFolders, bool makesRecords)
    : NEBSourceControlTaskOperation(std::move(request)), _makesRecords(makesRecords) {
    setCurrentDirectoryPath(this->request()->sourceTree->location);
    std::vector<std::string> arguments{"status", "--porcelain", "-z"};
    if (expandsUntrackedFolders) {
        arguments.emplace_back("--untracked-files=all");
    }
    if (const auto path = this->request()->destination.string()) {
        arguments.insert(arguments.end(), {"--", std::string(*path)});
    }
    setArguments(std::move(arguments));
}

std::string StatusQuery::launchPath() {
    return gitPath();
}

void StatusQuery::parseData() {
    _entries = statusEntriesIn(data() ? data()->bytes() : std::string_view());
    NEBSourceControlResult records;
    if (!_makesRecords) {
        setResult(std::move(records));
        return;
    }
    const std::string top = request()->sourceTree->location.value_or("");
    records.reserve(_entries.size());
    for (const StatusEntry& entry : _entries) {
        NEBDictionary record;
        record.reserve(2);
        record.set(NEBSourceControlOperationWCStatusKey, statusOfLetter(entry.letter()));
        record.set(NEBSourceControlOperationPathKey,
                   NEBSourceControlPathText(pathByAppendingComponent(top, entry.path)));
        records.push_back(std::move(record));
    }
    setResult(std::move(records));
}

std::optional<NEBSourceControlError> StatusQuery::errorFromErrorMessage(
    const std::optional<std::string>& message) {
    constexpr std::string_view unreadable = "could not open directory";
    return message && message->find(unreadable) != std::string::npos
               ? NEBSourceControlErrorFromText(*message, *request())
               : NEBSourceControlTaskOperation::errorFromErrorMessage(message);
}

}  // namespace neb::nebsc
