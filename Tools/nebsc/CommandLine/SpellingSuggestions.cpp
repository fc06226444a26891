#include "CommandLine/SpellingSuggestions.h"

#include <algorithm>
#include <numeric>
#include <vector>

#include "Terminal/Presentation.h"

namespace neb::nebsc {

namespace {

/// A slip in a short word, two or three in a longer one; never so many that nothing of it is left.
std::size_t mostSlips(std::string_view word) {
    constexpr std::size_t charactersForEach = 3;
    return std::clamp<std::size_t>(word.size() / charactersForEach, 1, 3);
}

/// How far the words are apart; one that is the beginning of the other counts as a slip.
std::size_t distanceOf(std::string_view typed, std::string_view word) {
    constexpr std::size_t leastBeginning = 3;
    const bool isBeginning = typed.size() >= leastBeginning && word.starts_with(typed);
    return isBeginning ? 1 : editDistance(typed, word);
}

}  // namespace

/// The table of the distances between all beginnings of the two, of which three rows are needed.
std::size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> beforeLast(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(last.begin(), last.end(), 0);
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t change = a[i - 1] == b[j - 1] ? 0 : 1;
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + change});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
            }
        }
        beforeLast.swap(last);
        last.swap(row);
    }
    return last[b.size()];
}

std::string questionForSimilar(std::string_view word, std::span<const std::string> words) {
    constexpr std::size_t longestWord = 64;
    std::size_t least = word.size() > longestWord ? 0 : mostSlips(word);
    std::vector<std::string> nearest;
    for (const std::string& candidate : words) {
        const std::size_t distance =
            word.size() > longestWord ? longestWord : distanceOf(word, candidate);
        if (distance < least) {
            least = distance;
            nearest.clear();
        }
        if (distance == least &&
            std::find(nearest.begin(), nearest.end(), candidate) == nearest.end()) {
            nearest.push_back(candidate);
        }
    }
    if (nearest.empty()) {
        return {};
    }
    return " Did you mean " + inQuotes(nearest[0]) +
           (nearest.size() > 1 ? " or " + inQuotes(nearest[1]) : "") + "?";
}

}  // namespace neb::nebsc
