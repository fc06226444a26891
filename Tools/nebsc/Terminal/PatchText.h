// PatchText.h - a patch in the form for a terminal or a file.
#pragma once

#include <string>
#include <string_view>

namespace neb::nebsc {

/// Returns the text to write to the descriptor, in git's colours if `isColoured`. If the descriptor
/// is a terminal, control characters are made printable; otherwise the bytes are unchanged, so that
/// a program can apply the patch. Thread-safe.
[[nodiscard]] std::string patchText(int descriptor, std::string_view patch, bool isColoured);

}  // namespace neb::nebsc
