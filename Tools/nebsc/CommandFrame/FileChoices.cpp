#include "CommandFrame/FileChoices.h"

#include <algorithm>
#include <utility>

#include "CommandFrame/RecordNames.h"

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
            const auto digit = [byte](unsigned shift) {
                return static_cast<char>('0' + ((byte >> shift) & 7U));
            };
            quoted.append({'\\', digit(6), digit(3), digit(0)});
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
    return !line.starts_with('+') && !line.starts_with('\\');
}
bool isOnNewSide(const std::string& line) {
    return !line.starts_with('-') && !line.starts_with('\\');
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
        hunk.lines.emplace_back(bytesOfValue((*lines)[i]));
        const bool continues = !hunk.groups.empty() && hunk.groups.back().end == i;
        if (isChanged(hunk.lines.back()) && !continues) {
            hunk.groups.push_back({i, i + 1});
        } else if (continues && (isChanged(hunk.lines.back()) || hunk.lines.back()[0] == '\\')) {
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

FileChoices::FileChoices(const NEBDictionary& record) {
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
    return _choices[choice].endGroup - _choices[choice].firstGroup > 1;
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

bool FileChoices::isChosen(std::size_t hunk, std::size_t group) const {
    return std::any_of(_choices.begin(), _choices.end(), [&](const FileChoice& choice) {
        return choice.kind == Kind::hunk && choice.isChosen && choice.hunk == hunk &&
               choice.firstGroup <= group && group < choice.endGroup;
    });
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
    const auto rangeFrom = [&](const Range& range, auto isOnSide) {
        const std::int64_t first =
            firstLineOf(range.start, range.count) + countOf(whole.lines, 0, begin, isOnSide);
        const std::int64_t count = countOf(whole.lines, begin, end, isOnSide);
        return Range{startAt(first, count), count};
    };
    return {.oldRange = rangeFrom(whole.oldRange, isOnOldSide),
            .newRange = rangeFrom(whole.newRange, isOnNewSide),
            .heading = whole.heading,
            .lines = {whole.lines.begin() + static_cast<std::ptrdiff_t>(begin),
                      whole.lines.begin() + static_cast<std::ptrdiff_t>(end)},
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

std::vector<std::string> FileChoices::chosenLines(std::size_t hunk, PatchUse use) const {
    const Hunk& whole = _halves.front().hunks[hunk];
    const char kept = use == PatchUse::forward ? '-' : '+';
    std::vector<std::string> lines;
    std::size_t group = 0;
    bool isLeftOut = false;  // the line before, so that the note about its end goes, too
    for (std::size_t i = 0; i < whole.lines.size(); ++i) {
        const std::string& line = whole.lines[i];
        if (!line.starts_with('\\')) {
            group += group < whole.groups.size() && whole.groups[group].end <= i ? 1 : 0;
            isLeftOut = isChanged(line) && !isChosen(hunk, group);
            if (isLeftOut && line.front() == kept) {
                lines.push_back(" " + line.substr(1));
                isLeftOut = false;
                continue;
            }
        }
        if (!isLeftOut) {
            lines.push_back(line);
        }
    }
    return lines;
}

/// The side that the patch is applied to keeps its lines and their numbers.
std::optional<FileChoices::Hunk> FileChoices::chosenOf(std::size_t hunk, PatchUse use,
                                                       std::int64_t& delta) const {
    const Hunk& whole = _halves.front().hunks[hunk];
    Hunk chosen{.oldRange = whole.oldRange,
                .newRange = whole.newRange,
                .heading = whole.heading,
                .lines = chosenLines(hunk, use),
                .groups = {}};
    if (std::none_of(chosen.lines.begin(), chosen.lines.end(), isChanged)) {
        return std::nullopt;
    }
    const bool isForward = use == PatchUse::forward;
    Range& fixed = isForward ? chosen.oldRange : chosen.newRange;
    Range& moved = isForward ? chosen.newRange : chosen.oldRange;
    const std::size_t size = chosen.lines.size();
    moved.count = countOf(chosen.lines, 0, size, isForward ? isOnNewSide : isOnOldSide);
    moved.start = startAt(firstLineOf(fixed.start, fixed.count) + delta, moved.count);
    delta += moved.count - fixed.count;
    return chosen;
}

std::string FileChoices::patch(PatchUse use) const {
    std::string text;
    if (isWhole()) {
        return _choices.front().isChosen ? header() + this->text(0) : text;
    }
    std::int64_t delta = 0;
    for (std::size_t i = 0; i < _halves.front().hunks.size(); ++i) {
        if (const auto hunk = chosenOf(i, use, delta)) {
            text += textOf(*hunk);
        }
    }
    Half half = _halves.front();
    const bool isFileChanged = half.kind != Kind::hunk && _choices.front().isChosen;
    if (!isFileChanged) {
        const bool isForward = use == PatchUse::forward;
        half.oldPath = half.newPath = isForward ? half.oldPath : half.newPath;
        half.oldMode = half.newMode = "";
    }
    return isFileChanged || !text.empty() ? headerOf(half, !text.empty()) + text : text;
}

}  // namespace neb::nebsc
