// SpellingSuggestions.h - suggestions for misspelt names. Thread-safe.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace neb::nebsc {

/// Returns the number of insertions, deletions, substitutions and swaps of neighbouring characters
/// that turn one text into the other.
[[nodiscard]] std::size_t editDistance(std::string_view a, std::string_view b);

/// Returns the end of a message that suggests the nearest candidates, at most two: "; did you mean
/// 'status'?", "; did you mean 'add' or 'rm'?". Empty if no candidate is near enough.
[[nodiscard]] std::string suggestionFor(std::string_view name,
                                        std::span<const std::string> candidates);

}  // namespace neb::nebsc
