// Usage.h - how commands and parameters are written in the help and in the manual page.
#pragma once

#include <span>
#include <string>

#include "CommandLine/Command.h"

namespace neb::nebsc {

/// Returns "nebsc log [OPTIONS] [REVISION] [[--] FILE]" for the innermost of the commands, "nebsc
/// [OPTIONS] COMMAND [ARGUMENTS]" for none.
[[nodiscard]] std::string usageOf(std::span<const Command* const> commands);

/// Returns "-m, --message MESSAGE" for an option, the name for an argument.
[[nodiscard]] std::string headingOf(const Parameter& parameter);

/// Returns what nebsc is, in one or two lines without the last newline.
[[nodiscard]] std::string_view programDescription();

}  // namespace neb::nebsc
