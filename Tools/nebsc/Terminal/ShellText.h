// ShellText.h - text that can be pasted into a shell. Every function is thread-safe.
#pragma once

#include <string>
#include <string_view>

namespace neb::nebsc {

/// Returns the text as one argument for a POSIX shell: unchanged if no character is special to the
/// shell, otherwise quoted. Control characters and bytes that are not UTF-8 become escape sequences
/// of printf(1), so that the argument is printable and on one line. Only line ends at the end of
/// the text stay as they are, because command substitution would remove them.
[[nodiscard]] std::string shellQuoted(std::string_view text);

/// Returns the text with "***" instead of the credentials in URLs: a name with a password
/// ("https://***@host/…"), and also a name alone in an HTTP or FTP URL, because it may be a token.
/// An account name ("ssh://git@host") stays.
[[nodiscard]] std::string withoutSecrets(std::string_view text);

}  // namespace neb::nebsc
