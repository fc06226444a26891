// LOMFormat.h - message formats with "%@" and "%s" in them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Export.h"

namespace neb {

/// What an absent value reads as in a message.
inline constexpr std::string_view absentValueText = "(null)";

/// The format with each "%@" and "%s", from left to right, replaced by the next argument. One for
/// which there is no argument reads as absent; arguments too many are left out. What an argument
/// holds is never read as a format.
[[nodiscard]] NEB_EXPORT std::string formattedText(std::string_view format,
                                                   const std::vector<std::string>& arguments);

}  // namespace neb
