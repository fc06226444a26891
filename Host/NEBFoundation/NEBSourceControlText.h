// NEBSourceControlText.h - the output of a tool as text.
//
//     const std::string branch = *_nebsc_stringFromData(output);   // "main"
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "NEBFoundation/NEBConstant.h"
#include "NEBFoundation/NEBDictionary.h"
#include "Platform/Data.h"
#include "Platform/Export.h"

namespace neb {

/// Returns the bytes as UTF-8, with U+FFFD for invalid bytes. Absent only for absent data.
///
/// The line end (LF or CRLF) of a single line is removed, unless the line looks like a row of a
/// listing: it has a TAB, or starts with a blank, "*" or "+". Any other text is preserved byte for
/// byte; a listing keeps its last line end. Thread-safe.
[[nodiscard]] NEB_EXPORT std::optional<std::string> _nebsc_stringFromData(
    const std::optional<Data>& data);

/// Returns the same text as Data; `data` itself if the text consists of all its bytes. Thread-safe.
[[nodiscard]] NEB_EXPORT Data NEBSourceControlTextData(const Data& data);

/// Sets the text of a record: the bytes as UTF-8, with U+FFFD for invalid ones. If there are such,
/// also sets `bytesKey` to the bytes themselves, so that no name is lost. Thread-safe.
NEB_EXPORT void NEBSourceControlSetText(NEBDictionary& record, NEBConstant key,
                                        NEBConstant bytesKey, std::string_view bytes);

}  // namespace neb
