#include "CommandFrame/StateText.h"

#include <cstdint>
#include <string_view>
#include <vector>

#include "CommandFrame/CommitText.h"
#include "CommandFrame/RecordNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/Colour.h"
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

/// Returns the state and the path; of a renamed file both paths.
std::string changeText(const NEBDictionary& record, NEBConstant state,
                       const WorkingCopyLocation& workingCopy) {
    // The longest state and two blanks.
    constexpr std::size_t columns = 14;
    const std::string_view word = record.text(state);
    const std::string_view original = bytesOfName(record, originalPathKeys);
    const bool isMoved = (word == "renamed" || word == "copied") && !original.empty();
    return paddedTo(columns, word) +
           (isMoved ? shownPath(workingCopy, std::string(original)) + " -> " : "") +
           shownPath(workingCopy, std::string(bytesOfName(record, pathKeys)));
}

/// The lists, in the order in which they are shown.
struct ChangeLists {
    std::string conflicts{}, staged{}, notStaged{}, untracked{}, ignored{};
};

class ListWriter {
public:
    ListWriter(const WorkingCopyLocation& workingCopy, bool isColoured)
        : _workingCopy(workingCopy), _isColoured(isColoured) {}

    void add(const NEBDictionary& record) {
        const std::string_view kind = record.text(NEBSourceControlOperationKindKey);
        const std::string path =
            shownPath(_workingCopy, std::string(bytesOfName(record, pathKeys)));
        if (kind == "conflict") {
            const std::string_view both = record.text(NEBSourceControlOperationConflictKey);
            addLine(lists.conflicts, path + " (" + std::string(both) + ")", Colour::red);
        } else if (kind == "untracked") {
            addLine(lists.untracked, path, Colour::red);
        } else if (kind == "ignored") {
            addLine(lists.ignored, path, Colour::none);
        } else {
            addChange(record);
        }
    }

    ChangeLists lists{};

private:
    void addChange(const NEBDictionary& record) {
        const NEBConstant index = NEBSourceControlOperationIndexStateKey;
        const NEBConstant workingTree = NEBSourceControlOperationWorkingTreeStateKey;
        if (record.contains(index)) {
            addLine(lists.staged, changeText(record, index, _workingCopy), Colour::green);
        }
        if (record.contains(workingTree)) {
            addLine(lists.notStaged,
                    changeText(record, workingTree, _workingCopy) + submoduleNote(record),
                    Colour::red);
        }
    }
    void addLine(std::string& list, const std::string& text, Colour colour) const {
        list += "  " + (_isColoured ? coloured(text, colour) : text) + "\n";
    }

    const WorkingCopyLocation& _workingCopy;
    bool _isColoured;
};

std::string titled(std::string_view title, const std::string& list) {
    return list.empty() ? list : "\n" + std::string(title) + ":\n" + list;
}

}  // namespace

std::string branchLine(const NEBSourceControlResult& records) {
    const bool hasHead =
        !records.empty() && records.front().text(NEBSourceControlOperationKindKey) == "head";
    return hasHead && !lacksReadableHead(records) ? headText(records.front()) + "\n" : "";
}

/// git writes this instead of a branch that it cannot read.
bool lacksReadableHead(const NEBSourceControlResult& records) {
    return !records.empty() && records.front().text(NEBSourceControlOperationKindKey) == "head" &&
           records.front().text(NEBSourceControlOperationNameKey) == "(unknown)" &&
           !records.front().contains(NEBSourceControlOperationObjectIDKey);
}

std::string changeLists(const NEBSourceControlResult& records,
                        const WorkingCopyLocation& workingCopy, bool isColoured) {
    ListWriter writer(workingCopy, isColoured);
    std::int64_t stashes = 0;
    for (const NEBDictionary& record : records) {
        if (record.text(NEBSourceControlOperationKindKey) == "head") {
            stashes = record.value(NEBSourceControlOperationStashCountKey).integer().value_or(0);
        } else {
            writer.add(record);
        }
    }
    const ChangeLists& lists = writer.lists;
    return titled("Conflicts", lists.conflicts) + titled("Staged", lists.staged) +
           titled("Not staged", lists.notStaged) + titled("Untracked", lists.untracked) +
           titled("Ignored", lists.ignored) +
           (stashes == 0 ? ""
                         : "\nStash: " + std::to_string(stashes) +
                               (stashes == 1 ? " entry\n" : " entries\n"));
}

}  // namespace neb::nebsc
