#include "Terminal/StatusLabels.h"

#include <algorithm>
#include <array>

#include "NEBFoundation/NEBSourceControlStatus.h"
#include "Terminal/Colour.h"

namespace neb::nebsc {

namespace {

struct StatusLabel {
    std::int64_t status;
    std::string_view letters;
    std::string_view text;
    Colour colour;
};

constexpr std::array<StatusLabel, 6> statusLabels{{
    {NEBSourceControlStatusAdded, "A", "added", Colour::green},
    {NEBSourceControlStatusDeleted, "D", "deleted", Colour::red},
    {NEBSourceControlStatusModified, "MT", "modified", Colour::yellow},
    {NEBSourceControlStatusConflict, "U", "conflict", Colour::boldRed},
    {NEBSourceControlStatusUntracked, "?", "untracked", Colour::red},
    {NEBSourceControlStatusRenamed, "RC", "renamed", Colour::cyan},
}};
/// The label of a state that has none of its own.
constexpr StatusLabel changed{NEBSourceControlStatusOther, "", "changed", Colour::none};
/// The longest label and two blanks.
constexpr std::size_t labelColumnWidth = 11;

StatusLabel labelOfStatus(std::int64_t status) {
    const auto* row =
        std::find_if(statusLabels.begin(), statusLabels.end(),
                     [status](const StatusLabel& label) { return label.status == status; });
    return row == statusLabels.end() ? changed : *row;
}

struct ConflictKind {
    std::string_view letters, kind;
};

/// The unmerged paths of git-status(1); "us" is the current branch.
constexpr std::array<ConflictKind, 7> conflictKinds{{
    {"DD", "both deleted"},
    {"AU", "added by us"},
    {"UD", "deleted by them"},
    {"UA", "added by them"},
    {"DU", "deleted by us"},
    {"AA", "both added"},
    {"UU", "both modified"},
}};

}  // namespace

std::string statusColumn(const NEBValue& status, bool isColoured) {
    const StatusLabel label = labelOfStatus(status.integer().value_or(0));
    const std::string blanks(labelColumnWidth - label.text.size(), ' ');
    return (isColoured ? coloured(label.text, label.colour) : std::string(label.text)) + blanks;
}

std::int64_t statusOfLetter(char letter) {
    const auto* row =
        std::find_if(statusLabels.begin(), statusLabels.end(), [letter](const StatusLabel& label) {
            return label.letters.find(letter) != std::string_view::npos;
        });
    return row == statusLabels.end() ? changed.status : row->status;
}

std::int64_t statusOfState(std::string_view state) {
    if (state == "type changed") {
        return NEBSourceControlStatusModified;
    }
    if (state == "copied") {
        return NEBSourceControlStatusRenamed;
    }
    const auto* row =
        std::find_if(statusLabels.begin(), statusLabels.end(),
                     [state](const StatusLabel& label) { return label.text == state; });
    return row == statusLabels.end() ? changed.status : row->status;
}

std::string_view conflictKind(char index, char workTree) {
    const auto* row =
        std::find_if(conflictKinds.begin(), conflictKinds.end(),
                     [index, workTree](const ConflictKind& candidate) {
                         return candidate.letters[0] == index && candidate.letters[1] == workTree;
                     });
    return row == conflictKinds.end() ? std::string_view() : row->kind;
}

}  // namespace neb::nebsc
