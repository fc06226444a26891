// StartFolder.h - the option -C, which sets the folder in which nebsc starts.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "Terminal/CommandOutput.h"

namespace neb::nebsc {

/// Changes the current folder to each of the folders in turn; each is relative to the one before.
/// Ignores an empty string. Returns an error that names the first folder that cannot be entered;
/// absent on success. Not thread-safe: changes the whole process, so call it before other threads
/// start.
[[nodiscard]] std::optional<CommandOutput> enterFolders(std::span<const std::string> folders);

}  // namespace neb::nebsc
