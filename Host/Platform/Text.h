// Text.h - UTF-8.
#pragma once

#include <string>
#include <string_view>

#include "Platform/Data.h"
#include "Platform/Export.h"

namespace neb {

/// Whether the bytes are well-formed UTF-8 (no overlong forms, no surrogates, nothing above
/// U+10FFFF). No bytes at all are.
[[nodiscard]] NEB_EXPORT bool isUTF8(std::string_view bytes);

/// The bytes as UTF-8, with one U+FFFD in place of each longest piece that is no UTF-8 but could
/// have begun one, the way of the Unicode standard and of the web's decoders.
[[nodiscard]] NEB_EXPORT std::string textReplacingInvalidBytes(std::string_view bytes);

}  // namespace neb
