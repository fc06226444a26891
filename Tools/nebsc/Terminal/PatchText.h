// PatchText.h - a patch as a terminal shows it.
#pragma once

#include <string>
#include <string_view>

namespace neb::nebsc {

/// Returns the patch for the descriptor, coloured as git colours it if `isColoured`. On a terminal,
/// control characters are made printable; elsewhere the bytes stay as they are, so that a program
/// can apply the patch.
[[nodiscard]] std::string patchText(int descriptor, std::string_view patch, bool isColoured);

}  // namespace neb::nebsc
