// TextTable.h - rows of text in aligned columns.
#pragma once

#include <string>
#include <vector>

namespace neb::nebsc {

/// Returns a line for each row of printable cells: each column as wide as its widest cell, two
/// blanks between columns, no blanks at the end of a line. Rows may differ in length. Truncates
/// lines that are wider than the terminal at `descriptor`. Thread-safe.
[[nodiscard]] std::string tableLines(int descriptor,
                                     const std::vector<std::vector<std::string>>& rows);

}  // namespace neb::nebsc
