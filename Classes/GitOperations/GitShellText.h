// GitShellText.h - names in a command line for /bin/sh.
//
//     gitShellPattern("src/lib");      // src/lib
//     gitShellPattern("a b/*");        // a b/*       two arguments and a wildcard
//     gitShellPattern("$(reboot)");    // \$\(reboot\)
//     gitShellWord("/opt/my tools");   // /opt/my\ tools
#pragma once

#include <string>
#include <string_view>

namespace neb {

/// Returns the text with all characters escaped that mean more to the shell than a separator
/// (blanks) or a wildcard (`*`, `?`, `[`). Ordinary names are unchanged.
[[nodiscard]] std::string gitShellPattern(std::string_view text);

/// Returns the text as one argument that the shell takes literally, including blanks and wildcards.
[[nodiscard]] std::string gitShellWord(std::string_view text);

}  // namespace neb
