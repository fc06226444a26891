// ProgramSearch.h - the search for a program by name or path, as a shell does it.
#pragma once

#include <string>
#include <string_view>

namespace neb::nebsc {

/// Returns whether the file at the path is executable.
[[nodiscard]] bool isProgram(const std::string& path);

/// Returns whether one of the folders, separated by ":", contains the program.
[[nodiscard]] bool isProgramIn(std::string_view folders, const std::string& name);

}  // namespace neb::nebsc
