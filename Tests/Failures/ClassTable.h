// ClassTable.h - the table of error classes in docs/errors.md.
#pragma once

#include <string>
#include <vector>

namespace neb::test {

/// Returns the lines of the table in Markdown: each class with its codes, description and advice.
/// The codes are measured: those of allFailures(), of the texts in ErrorTexts.h as the plug-in
/// translates them, and of errors without a text of git. A class without a measured code has an
/// empty column.
[[nodiscard]] std::vector<std::string> classTable();

}  // namespace neb::test
