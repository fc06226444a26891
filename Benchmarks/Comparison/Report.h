// Report.h - the figures as Markdown.
#pragma once

#include <filesystem>
#include <ostream>
#include <string>

#include "Results.h"

namespace neb::benchmarks {

/// Returns the tables: cases, targets, the machine.
void writeReport(std::ostream& stream, const Results& results, const std::string& command);

/// Replaces the text between the two marks of the page. Throws std::runtime_error if the page
/// cannot be read or written, or has no marks.
void replaceGeneratedText(const std::filesystem::path& page, const std::string& text);

}  // namespace neb::benchmarks
