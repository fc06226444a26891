// Report.h - the figures as a page of Markdown.
#pragma once

#include <filesystem>
#include <ostream>
#include <string>

#include "Results.h"

namespace neb::benchmarks {

/// The tables: every case, every target, the machine.
void writeReport(std::ostream& stream, const Results& results, const std::string& command);

/// Puts the text into the page in place of what stands between its two marks; everything around
/// them stays. A page that cannot be read or written, or has no marks, is a std::runtime_error.
void replaceGeneratedText(const std::filesystem::path& page, const std::string& text);

}  // namespace neb::benchmarks
