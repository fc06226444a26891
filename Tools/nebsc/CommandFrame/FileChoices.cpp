#include "CommandFrame/FileChoices.h"

#include <algorithm>
#include <utility>

#include "CommandFrame/RecordNames.h"
#include "Platform/Text.h"

namespace neb::nebsc {

namespace {

using Kind = FileChoice::Kind;

/// Returns a name as git writes it in a patch: between quotes if it has a quote, a backslash or a
/// control character; see core.quotePath in git-config(1).
std::string quotedName(std::string_view name) {
    constexpr std::string_view controls = "\a\b\t\n\v\f\r\"\\";
    constexpr std::string_view letters = "abtnvfr\"\\";
    constexpr unsigned char firstPrintable = 0x20;
    constexpr unsigned char deleteCharacter = 0x7f;
    std::string quoted;
    bool needsQuotes = false;
    for (const char character : name) {
        const auto byte = static_cast<unsigned char>(character);
        const std::size_t letter = controls.find(character);
        if (letter != std::string_view::npos) {
            quoted.append({'\\', letters[letter]});
        } else if (byte < firstPrintable || byte == deleteCharacter) {
            quoted += octalEscape(character);
        } else {
            quoted += character;
            continue;
        }
        needsQuotes = true;
    }
    return needsQuotes ? '"' + quoted + '"' : quoted;
}

/// Returns "--- a/NAME": git ends a name with blanks by a TAB.
std::string sideLine(std::string_view mark, const std::string& name) {
    const bool hasBlank = name.find(' ') != std::string::npos;
    return std::string(mark) + quotedName(name) + (hasBlank ? "\t\n" : "\n");
}

std::string rangeText(std::int64_t start, std::int64_t count) {
    return std::to_string(start) + (count == 1 ? "" : "," + std::to_string(count));
}

/// An empty range starts at the line before it.
std::int64_t firstLineOf(std::int64_t start, std::int64_t count) {
    return count == 0 ? start + 1 : start;
}
std::int64_t startAt(std::int64_t firstLine, std::int64_t count) {
    return count == 0 ? firstLine - 1 : firstLine;
}

bool isOnOldSide(const std::string& line) {
    return !line.starts_with('+');
}
bool isOnNewSide(const std::string& line) {
    return !line.starts_with('-');
}
bool isChanged(const std::string& line) {
    return line.starts_with('+') || line.starts_with('-');
}

template <typename Side>
std::int64_t countOf(const std::vector<std::string>& lines, std::size_t begin, std::size_t end,
                     Side isOnSide) {
    return std::count_if(lines.begin() + static_cast<std::ptrdiff_t>(begin),
                         lines.begin() + static_cast<std::ptrdiff_t>(end), isOnSide);
}

Kind kindOf(std::string_view state) {
    return state == "added"     ? Kind::addition
           : state == "deleted" ? Kind::deletion
           : state == "renamed" ? Kind::rename
                                : Kind::hunk;
}

}  // namespace

// ---- records ----------------------------------------------------------------------------------

FileChoices::Hunk FileChoices::hunkOf(const NEBDictionary& record) {
    const auto number = [&record](NEBConstant key) {
        return record.value(key).integer().value_or(0);
    };
    Hunk hunk{.oldRange = {number(NEBSourceControlOperationOldStartKey),
                           number(NEBSourceControlOperationOldCountKey)},
              .newRange = {number(NEBSourceControlOperationNewStartKey),
                           number(NEBSourceControlOperationNewCountKey)},
              .heading = std::string(record.text(NEBSourceControlOperationHeadingKey)),
              .lines = {},
              .groups = {}};
    const auto* lines = record.value(NEBSourceControlOperationLinesKey).array();
    for (std::size_t i = 0; lines != nullptr && i < lines->size(); ++i) {
        const std::string_view line = bytesOfValue((*lines)[i]);
        if (line.starts_with('\\') && !hunk.lines.empty()) {
            hunk.lines.back().append(1, '\n').append(line);
            continue;
        }
        const std::size_t index = hunk.lines.size();
        hunk.lines.emplace_back(line);
        if (isChanged(hunk.lines.back())) {
            if (hunk.groups.empty() || hunk.groups.back().end != index) {
                hunk.groups.push_back({index, index});
            }
            ++hunk.groups.back().end;
        }
    }
    return hunk;
}

FileChoices::Half FileChoices::halfOf(const NEBDictionary& record) {
    Half half{.oldPath = std::string(bytesOfName(record, originalPathKeys)),
              .newPath = std::string(bytesOfName(record, pathKeys)),
              .oldMode = std::string(record.text(NEBSourceControlOperationOldModeKey)),
              .newMode = std::string(record.text(NEBSourceControlOperationNewModeKey)),
              .kind = kindOf(record.text(NEBSourceControlOperationStateKey)),
              .hunks = {}};
    if (half.oldPath.empty()) {
        half.oldPath = half.newPath;
    }
    if (half.kind == Kind::hunk && half.oldMode != half.newMode) {
        half.kind = Kind::modeChange;
    }
    if (const auto* hunks = record.value(NEBSourceControlOperationHunksKey).array()) {
        for (const NEBValue& hunk : *hunks) {
            half.hunks.push_back(hunkOf(*hunk.dictionary()));
        }
    }
    return half;
}

FileChoices::FileChoices(const NEBDictionary& record, PatchUse use) : _use(use) {
    const Half& half = _halves.emplace_back(halfOf(record));
    if (half.kind != Kind::hunk) {
        _choices.push_back({.kind = half.kind});
    }
    for (std::size_t i = 0; i < half.hunks.size() && !isWhole(); ++i) {
        _choices.push_back({.hunk = i, .endGroup = half.hunks[i].groups.size()});
    }
}

bool FileChoices::addHalfOfTypeChange(const NEBDictionary& record) {
    Half half = halfOf(record);
    if (_halves.front().kind != Kind::deletion || half.kind != Kind::addition ||
        half.newPath != path()) {
        return false;
    }
    _halves.push_back(std::move(half));
    _choices.front().kind = Kind::typeChange;
    return true;
}

// ---- choices ----------------------------------------------------------------------------------

bool FileChoices::isWhole() const {
    return _halves.front().kind == Kind::addition || _halves.front().kind == Kind::deletion;
}

bool FileChoices::canSplit(std::size_t choice) const {
    const FileChoice& asked = _choices[choice];
    return asked.endGroup - asked.firstGroup > 1 && !asked.edited;
}

std::size_t FileChoices::split(std::size_t choice) {
    const FileChoice whole = _choices[choice];
    std::vector<FileChoice> parts;
    for (std::size_t group = whole.firstGroup; group < whole.endGroup; ++group) {
        parts.push_back({.hunk = whole.hunk, .firstGroup = group, .endGroup = group + 1});
    }
    const auto at = _choices.begin() + static_cast<std::ptrdiff_t>(choice);
    _choices.insert(_choices.erase(at), parts.begin(), parts.end());
    return parts.size();
}

bool FileChoices::canEdit(std::size_t choice) const {
    return _choices[choice].kind == Kind::hunk;
}

bool FileChoices::edit(std::size_t choice, std::string text) {
    FileChoice& asked = _choices[choice];
    HunkEdit edit = editOfHunk(text, part(asked).lines, _use);
    asked.draft = edit.failure.empty() ? "" : std::move(text);
    asked.draftFailure = std::move(edit.failure);
    if (!asked.draft.empty() || edit.lines.empty()) {
        return false;
    }
    asked.edited = std::move(edit.lines);
    asked.decision = Decision::taken;
    return true;
}

// ---- text -------------------------------------------------------------------------------------

std::string FileChoices::headerOf(const Half& half, bool hasHunks) {
    const std::string oldName = "a/" + half.oldPath;
    const std::string newName = "b/" + half.newPath;
    std::string text = "diff --git " + quotedName(oldName) + " " + quotedName(newName) + "\n";
    if (half.kind == Kind::addition) {
        text += "new file mode " + half.newMode + "\n";
    } else if (half.kind == Kind::deletion) {
        text += "deleted file mode " + half.oldMode + "\n";
    } else if (half.oldMode != half.newMode) {
        text += "old mode " + half.oldMode + "\nnew mode " + half.newMode + "\n";
    }
    if (half.oldPath != half.newPath) {
        text += "rename from " + quotedName(half.oldPath) + "\nrename to " +
                quotedName(half.newPath) + "\n";
    }
    if (hasHunks) {
        text += half.kind == Kind::addition ? "--- /dev/null\n" : sideLine("--- ", oldName);
        text += half.kind == Kind::deletion ? "+++ /dev/null\n" : sideLine("+++ ", newName);
    }
    return text;
}

std::string FileChoices::headerOf(const Hunk& hunk) {
    return "@@ -" + rangeText(hunk.oldRange.start, hunk.oldRange.count) + " +" +
           rangeText(hunk.newRange.start, hunk.newRange.count) + " @@" +
           (hunk.heading.empty() ? "" : " " + hunk.heading) + "\n";
}

std::string FileChoices::textOf(const Hunk& hunk) {
    std::string text = headerOf(hunk);
    for (const std::string& line : hunk.lines) {
        text.append(line).append(1, '\n');
    }
    return text;
}

FileChoices::Hunk FileChoices::part(const FileChoice& choice) const {
    const Hunk& whole = _halves.front().hunks[choice.hunk];
    const std::size_t begin = choice.firstGroup == 0 ? 0 : whole.groups[choice.firstGroup - 1].end;
    const std::size_t end = choice.endGroup < whole.groups.size()
                                ? whole.groups[choice.endGroup].begin
                                : whole.lines.size();
    const std::vector<std::string> lines =
        choice.edited.value_or(std::vector(whole.lines.begin() + static_cast<std::ptrdiff_t>(begin),
                                           whole.lines.begin() + static_cast<std::ptrdiff_t>(end)));
    const auto rangeFrom = [&](const Range& range, auto isOnSide) {
        const std::int64_t first =
            firstLineOf(range.start, range.count) + countOf(whole.lines, 0, begin, isOnSide);
        const std::int64_t count = countOf(lines, 0, lines.size(), isOnSide);
        return Range{startAt(first, count), count};
    };
    return {.oldRange = rangeFrom(whole.oldRange, isOnOldSide),
            .newRange = rangeFrom(whole.newRange, isOnNewSide),
            .heading = whole.heading,
            .lines = lines,
            .groups = {}};
}

std::string FileChoices::header() const {
    return headerOf(_halves.front(), !_halves.front().hunks.empty());
}

std::string FileChoices::text(std::size_t choice) const {
    if (_choices[choice].kind == Kind::hunk) {
        return textOf(part(_choices[choice]));
    }
    std::string text;
    for (const Half& half : _halves) {
        text += &half == &_halves.front() ? "" : headerOf(half, !half.hunks.empty());
        for (std::size_t i = 0; i < half.hunks.size() && isWhole(); ++i) {
            text += textOf(half.hunks[i]);
        }
    }
    return text;
}

// ---- the patch --------------------------------------------------------------------------------

std::vector<std::string> FileChoices::chosenLines(std::size_t hunk) const {
    Hunk whole = _halves.front().hunks[hunk];
    HunkChange change(whole.lines, _use);
    change.clear();
    for (const FileChoice& choice : _choices) {
        if (choice.kind == Kind::hunk && choice.hunk == hunk &&
            choice.decision == Decision::taken) {
            Hunk taken = part(choice);
            const auto firstLine = [this](Hunk& of) {
                return firstLineOf(fileRange(of).start, fileRange(of).count);
            };
            change.add(HunkChange(taken.lines, _use),
                       static_cast<std::size_t>(firstLine(taken) - firstLine(whole)));
        }
    }
    return change.lines();
}

/// The side that the patch is applied to keeps its lines and their numbers.
std::optional<FileChoices::Hunk> FileChoices::chosenOf(std::size_t hunk,
                                                       std::int64_t& delta) const {
    Hunk chosen = _halves.front().hunks[hunk];
    chosen.lines = chosenLines(hunk);
    if (std::none_of(chosen.lines.begin(), chosen.lines.end(), isChanged)) {
        return std::nullopt;
    }
    const bool isForward = _use == PatchUse::forward;
    const Range& fixed = fileRange(chosen);
    Range& moved = isForward ? chosen.newRange : chosen.oldRange;
    const std::size_t size = chosen.lines.size();
    moved.count = countOf(chosen.lines, 0, size, isForward ? isOnNewSide : isOnOldSide);
    moved.start = startAt(firstLineOf(fixed.start, fixed.count) + delta, moved.count);
    delta += moved.count - fixed.count;
    return chosen;
}

std::string FileChoices::patch() const {
    std::string text;
    const bool isFirstTaken = _choices.front().decision == Decision::taken;
    if (isWhole()) {
        return isFirstTaken ? header() + this->text(0) : text;
    }
    std::int64_t delta = 0;
    for (std::size_t i = 0; i < _halves.front().hunks.size(); ++i) {
        if (const auto hunk = chosenOf(i, delta)) {
            text += textOf(*hunk);
        }
    }
    Half half = _halves.front();
    const bool isFileChanged = half.kind != Kind::hunk && isFirstTaken;
    if (!isFileChanged) {
        const bool isForward = _use == PatchUse::forward;
        half.oldPath = half.newPath = isForward ? half.oldPath : half.newPath;
        half.oldMode = half.newMode = "";
    }
    return isFileChanged || !text.empty() ? headerOf(half, !text.empty()) + text : text;
}

}  // namespace neb::nebsc
