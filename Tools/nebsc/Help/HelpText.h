// HelpText.h - the text that --help prints.
#pragma once

#include <span>
#include <string>

#include "CommandLine/Command.h"

namespace neb::nebsc {

/// Returns the help of the innermost of the commands, the general help for none.
[[nodiscard]] std::string helpText(std::span<const Command* const> commands);

}  // namespace neb::nebsc
