// ShellText.h - text for a person to paste into a shell. From any thread.
#pragma once

#include <string>
#include <string_view>

namespace neb::nebsc {

/// The text as one word of a POSIX shell: as it is where no character of it means anything there,
/// else in quotes. Control characters, and bytes that are no UTF-8, are written as printf(1) takes
/// them, so that the word drives no terminal and stays on one line; line ends at the word's end
/// alone stay what they are, as the shell would drop them otherwise.
[[nodiscard]] std::string shellQuoted(std::string_view text);

/// The words with "***" for what stands before the "@" of a URL and may be secret: a name and a
/// password ("https://***@host/…"), and a name alone where it is asked for over HTTP, as it may be
/// a token. The name of an account ("ssh://git@host") stays.
[[nodiscard]] std::string withoutSecrets(std::string_view words);

}  // namespace neb::nebsc
