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

/// The size of a buffer of paths. It never grows, as that could move it: another thread may already
/// read the records that refer to it.
constexpr std::size_t pathsPerBuffer = 1U << 16;

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

NEBValue GitStatusLines::fullPathOf(std::string_view path) {
    while (!_front.empty() && path.starts_with('/')) {
        path.remove_prefix(1);
    }
    const std::size_t size = _front.size() + path.size();
    if (_paths.room() < size) {
        _paths = GrowingData();  // the records keep the former one
        static_cast<void>(_paths.roomFor(std::max(size, pathsPerBuffer)));
    }
    char* const target = _paths.roomFor(size);
    _front.copy(target, _front.size());
    path.copy(target + _front.size(), path.size());
    const std::size_t start = _paths.data().size();
    _paths.add(size);
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

void GitStatusParser::parseLine(const Data& text, std::string_view line,
                                NEBSourceControlResult& records) {
    static_cast<void>(text);
    if (auto record = _lines.recordOf(line)) {
        records.push_back(std::move(*record));
    }
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

/// A source tree that is not valid has no paths, so that its lines are not parsed.
std::unique_ptr<NEBSourceControlRecordParser> GitStatusOperation::makeRecordParser() {
    const auto& sourceTree = request()->sourceTree;
    return sourceTree && sourceTree->isValid
               ? std::make_unique<GitStatusParser>(sourceTree->location.value_or(""))
               : nullptr;
}

void GitStatusOperation::parseData() {
    setResult(NEBSourceControlResult());
    GitOperation::parseData();
}

}  // namespace neb
