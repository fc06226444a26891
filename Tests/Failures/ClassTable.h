// ClassTable.h - the table of the classes of failure in docs/errors.md.
#pragma once

#include <string>
#include <vector>

namespace neb::test {

/// Returns the table's lines in Markdown: each class with its codes, its sentence and its advice.
/// The codes are those that the tests measure: of the failures in allFailures(), of the texts in
/// ErrorTexts.h as the plug-in translates them, and of what no git reports. A class of which no
/// test shows a code has none in the table.
[[nodiscard]] std::vector<std::string> classTable();

}  // namespace neb::test
