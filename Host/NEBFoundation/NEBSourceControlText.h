// NEBSourceControlText.h - text from the bytes that a tool printed.
#pragma once

#include <optional>
#include <string>

#include "Platform/Data.h"
#include "Platform/Export.h"

namespace neb {

/// The bytes as text: UTF-8, with U+FFFD for what is not. Nothing only for absent data.
///
/// A text that is one single line and no row of a listing (a row holds a TAB, or begins with a
/// blank, "*" or "+") is an answer or a message: its line end (LF or CRLF) is dropped. Every other
/// text is kept to the byte, so a listing keeps the empty piece behind its last line end.
[[nodiscard]] NEB_EXPORT std::optional<std::string> _nebsc_stringFromData(
    const std::optional<Data>& data);

/// The same text as Data: those that are given, wherever the text is all of their bytes.
[[nodiscard]] NEB_EXPORT Data NEBSourceControlTextData(const Data& data);

}  // namespace neb
