// TextTable.h - rows of text in aligned columns.
#pragma once

#include <string>
#include <vector>

namespace neb::nebsc {

/// Returns a line for each row of printable cells: each column as wide as its widest cell, two
/// blanks between columns, no blanks at the end of a line. Rows may differ in length. A line that
/// does not fit on the terminal at `descriptor` is cut.
[[nodiscard]] std::string tableLines(int descriptor,
                                     const std::vector<std::vector<std::string>>& rows);

}  // namespace neb::nebsc
