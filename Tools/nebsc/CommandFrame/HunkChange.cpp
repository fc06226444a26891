#include "CommandFrame/HunkChange.h"

#include <algorithm>

#include "Platform/Text.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view noLineEnd = "\n\\ ";

char removalMark(PatchUse use) {
    return use == PatchUse::forward ? '-' : '+';
}
char insertionMark(PatchUse use) {
    return use == PatchUse::forward ? '+' : '-';
}

bool lacksLineEnd(const std::string& line) {
    return line.find(noLineEnd) != std::string::npos;
}

std::string shown(std::string_view line) {
    return inQuotes(printable(line));
}

/// Reads the lines of an edited hunk.
HunkEdit linesOf(std::string_view text) {
    HunkEdit edit;
    forEachLine(text, [&edit](std::string_view line) {
        const char mark = line.empty() ? ' ' : line.front();
        const bool isHeader = edit.lines.empty() && line.starts_with("@@");
        if (mark == '#' || isHeader || !edit.failure.empty()) {
            return;
        }
        if (line.starts_with("\\ ") && !edit.lines.empty()) {
            edit.lines.back().append(1, '\n').append(line);
        } else if (mark == ' ' || mark == '-' || mark == '+') {
            edit.lines.push_back(line.empty() ? " " : std::string(line));
        } else {
            edit.failure = "the line " + shown(line) + " does not begin with ' ', '-' or '+'";
        }
    });
    return edit;
}

/// Returns the first difference of the lines of the file; empty if they are the same.
std::string differenceOf(const std::vector<std::string>& before,
                         const std::vector<std::string>& after) {
    const auto [expected, found] =
        std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    if (expected != before.end() && found != after.end()) {
        return "where it has the line " + shown(*found) + ", the index has " + shown(*expected);
    }
    if (expected != before.end()) {
        return "it lacks the line " + shown(*expected) + " of the index";
    }
    return found == after.end()
               ? ""
               : "the line " + shown(*found) + " comes after those of the hunk in the index";
}

/// Only the last line of a file can lack its end.
std::string misplacedEnd(const std::vector<std::string>& original,
                         const std::vector<std::string>& result) {
    const bool isAtEnd = std::any_of(original.begin(), original.end(), lacksLineEnd);
    const auto line = std::find_if(result.begin(), result.end(), lacksLineEnd);
    return line == result.end() || (isAtEnd && line == result.end() - 1)
               ? ""
               : "a line without a line end is not the last one of the file";
}

}  // namespace

HunkChange::HunkChange(const std::vector<std::string>& lines, PatchUse use) : _use(use) {
    for (const std::string& line : lines) {
        const std::string text = line.empty() ? line : line.substr(1);
        if (line.starts_with(insertionMark(use))) {
            _inserted.back().push_back(text);
        } else {
            _fileLines.push_back(text);
            _isRemoved.push_back(line.starts_with(removalMark(use)));
            _inserted.emplace_back();
        }
    }
}

std::vector<std::string> HunkChange::lines() const {
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < _inserted.size(); ++i) {
        for (const std::string& text : _inserted[i]) {
            lines.push_back(insertionMark(_use) + text);
        }
        if (i < _fileLines.size()) {
            lines.push_back((_isRemoved[i] ? removalMark(_use) : ' ') + _fileLines[i]);
        }
    }
    return lines;
}

std::vector<std::string> HunkChange::resultLines() const {
    std::vector<std::string> result;
    for (const std::string& line : lines()) {
        if (line.front() != removalMark(_use)) {
            result.push_back(line.substr(1));
        }
    }
    return result;
}

void HunkChange::clear() {
    _isRemoved.assign(_fileLines.size(), false);
    _inserted.assign(_fileLines.size() + 1, {});
}

void HunkChange::add(const HunkChange& part, std::size_t first) {
    for (std::size_t i = 0; i < part._inserted.size(); ++i) {
        std::vector<std::string>& inserted = _inserted[first + i];
        inserted.insert(inserted.end(), part._inserted[i].begin(), part._inserted[i].end());
        if (i < part._fileLines.size() && part._isRemoved[i]) {
            _isRemoved[first + i] = true;
        }
    }
}

HunkEdit editOfHunk(std::string_view text, const std::vector<std::string>& original, PatchUse use) {
    HunkEdit edit = linesOf(text);
    if (!edit.failure.empty() || edit.lines.empty()) {
        return edit;
    }
    const HunkChange change(edit.lines, use);
    edit.failure = differenceOf(HunkChange(original, use).fileLines(), change.fileLines());
    if (edit.failure.empty()) {
        edit.failure = misplacedEnd(original, change.resultLines());
    }
    return edit;
}

}  // namespace neb::nebsc
