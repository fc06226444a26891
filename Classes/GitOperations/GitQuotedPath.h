// GitQuotedPath.h - UTF-8 texts for paths of git.
#pragma once

#include <string>
#include <string_view>

namespace neb {

/// Returns a path, as git prints it with core.quotePath=false (see git-config(1)), as UTF-8:
/// unchanged if it is UTF-8, otherwise as git prints it with core.quotePath=true: `"lat\344.txt"`.
/// Thread-safe.
[[nodiscard]] std::string gitTextOfPath(std::string_view printed);

/// Returns lines of paths, separated by TABs within a line, with gitTextOfPath() applied to each
/// path. Thread-safe.
[[nodiscard]] std::string gitTextOfPathLines(std::string_view printed);

}  // namespace neb
