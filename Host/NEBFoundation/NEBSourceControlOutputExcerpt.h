// NEBSourceControlOutputExcerpt.h - the part of a child's messages that becomes an error.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "Platform/Export.h"

namespace neb {

/// The longest text that NEBSourceControlOutputExcerpt() returns unchanged, in bytes. It holds the
/// messages about several thousand files.
constexpr std::size_t NEBSourceControlLongestMessages = std::size_t{1} << 20U;

/// Returns the text, or if it is longer than NEBSourceControlLongestMessages, the text without the
/// warnings of git. If that is too long, or nothing, returns the first and the last lines, about
/// half of the length each. A line says that some text is left out. A hook or a server may print
/// any amount, and git's own messages are at the beginning or at the end. Cuts like endsOf(). Takes
/// linear time. Thread-safe.
[[nodiscard]] NEB_EXPORT std::string NEBSourceControlOutputExcerpt(std::string_view text);

}  // namespace neb
