#include "CommandFrame/StatusQuery.h"

#include <utility>
#include <vector>

#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlPathQuoting.h"
#include "Platform/PathString.h"
#include "Terminal/StatusLabels.h"

namespace neb::nebsc {

namespace {

bool hasOldPath(const StatusEntry& entry) {
    const auto isMoved = [](char letter) { return letter == 'R' || letter == 'C'; };
    return isMoved(entry.index) || isMoved(entry.workTree);
}

}  // namespace

StatusQuery::StatusQuery(std::shared_ptr<NEBSourceControlRequest> request,
                         bool expandsUntrackedFolders)
    : EntryQuery(std::move(request)) {
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

/// An entry is "XY PATH" NUL; a renamed or copied file has its old path and a NUL after that.
std::optional<StatusEntry> StatusQuery::entryIn(std::string_view text) {
    constexpr std::size_t lettersAndBlankLength = 3;
    if (auto renamed = std::exchange(_renamed, std::nullopt)) {
        renamed->oldPath = text;
        return renamed;
    }
    if (text.size() <= lettersAndBlankLength) {
        return std::nullopt;
    }
    StatusEntry entry{.index = text.front(),
                      .workTree = text[1],
                      .path = std::string(text.substr(lettersAndBlankLength))};
    if (hasOldPath(entry)) {
        _renamed = std::move(entry);
        return std::nullopt;
    }
    const bool isIgnored = entry.letter() == '!';
    return isIgnored ? std::nullopt : std::optional(std::move(entry));
}

NEBDictionary StatusQuery::recordOf(const StatusEntry& entry) const {
    const std::string top = request()->sourceTree->location.value_or("");
    NEBDictionary record;
    record.reserve(2);
    record.set(NEBSourceControlOperationWCStatusKey, statusOfLetter(entry.letter()));
    record.set(NEBSourceControlOperationPathKey,
               NEBSourceControlPathText(pathByAppendingComponent(top, entry.path)));
    return record;
}

std::optional<NEBSourceControlError> StatusQuery::errorFromErrorMessage(
    const std::optional<std::string>& message) {
    constexpr std::string_view unreadable = "could not open directory";
    return message && message->find(unreadable) != std::string::npos
               ? NEBSourceControlErrorFromText(*message, *request())
               : NEBSourceControlTaskOperation::errorFromErrorMessage(message);
}

}  // namespace neb::nebsc
