// SecureHash.h - the hash functions of git's files; see FIPS 180-4. All functions are thread-safe.
#pragma once

#include <string>
#include <string_view>

namespace neb::nebsc {

/// Returns the SHA-1 of the bytes: 20 bytes.
[[nodiscard]] std::string sha1Of(std::string_view bytes);

/// Returns the SHA-256 of the bytes: 32 bytes.
[[nodiscard]] std::string sha256Of(std::string_view bytes);

}  // namespace neb::nebsc
