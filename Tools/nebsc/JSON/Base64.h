// Base64.h - bytes as ASCII text; see RFC 4648, section 4.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace neb::nebsc {

/// Appends the bytes in base64, with padding. Thread-safe.
void appendBase64(std::string& text, std::string_view bytes);

/// Returns the bytes of a base64 text; absent if it has other characters or wrong padding.
/// Thread-safe.
[[nodiscard]] std::optional<std::string> bytesOfBase64(std::string_view text);

}  // namespace neb::nebsc
