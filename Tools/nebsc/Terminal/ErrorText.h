// ErrorText.h - error messages for a person at a terminal. Every function is thread-safe.
#pragma once

#include <string>
#include <string_view>

#include "NEBFoundation/NEBSourceControlError.h"

namespace neb::nebsc {

/// Returns a sentence in the form that follows "nebsc: ": without git's "fatal: ", in lower case
/// unless it begins with a name, and without the full stop of a single sentence.
[[nodiscard]] std::string messageLine(std::string_view sentence);

/// Returns the lines that report an error on standard error: "nebsc: " and its description (of a
/// longer one the line that reports the failure), then the recovery suggestion, then, indented, the
/// description's other lines, the lines of the tool's output that add to it, and the files that
/// none of them reports as such (NEBSourceControlFilesInText). Hints that are the suggestion are
/// not repeated.
[[nodiscard]] std::string errorLines(const NEBSourceControlError& error);

}  // namespace neb::nebsc
