// SpellingSuggestions.h - what somebody may have meant who has mistyped a word. From any thread.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace neb::nebsc {

/// How many characters were left out, put in too much, changed, or swapped with their neighbour.
[[nodiscard]] std::size_t editDistance(std::string_view a, std::string_view b);

/// The question for the words that are nearest, two at most, behind a sentence: " Did you mean
/// "status"?", " Did you mean "add" or "rm"?". Empty where none is near enough to be meant.
[[nodiscard]] std::string questionForSimilar(std::string_view word,
                                             std::span<const std::string> words);

}  // namespace neb::nebsc
