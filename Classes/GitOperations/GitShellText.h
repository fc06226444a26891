// GitShellText.h - names in a command line for /bin/sh.
//
//     gitShellPattern("src/lib");      // src/lib
//     gitShellPattern("a b/*");        // a b/*       two words, and a wildcard
//     gitShellPattern("$(reboot)");    // \$\(reboot\)
//     gitShellWord("/opt/my tools");   // /opt/my\ tools
#pragma once

#include <string>
#include <string_view>

namespace neb {

/// The text with every character escaped by which the shell would do more than to split it into
/// words at its blanks and to expand its wildcards (`*`, `?`, `[`): start a command, read or write
/// a file, put in a variable or a home folder, or take no account of the rest. Ordinary names stay
/// as they are.
[[nodiscard]] std::string gitShellPattern(std::string_view text);

/// The text as one word that the shell takes literally, blanks and wildcards included.
[[nodiscard]] std::string gitShellWord(std::string_view text);

}  // namespace neb
