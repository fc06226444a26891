// ProgramSearch.h - whether there is a program of a name, as a shell would find it.
#pragma once

#include <string>
#include <string_view>

namespace neb::nebsc {

/// Whether the file at the path can be run.
[[nodiscard]] bool isProgram(const std::string& path);

/// Whether a program of the name is in one of the folders, which ":" separates.
[[nodiscard]] bool isProgramIn(std::string_view folders, const std::string& name);

}  // namespace neb::nebsc
