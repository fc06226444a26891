// GitVocabulary.h - the words that git prints and takes itself: commands, settings, headers, states
// and messages that the plug-in recognises. An anonymous recording keeps them.
#pragma once

#include <string_view>
#include <unordered_set>

namespace neb::nebsc {

/// Returns the words, in lower case, of at least three characters. Thread-safe.
[[nodiscard]] const std::unordered_set<std::string_view>& gitVocabulary();

}  // namespace neb::nebsc
