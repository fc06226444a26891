#include "GitOperations/GitStatus.h"

#include <algorithm>

#include "NEBFoundation/NEBSourceControlManager.h"
#include "NEBFoundation/NEBSourceControlStatus.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Platform/PathString.h"
#include "Platform/Scanner.h"
#include "Platform/Text.h"

namespace neb {

namespace {

struct StatusLetter {
    std::string_view letter;
    std::uint32_t status;
};

constexpr StatusLetter statusLetters[] = {
    {"A", NEBSourceControlStatusAdded},    {"C", NEBSourceControlStatusRenamed},
    {"D", NEBSourceControlStatusDeleted},  {"M", NEBSourceControlStatusModified},
    {"R", NEBSourceControlStatusRenamed},  {"T", NEBSourceControlStatusModified},
    {"U", NEBSourceControlStatusConflict}, {"?", NEBSourceControlStatusUntracked},
};

/// The letters of both columns of a status.
const CharacterSet& statusCharacters() {
    static const CharacterSet set = CharacterSet::uppercaseLetters() | CharacterSet("?");
    return set;
}

/// Returns the new path of a rename ("old -> new"), without the quotes of a quoted path. Escapes
/// are kept.
std::string_view cleanedPath(std::string_view path) {
    constexpr std::string_view arrow = "-> ";
    if (const std::size_t position = path.find(arrow); position != std::string_view::npos) {
        path.remove_prefix(position + arrow.size());
    }
    if (path.starts_with('"')) {
        path.remove_prefix(1);
    }
    if (path.ends_with('"')) {
        path.remove_suffix(1);
    }
    return path;
}

}  // namespace

std::uint32_t nebgit_sourceControlStatus(std::string_view letters) {
    const std::string_view first = letters.substr(0, 1);
    const auto* row =
        std::find_if(std::begin(statusLetters), std::end(statusLetters),
                     [first](const StatusLetter& candidate) { return candidate.letter == first; });
    if (row != std::end(statusLetters)) {
        return row->status;
    }
    LOMLogAspect& aspect = NEBSourceControlManager::sourceControlLogAspect();
    if (aspect.logLevel != 0) {
        aspect._logAtLogLevel(1, "ERROR: status value not handled for WC: %@",
                              {std::string(letters)});
    }
    return 0;
}

GitStatusLines::GitStatusLines(std::string_view fullPath)
    : _front(fullPath.empty() ? "" : pathByAppendingComponent(fullPath, "")) {}

GitStatusLines::~GitStatusLines() {
    // The records need no spare capacity.
    static_cast<void>(_paths.take());
}

NEBValue GitStatusLines::fullPathOf(std::string_view path) {
    while (!_front.empty() && path.starts_with('/')) {
        path.remove_prefix(1);
    }
    char* const target = _paths.roomFor(_front.size() + path.size());
    _front.copy(target, _front.size());
    path.copy(target + _front.size(), path.size());
    const std::size_t start = _paths.data().size();
    _paths.add(_front.size() + path.size());
    return {_paths.data(), _paths.data().bytes().substr(start)};
}

std::optional<NEBDictionary> GitStatusLines::recordOf(std::string_view line) {
    Scanner scanner(line);
    scanner.skip(CharacterSet::whitespace());
    const std::string_view status = scanner.take(statusCharacters());
    if (status.empty()) {
        return std::nullopt;
    }
    scanner.skip(CharacterSet::whitespace());

    NEBDictionary record;
    record.reserve(2);
    record.set(NEBSourceControlOperationWCStatusKey, nebgit_sourceControlStatus(status));
    record.set(NEBSourceControlOperationPathKey, fullPathOf(cleanedPath(scanner.rest())));
    return record;
}

std::optional<NEBDictionary> GitOperation::parseForStatusAndPathWithLine(
    std::string_view line, std::string_view fullPath) {
    return GitStatusLines(fullPath).recordOf(line);
}

GitStatusOperation::GitStatusOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    std::vector<std::string> arguments{"status", "--porcelain"};
    const NEBValue& destination = this->request()->destination;
    if (destination.isPresent()) {
        arguments.insert(arguments.end(), {"--", destination.description()});
    }
    setArguments(std::move(arguments));
}

void GitStatusOperation::parseData() {
    const Data text = data() ? NEBSourceControlTextData(*data()) : Data();
    const auto& sourceTree = request()->sourceTree;
    NEBSourceControlResult records;
    if (sourceTree && sourceTree->isValid) {
        GitStatusLines lines(sourceTree->location.value_or(""));
        records.reserve(pieceCount(text, '\n'));
        forEachPiece(text, '\n', [&](std::string_view line) {
            if (auto record = lines.recordOf(line)) {
                records.push_back(std::move(*record));
            }
        });
    }
    setResult(std::move(records));
}

}  // namespace neb
