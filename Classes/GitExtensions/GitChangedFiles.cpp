#include "GitExtensions/GitChangedFiles.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "GitExtensions/GitRecordFields.h"
#include "Platform/Scanner.h"

namespace neb {

void GitChangedFiles::parsePiece(const Data& output, std::string_view piece) {
    if (isInsideEntry()) {
        addPath(output, piece);
        return;
    }
    // git prints a line end between a commit and its files.
    if (piece.starts_with('\n')) {
        piece.remove_prefix(1);
    }
    if (piece.starts_with(':')) {
        beginRawEntry(piece.substr(1));
    } else if (piece.find('\t') != std::string_view::npos) {
        beginCounts(output, piece);
    }
}

/// "MODE MODE ID ID STATE", where the state is a letter, and a score in per cent for a renamed or
/// copied file, whose original path comes first.
void GitChangedFiles::beginRawEntry(std::string_view entry) {
    Scanner scanner(entry);
    const auto takeField = [&scanner] {
        const std::string_view field = scanner.takeUpTo(' ');
        scanner.skipOne(' ');
        return field;
    };
    gitSetMode(_entry, NEBSourceControlOperationOldModeKey, takeField());
    gitSetMode(_entry, NEBSourceControlOperationNewModeKey, takeField());
    gitSetObjectID(_entry, NEBSourceControlOperationOldObjectIDKey, takeField());
    gitSetObjectID(_entry, NEBSourceControlOperationNewObjectIDKey, takeField());
    const std::string_view state = scanner.rest();
    gitSetState(_entry, NEBSourceControlOperationStateKey, state);
    gitSetSimilarity(_entry, state);
    _isOriginalNext = state.starts_with('R') || state.starts_with('C');
    _missingPaths = _isOriginalNext ? 2 : 1;
    _isCounts = false;
}

/// "ADDED TAB DELETED TAB PATH", with "-" for the counts of a binary file; the path is empty for a
/// renamed or copied file, whose two paths follow.
void GitChangedFiles::beginCounts(const Data& output, std::string_view entry) {
    Scanner scanner(entry);
    const std::string_view added = scanner.takeUpTo('\t');
    scanner.skipOne('\t');
    const std::string_view deleted = scanner.takeUpTo('\t');
    scanner.skipOne('\t');
    gitSetInteger(_entry, NEBSourceControlOperationAddedLinesKey, added);
    gitSetInteger(_entry, NEBSourceControlOperationDeletedLinesKey, deleted);
    if (added == "-") {
        _entry.set(NEBSourceControlOperationIsBinaryKey, true);
    }
    _isCounts = true;
    _isOriginalNext = scanner.rest().empty();
    _missingPaths = _isOriginalNext ? 2 : 1;
    if (!_isOriginalNext) {
        addPath(output, scanner.rest());
    }
}

void GitChangedFiles::addPath(const Data& output, std::string_view path) {
    const bool isOriginal = std::exchange(_isOriginalNext, false);
    gitSetName(_entry, isOriginal ? gitOriginalPathKeys : gitPathKeys, output, path);
    if (--_missingPaths == 0) {
        finishEntry();
    }
}

/// The counts come after all raw entries, and complete them. Only raw entries can repeat a path: an
/// unmerged file has two.
void GitChangedFiles::finishEntry() {
    NEBDictionary entry = std::exchange(_entry, {});
    const auto isSame = [&entry](const NEBDictionary& file) {
        return file.value(gitPathKeys.text) == entry.value(gitPathKeys.text) &&
               file.value(gitPathKeys.bytes) == entry.value(gitPathKeys.bytes);
    };
    const auto first = _files.begin() + static_cast<std::ptrdiff_t>(_countedFiles);
    const auto found = _isCounts ? std::find_if(first, _files.end(), isSame) : _files.end();
    if (found == _files.end()) {
        _files.push_back(std::move(entry));
    } else {
        found->addEntriesFrom(entry);
        _countedFiles = static_cast<std::size_t>(found - _files.begin()) + 1;
    }
}

std::vector<NEBValue> GitChangedFiles::take() {
    std::vector<NEBValue> values(std::make_move_iterator(_files.begin()),
                                 std::make_move_iterator(_files.end()));
    _files.clear();
    _countedFiles = 0;
    return values;
}

}  // namespace neb
