#include "Terminal/StatusLabels.h"

#include <algorithm>
#include <array>

#include "NEBFoundation/NEBSourceControlStatus.h"
#include "Terminal/Colour.h"

namespace neb::nebsc {

namespace {

struct StatusWord {
    std::int64_t status;
    std::string_view letters;
    std::string_view word;
    Colour colour;
};

constexpr std::array<StatusWord, 6> statusWords{{
    {NEBSourceControlStatusAdded, "A", "added", Colour::green},
    {NEBSourceControlStatusDeleted, "D", "deleted", Colour::red},
    {NEBSourceControlStatusModified, "MT", "modified", Colour::yellow},
    {NEBSourceControlStatusConflict, "U", "conflict", Colour::boldRed},
    {NEBSourceControlStatusUntracked, "?", "untracked", Colour::red},
    {NEBSourceControlStatusRenamed, "RC", "renamed", Colour::cyan},
}};
/// For a state that has no word of its own.
constexpr StatusWord changed{NEBSourceControlStatusOther, "", "changed", Colour::none};
/// The longest word, and two blanks.
constexpr std::size_t wordColumnWidth = 11;

StatusWord wordOfStatus(std::int64_t status) {
    const auto* row =
        std::find_if(statusWords.begin(), statusWords.end(),
                     [status](const StatusWord& word) { return word.status == status; });
    return row == statusWords.end() ? changed : *row;
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
    const StatusWord word = wordOfStatus(status.integer().value_or(0));
    const std::string blanks(wordColumnWidth - word.word.size(), ' ');
    return (isColoured ? coloured(word.word, word.colour) : std::string(word.word)) + blanks;
}

std::int64_t statusOfLetter(char letter) {
    const auto* row =
        std::find_if(statusWords.begin(), statusWords.end(), [letter](const StatusWord& word) {
            return word.letters.find(letter) != std::string_view::npos;
        });
    return row == statusWords.end() ? changed.status : row->status;
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
