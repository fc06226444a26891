// ErrorText.h - error messages for a person at a terminal. Every function is thread-safe.
#pragma once

#include <string>
#include <string_view>

#include "NEBFoundation/NEBSourceControlError.h"

namespace neb::nebsc {

/// Returns the sentence in the form that follows "nebsc: ": without git's "fatal: ", with a lower
/// case first letter unless it begins with a name, and without the full stop of a single sentence.
[[nodiscard]] std::string messageLine(std::string_view sentence);

/// Returns a sentence of the library, which puts names in double quotes, with single quotes. Keeps
/// double quotes that are part of a name or of another text.
[[nodiscard]] std::string withSingleQuotes(std::string_view sentence);

/// Returns the lines that report an error on standard error. Sentences of the library have single
/// quotes, as those of nebsc; git's output is not changed. The order is:
///
/// - "nebsc: " and the description; if it has several lines, the one that reports the failure
/// - the recovery suggestion; hints that it contains are not repeated below
/// - indented, the other lines of the description
/// - indented, the output of the tool, unless the description contains it
/// - indented, the files of the error that these texts do not name (NEBSourceControlFilesInText)
[[nodiscard]] std::string errorLines(const NEBSourceControlError& error);

}  // namespace neb::nebsc
