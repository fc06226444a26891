#include "GitExtensions/GitPatch.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "GitExtensions/GitRecordFields.h"
#include "Platform/Scanner.h"

namespace neb {

namespace {

constexpr std::string_view fileMark = "diff --git ";
constexpr std::string_view hunkMark = "@@ -";

/// Returns the name in a line "--- a/NAME"; git appends a TAB to a name with blanks. Empty for a
/// side on which the file does not exist.
std::string nameOfSide(std::string_view text, std::string_view prefix) {
    if (text.ends_with('\t')) {
        text.remove_suffix(1);
    }
    const std::string name = gitUnquotedName(text);
    return name.starts_with(prefix) ? name.substr(prefix.size()) : std::string();
}

/// Returns the name in "a/NAME b/NAME", where both are quoted or none is. Empty if they differ:
/// then other lines have the names.
std::string nameOfBothSides(std::string_view names) {
    const std::size_t half = names.size() / 2;
    const std::string before = gitUnquotedName(names.substr(0, half));
    const std::string after = gitUnquotedName(names.substr(std::min(half + 1, names.size())));
    constexpr std::size_t prefixSize = 2;  // "a/", "b/"
    const bool isName = before.starts_with("a/") && after.starts_with("b/") &&
                        before.substr(prefixSize) == after.substr(prefixSize);
    return isName ? before.substr(prefixSize) : std::string();
}

void setIDs(NEBDictionary& file, std::string_view value) {
    constexpr std::string_view dots = "..";
    const std::size_t middle = value.find(dots);
    if (middle == std::string_view::npos) {
        return;
    }
    std::string_view after = value.substr(middle + dots.size());
    const std::size_t blank = after.find(' ');
    if (blank != std::string_view::npos) {
        gitSetMode(file, NEBSourceControlOperationOldModeKey, after.substr(blank + 1));
        gitSetMode(file, NEBSourceControlOperationNewModeKey, after.substr(blank + 1));
    }
    gitSetObjectID(file, NEBSourceControlOperationOldObjectIDKey, value.substr(0, middle));
    gitSetObjectID(file, NEBSourceControlOperationNewObjectIDKey, after.substr(0, blank));
}

constexpr std::string_view added = "added";
constexpr std::string_view deleted = "deleted";
constexpr std::string_view modified = "modified";
constexpr std::string_view renamed = "renamed";
constexpr std::string_view copied = "copied";

/// A line "TEXT VALUE" between the names and the hunks of a file, and the state that it stands for.
struct FileLine {
    std::string_view text;
    std::string_view state;
    void (*set)(NEBDictionary& file, std::string_view value);
};

template <const NEBConstant& key>
void setMode(NEBDictionary& file, std::string_view value) {
    gitSetMode(file, key, value);
}
template <const GitNameKeys& keys>
void setName(NEBDictionary& file, std::string_view value) {
    gitSetQuotedName(file, keys, value);
}
void setSimilarity(NEBDictionary& file, std::string_view value) {
    gitSetInteger(file, NEBSourceControlOperationSimilarityKey, value.substr(0, value.find('%')));
}

constexpr FileLine fileLines[] = {
    {"old mode ", {}, setMode<NEBSourceControlOperationOldModeKey>},
    {"new mode ", {}, setMode<NEBSourceControlOperationNewModeKey>},
    {"deleted file mode ", deleted, setMode<NEBSourceControlOperationOldModeKey>},
    {"new file mode ", added, setMode<NEBSourceControlOperationNewModeKey>},
    {"copy from ", copied, setName<gitOriginalPathKeys>},
    {"copy to ", copied, setName<gitPathKeys>},
    {"rename from ", renamed, setName<gitOriginalPathKeys>},
    {"rename to ", renamed, setName<gitPathKeys>},
    {"similarity index ", {}, setSimilarity},
    {"index ", {}, setIDs},
};

/// Returns and skips "NUMBER" or "NUMBER,COUNT"; the count is 1 by default.
std::pair<std::int64_t, std::int64_t> takeRange(Scanner& scanner) {
    const std::int64_t start = scanner.takeInteger().value_or(0);
    std::int64_t count = 1;
    if (scanner.rest().starts_with(',')) {
        scanner.skipOne(',');
        count = scanner.takeInteger().value_or(0);
    }
    return {start, count};
}

}  // namespace

void GitPatchParser::parsePiece(const Data& output, std::string_view line,
                                NEBSourceControlResult& records) {
    const bool isNote = line.starts_with('\\');
    if (_isInHunk && (_missingOldLines > 0 || _missingNewLines > 0 || isNote)) {
        addHunkLine(output, line);
        return;
    }
    finishHunk();
    if (line.starts_with(fileMark)) {
        finishFile(records);
        beginFile(line.substr(fileMark.size()));
    } else if (_isInFile && line.starts_with(hunkMark)) {
        beginHunk(output, line.substr(hunkMark.size()));
    } else if (_isInFile) {
        parseFileLine(line);
    }
}

void GitPatchParser::parseLastPiece(const Data& /*output*/, std::string_view /*line*/,
                                    NEBSourceControlResult& records) {
    finishHunk();
    finishFile(records);
}

// ---- a file -----------------------------------------------------------------------------------

void GitPatchParser::beginFile(std::string_view names) {
    _isInFile = true;
    _state = modified;
    gitSetName(_file, gitPathKeys, nameOfBothSides(names));
}

void GitPatchParser::parseFileLine(std::string_view line) {
    if (line.starts_with("--- ") || line.starts_with("+++ ")) {
        const std::string name = nameOfSide(line.substr(4), line.starts_with('-') ? "a/" : "b/");
        if (!name.empty() && _state != renamed && _state != copied) {
            gitSetName(_file, gitPathKeys, name);
        }
        return;
    }
    if (line.starts_with("Binary files ")) {
        _isBinary = true;
        return;
    }
    for (const FileLine& row : fileLines) {
        if (line.starts_with(row.text)) {
            row.set(_file, line.substr(row.text.size()));
            _state = row.state.empty() ? _state : row.state;
        }
    }
}

void GitPatchParser::finishFile(NEBSourceControlResult& records) {
    if (!std::exchange(_isInFile, false)) {
        return;
    }
    NEBDictionary& record = records.emplace_back(std::exchange(_file, {}));
    record.set(NEBSourceControlOperationStateKey, _state);
    if (std::exchange(_isBinary, false)) {
        record.set(NEBSourceControlOperationIsBinaryKey, true);
    } else {
        record.set(NEBSourceControlOperationAddedLinesKey, std::exchange(_addedLines, 0));
        record.set(NEBSourceControlOperationDeletedLinesKey, std::exchange(_deletedLines, 0));
        record.set(NEBSourceControlOperationHunksKey, std::exchange(_hunks, {}));
    }
}

// ---- a hunk -----------------------------------------------------------------------------------

/// "OLD,COUNT +NEW,COUNT @@ HEADING", without its start.
void GitPatchParser::beginHunk(const Data& output, std::string_view line) {
    Scanner scanner(line);
    const auto [oldStart, oldCount] = takeRange(scanner);
    scanner.skipOne(' ');
    scanner.skipOne('+');
    const auto [newStart, newCount] = takeRange(scanner);
    constexpr std::string_view end = " @@ ";
    std::string_view heading = scanner.rest();
    heading.remove_prefix(heading.starts_with(end) ? end.size() : heading.size());
    _isInHunk = true;
    _missingOldLines = oldCount;
    _missingNewLines = newCount;
    _hunk.set(NEBSourceControlOperationOldStartKey, oldStart);
    _hunk.set(NEBSourceControlOperationOldCountKey, oldCount);
    _hunk.set(NEBSourceControlOperationNewStartKey, newStart);
    _hunk.set(NEBSourceControlOperationNewCountKey, newCount);
    gitSetText(_hunk, NEBSourceControlOperationHeadingKey, output, heading);
}

/// An empty line stands for an unchanged empty line.
void GitPatchParser::addHunkLine(const Data& output, std::string_view line) {
    const char kind = line.empty() ? ' ' : line.front();
    if (kind == '-') {
        --_missingOldLines;
        ++_deletedLines;
    } else if (kind == '+') {
        --_missingNewLines;
        ++_addedLines;
    } else if (kind != '\\') {
        --_missingOldLines;
        --_missingNewLines;
    }
    _lines.push_back(gitTextOrBytes(output, line));
}

void GitPatchParser::finishHunk() {
    if (std::exchange(_isInHunk, false)) {
        NEBDictionary hunk = std::exchange(_hunk, {});
        hunk.set(NEBSourceControlOperationLinesKey, std::exchange(_lines, {}));
        _hunks.emplace_back(std::move(hunk));
    }
}

}  // namespace neb
