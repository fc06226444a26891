// StartFolder.h - the folder in which nebsc works, where the call names one.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "Terminal/CommandOutput.h"

namespace neb::nebsc {

/// Makes the folders the current one, one after the other, each relative to the one before it; an
/// empty one changes nothing. Returns a refusal that names the first that cannot be entered.
/// Changes the whole process: for its start, on the main thread alone.
[[nodiscard]] std::optional<CommandOutput> enterFolders(std::span<const std::string> folders);

}  // namespace neb::nebsc
