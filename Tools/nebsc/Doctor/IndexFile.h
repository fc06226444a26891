// IndexFile.h - reads the properties of git's index file, see gitformat-index(5).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace neb::nebsc {

struct IndexFile {
    std::uint32_t version = 0;
    std::uint32_t entries = 0;
    bool hasUntrackedCache = false;
};

/// Returns the properties of an index from its bytes; absent if they are no index. `hashSize` is
/// the size of the hash at the end of the file: 20 or 32.
[[nodiscard]] std::optional<IndexFile> indexFileIn(std::string_view bytes, std::size_t hashSize);

/// Returns whether the bytes of an index end with their hash, SHA-1 or SHA-256, or with zeros, as
/// with the setting index.skipHash. git itself compares it only in git-fsck(1).
[[nodiscard]] bool hasIntactHash(std::string_view bytes);

/// Returns the bytes of a file; absent if it cannot be read.
[[nodiscard]] std::optional<std::string> indexBytesAt(const std::string& path);

/// Does the same as indexFileIn() for a file; absent if it cannot be read.
[[nodiscard]] std::optional<IndexFile> indexFileAt(const std::string& path, std::size_t hashSize);

}  // namespace neb::nebsc
