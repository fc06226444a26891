// StatusWords.h - the state of a file in a word.
#pragma once

#include <string>

#include "NEBFoundation/NEBValue.h"

namespace neb::nebsc {

/// The word for a status value ("modified"; "changed" for one that has none, and for none), and
/// blanks up to the next column.
[[nodiscard]] std::string statusColumn(const NEBValue& status, bool isColoured);

}  // namespace neb::nebsc
