// GitQuotedPath.h - paths that are not UTF-8, as text.
#pragma once

#include <string>
#include <string_view>

namespace neb {

/// Returns the path as text. `printed` is a path as git prints it with core.quotePath=false (see
/// git-config(1)): in double quotes with escapes where the name has a quote, a backslash or a
/// control character, else as it is. A path that is UTF-8 stays as it is printed; any other becomes
/// the spelling with core.quotePath=true, in quotes and with each byte above 0x7F as an octal
/// escape: `"lat\344.txt"`. Thread-safe.
[[nodiscard]] std::string gitTextOfPath(std::string_view printed);

/// Returns the lines of a list of paths, TABs between the columns of a line, with each column as
/// gitTextOfPath() returns it. Thread-safe.
[[nodiscard]] std::string gitTextOfPathLines(std::string_view printed);

}  // namespace neb
