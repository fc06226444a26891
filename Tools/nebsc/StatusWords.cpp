#include "StatusWords.h"

#include <algorithm>
#include <array>

#include "Presentation.h"

namespace neb::nebsc {

namespace {

struct StatusWord {
    std::int64_t status;
    std::string_view word;
    Colour colour;
};

constexpr std::array<StatusWord, 6> statusWords{{
    {1, "added", Colour::green},
    {2, "deleted", Colour::red},
    {4, "modified", Colour::yellow},
    {16, "conflict", Colour::boldRed},
    {256, "untracked", Colour::red},
    {4096, "renamed", Colour::cyan},
}};
/// For a state that has no word of its own.
constexpr StatusWord changed{0, "changed", Colour::none};
/// The longest word, and two blanks.
constexpr std::size_t wordColumnWidth = 11;

StatusWord wordOfStatus(std::int64_t status) {
    const auto* row =
        std::find_if(statusWords.begin(), statusWords.end(),
                     [status](const StatusWord& word) { return word.status == status; });
    return row == statusWords.end() ? changed : *row;
}

}  // namespace

std::string statusColumn(const NEBValue& status, bool isColoured) {
    const StatusWord word = wordOfStatus(status.integer().value_or(0));
    const std::string blanks(wordColumnWidth - word.word.size(), ' ');
    return (isColoured ? coloured(word.word, word.colour) : std::string(word.word)) + blanks;
}

}  // namespace neb::nebsc
