#include "CommandFrame/StateText.h"

#include <cstdint>

#include "CommandFrame/CommitText.h"
#include "CommandFrame/RecordNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/PrintableText.h"
#include "Terminal/TextWidth.h"

namespace neb::nebsc {

namespace {

// ---- the branch -------------------------------------------------------------------------------

std::string distanceFrom(const std::string& upstream, std::int64_t ahead, std::int64_t behind) {
    if (ahead == 0 && behind == 0) {
        return "up to date with " + upstream;
    }
    if (behind == 0) {
        return std::to_string(ahead) + " ahead of " + upstream;
    }
    return (ahead == 0 ? "" : std::to_string(ahead) + " ahead of and ") + std::to_string(behind) +
           " behind " + upstream;
}

std::string headText(const NEBDictionary& head) {
    const std::string branch = printable(bytesOfName(head, nameKeys));
    const std::string_view id = head.text(NEBSourceControlOperationObjectIDKey);
    std::string text = branch.empty()
                           ? "HEAD is detached at " + printable(id.substr(0, shownIdLength))
                           : "On branch " + branch;
    text += id.empty() ? ", no commits yet" : "";
    const std::string upstream = printable(bytesOfName(head, upstreamKeys));
    const auto ahead = head.value(NEBSourceControlOperationAheadKey).integer();
    const auto behind = head.value(NEBSourceControlOperationBehindKey).integer();
    if (ahead && behind) {
        text += ", " + distanceFrom(upstream, *ahead, *behind);
    } else if (!upstream.empty() && !id.empty()) {
        text += ", the upstream " + upstream + " does not exist";
    }
    return text;
}

// ---- the changes ------------------------------------------------------------------------------

/// Returns how git describes the changes in a submodule, in parentheses.
std::string submoduleNote(const NEBDictionary& record) {
    struct Note {
        NEBConstant key;
        std::string_view text;
    };
    constexpr Note notes[] = {
        {NEBSourceControlOperationSubmoduleCommitChangedKey, "new commits"},
        {NEBSourceControlOperationSubmoduleModifiedKey, "modified content"},
        {NEBSourceControlOperationSubmoduleHasUntrackedKey, "untracked content"},
    };
    std::string text;
    for (const Note& note : notes) {
        if (record.value(note.key).boolValue()) {
            text.append(text.empty() ? " (" : ", ").append(note.text);
        }
    }
    return text + (text.empty() ? "" : ")");
}

/// Returns the shown original path and an arrow if the change is a move.
std::string originOf(const NEBDictionary& record, std::string_view state,
                     const WorkingCopyLocation& workingCopy) {
    const std::string_view original = bytesOfName(record, originalPathKeys);
    const bool isMoved = (state == "renamed" || state == "copied") && !original.empty();
    return isMoved ? shownPath(workingCopy, std::string(original)) + " -> " : "";
}

// ---- the lists --------------------------------------------------------------------------------

std::string titled(std::string_view title, const std::string& list) {
    return list.empty() ? list : "\n" + std::string(title) + ":\n" + list;
}

}  // namespace

void StateText::add(const NEBSourceControlResult& records, const WorkingCopyLocation& workingCopy) {
    for (const NEBDictionary& record : records) {
        if (record.text(NEBSourceControlOperationKindKey) == "head") {
            _head = record;
        } else {
            addPath(record, workingCopy);
        }
    }
}

void StateText::addPath(const NEBDictionary& record, const WorkingCopyLocation& workingCopy) {
    const std::string_view kind = record.text(NEBSourceControlOperationKindKey);
    const std::string path = shownPath(workingCopy, std::string(bytesOfName(record, pathKeys)));
    if (kind == "conflict") {
        const std::string_view both = record.text(NEBSourceControlOperationConflictKey);
        addLine(_conflicts, {path, " (", both, ")"}, Colour::red);
    } else if (kind == "untracked") {
        addLine(_untracked, {path}, Colour::red);
    } else if (kind == "ignored") {
        addLine(_ignored, {path}, Colour::none);
    } else {
        addChange(record, path, workingCopy);
    }
}

/// Adds the state and the path, or both paths of a moved file.
void StateText::addChange(const NEBDictionary& record, const std::string& path,
                          const WorkingCopyLocation& workingCopy) {
    // The longest state and two blanks.
    constexpr std::size_t columns = 14;
    if (const NEBValue& index = record.value(NEBSourceControlOperationIndexStateKey);
        index.isPresent()) {
        const std::string_view state = index.string().value_or("");
        addLine(_staged, {paddedTo(columns, state), originOf(record, state, workingCopy), path},
                Colour::green);
    }
    if (const NEBValue& workingTree = record.value(NEBSourceControlOperationWorkingTreeStateKey);
        workingTree.isPresent()) {
        const std::string_view state = workingTree.string().value_or("");
        addLine(_notStaged,
                {paddedTo(columns, state), originOf(record, state, workingCopy), path,
                 submoduleNote(record)},
                Colour::red);
    }
}

void StateText::addLine(std::string& list, std::initializer_list<std::string_view> parts,
                        Colour colour) const {
    list += "  ";
    if (_isColoured) {
        std::string text;
        for (const std::string_view part : parts) {
            text += part;
        }
        list += coloured(text, colour);
    } else {
        for (const std::string_view part : parts) {
            list += part;
        }
    }
    list += '\n';
}

std::string StateText::branchLine() const {
    return _head.isEmpty() ? "" : headText(_head) + "\n";
}

bool StateText::hasChanges() const {
    return !(_conflicts.empty() && _staged.empty() && _notStaged.empty() && _untracked.empty() &&
             _ignored.empty());
}

std::string StateText::changeLists() const {
    const std::int64_t stashes =
        _head.value(NEBSourceControlOperationStashCountKey).integer().value_or(0);
    return titled("Conflicts", _conflicts) + titled("Staged", _staged) +
           titled("Not staged", _notStaged) + titled("Untracked", _untracked) +
           titled("Ignored", _ignored) +
           (stashes == 0 ? ""
                         : "\nStash: " + std::to_string(stashes) +
                               (stashes == 1 ? " entry\n" : " entries\n"));
}

}  // namespace neb::nebsc
