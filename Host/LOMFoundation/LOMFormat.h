// LOMFormat.h - formats with "%@" and "%s".
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Export.h"

namespace neb {

/// The text of an absent value in a message.
inline constexpr std::string_view absentValueText = "(null)";

/// Returns the format with each "%@" and "%s" replaced by the next argument. A missing argument is
/// replaced by absentValueText; arguments that are left over are ignored. "%" in an argument has no
/// meaning. Thread-safe.
[[nodiscard]] NEB_EXPORT std::string formattedText(std::string_view format,
                                                   const std::vector<std::string>& arguments);

}  // namespace neb
