// StatusLabels.h - the state of a file in a word.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "NEBFoundation/NEBValue.h"

namespace neb::nebsc {

/// Returns the word for a status value ("modified"; "changed" for one that has none, and for none),
/// and blanks up to the next column.
[[nodiscard]] std::string statusColumn(const NEBValue& status, bool isColoured);

/// Returns the status value for a letter of git-status(1), porcelain v1; 0 for any other.
[[nodiscard]] std::int64_t statusOfLetter(char letter);

/// Returns what both sides of a merge did to a file in conflict, "deleted by us", for the two
/// letters of an unmerged path; empty for the letters of any other.
[[nodiscard]] std::string_view conflictKind(char index, char workTree);

}  // namespace neb::nebsc
