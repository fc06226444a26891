// StatusLabels.h - labels for the states of files. Every function is thread-safe.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "NEBFoundation/NEBValue.h"

namespace neb::nebsc {

/// Returns the label of a status value ("modified"), padded with blanks to the width of the column.
/// An absent status, or one without a label of its own, is "changed".
[[nodiscard]] std::string statusColumn(const NEBValue& status, bool isColoured);

/// Returns the status value for a letter of git-status(1), porcelain v1; 0 for any other.
[[nodiscard]] std::int64_t statusOfLetter(char letter);

/// Returns the status value for a state in the records of the request types from 1000 on
/// ("type changed"); 0 for any other.
[[nodiscard]] std::int64_t statusOfState(std::string_view state);

/// Returns the kind of a conflict ("deleted by us") for the two letters of an unmerged path; empty
/// for other letters.
[[nodiscard]] std::string_view conflictKind(char index, char workTree);

}  // namespace neb::nebsc
