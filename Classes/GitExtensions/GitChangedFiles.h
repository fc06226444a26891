// GitChangedFiles.h - the raw format and the counts of lines of a difference; see the raw output
// format in git-diff-tree(1), and --numstat and -z in git-diff(1).
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBDictionary.h"
#include "Platform/Data.h"

namespace neb {

/// Reads the pieces between NUL bytes of `git diff --raw --numstat -z --no-abbrev`, or of one of
/// the two. Not thread-safe.
///
/// The dictionary of a file has NEBSourceControlOperationPathKey; of a renamed or copied one
/// NEBSourceControlOperationOriginalPathKey. From the raw format:
/// NEBSourceControlOperationStateKey ("added", "copied", "deleted", "modified", "renamed",
/// "type changed", "conflict"), NEBSourceControlOperationSimilarityKey in per cent, and of each
/// side that exists NEBSourceControlOperationOldModeKey, NEBSourceControlOperationNewModeKey,
/// NEBSourceControlOperationOldObjectIDKey, NEBSourceControlOperationNewObjectIDKey. From the
/// counts: NEBSourceControlOperationAddedLinesKey and NEBSourceControlOperationDeletedLinesKey, or
/// NEBSourceControlOperationIsBinaryKey.
class GitChangedFiles {
public:
    /// Whether the next piece is a path of the current entry, whatever it begins with.
    [[nodiscard]] bool isInsideEntry() const { return _missingPaths > 0; }
    /// Reads a piece, which lies within `output`. Skips a piece that begins no entry.
    void parsePiece(const Data& output, std::string_view piece);
    /// Returns the dictionaries of the complete entries, and forgets them.
    [[nodiscard]] std::vector<NEBValue> take();

private:
    void beginRawEntry(std::string_view entry);
    void beginCounts(const Data& output, std::string_view entry);
    void addPath(const Data& output, std::string_view path);
    void finishEntry();

    NEBDictionary _entry;
    int _missingPaths = 0;
    bool _isOriginalNext = false;
    bool _isCounts = false;  // of lines
    std::vector<NEBDictionary> _files;
    std::size_t _countedFiles = 0;
};

}  // namespace neb
