#include "CommandLine/SpellingSuggestions.h"

#include <algorithm>
#include <numeric>
#include <vector>

#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

/// Longer names are not compared, as the cost is quadratic.
constexpr std::size_t longestName = 64;

/// Returns the largest distance of a suggestion: 1 for a short name, at most 3 for a longer one.
std::size_t largestDistance(std::string_view name) {
    constexpr std::size_t charactersPerEdit = 3;
    return name.size() > longestName
               ? 0
               : std::clamp<std::size_t>(name.size() / charactersPerEdit, 1, 3);
}

/// Returns the edit distance. An abbreviation of the candidate counts as one edit.
std::size_t distanceBetween(std::string_view name, std::string_view candidate) {
    constexpr std::size_t shortestAbbreviation = 3;
    const bool isAbbreviation = name.size() >= shortestAbbreviation && candidate.starts_with(name);
    return isAbbreviation ? 1 : editDistance(name, candidate);
}

}  // namespace

/// Computes the table of the distances between all prefixes, of which it keeps three rows.
std::size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> rowBeforeLast(b.size() + 1);
    std::vector<std::size_t> lastRow(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(lastRow.begin(), lastRow.end(), 0);
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t substitution = a[i - 1] == b[j - 1] ? 0 : 1;
            row[j] = std::min({lastRow[j] + 1, row[j - 1] + 1, lastRow[j - 1] + substitution});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                row[j] = std::min(row[j], rowBeforeLast[j - 2] + 1);
            }
        }
        rowBeforeLast.swap(lastRow);
        lastRow.swap(row);
    }
    return lastRow[b.size()];
}

std::string suggestionFor(std::string_view name, std::span<const std::string> candidates) {
    std::size_t least = largestDistance(name);
    std::vector<std::string> nearest;
    for (const std::string& candidate : candidates) {
        const std::size_t distance = least == 0 ? 1 : distanceBetween(name, candidate);
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
    return "; did you mean " + inQuotes(nearest[0]) +
           (nearest.size() > 1 ? " or " + inQuotes(nearest[1]) : "") + "?";
}

}  // namespace neb::nebsc
