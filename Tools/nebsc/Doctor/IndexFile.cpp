#include "Doctor/IndexFile.h"

#include <algorithm>
#include <fstream>
#include <utility>

#include "Doctor/SecureHash.h"
#include "Session/Paths.h"

namespace neb::nebsc {

namespace {

/// The bytes must have four bytes at the position.
std::uint32_t numberAt(std::string_view bytes, std::size_t position) {
    std::uint32_t number = 0;
    for (const char byte : bytes.substr(position, 4)) {
        number = number << 8 | static_cast<unsigned char>(byte);
    }
    return number;
}

/// Returns whether a sequence of extensions, each with a name and a size of four bytes, begins at
/// the position and fills the bytes.
bool areExtensions(std::string_view bytes, std::size_t position) {
    constexpr std::size_t headerSize = 8;
    while (position + headerSize <= bytes.size()) {
        position += headerSize + numberAt(bytes, position + 4);
    }
    return position == bytes.size();
}

/// Searches from the end, because the entries before the extensions differ in size. A file name of
/// the index may contain the name of the extension, but is not followed by extensions.
bool hasExtension(std::string_view bytes, std::string_view name) {
    for (std::size_t position = bytes.rfind(name); position != std::string_view::npos;
         position = position == 0 ? std::string_view::npos : bytes.rfind(name, position - 1)) {
        if (areExtensions(bytes, position)) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::optional<IndexFile> indexFileIn(std::string_view bytes, std::size_t hashSize) {
    constexpr std::size_t headerSize = 12;
    if (bytes.size() < headerSize + hashSize || !bytes.starts_with("DIRC")) {
        return std::nullopt;
    }
    const std::string_view extensions =
        bytes.substr(headerSize, bytes.size() - headerSize - hashSize);
    return IndexFile{.version = numberAt(bytes, 4),
                     .entries = numberAt(bytes, 8),
                     .hasUntrackedCache = hasExtension(extensions, "UNTR")};
}

bool hasIntactHash(std::string_view bytes) {
    constexpr std::size_t sha1Size = 20;
    constexpr std::size_t sha256Size = 32;
    const auto endsWithHash = [bytes](std::size_t size, std::string (*hashOf)(std::string_view)) {
        return bytes.size() >= size &&
               bytes.ends_with(hashOf(bytes.substr(0, bytes.size() - size)));
    };
    return bytes.ends_with(std::string(sha1Size, '\0')) || endsWithHash(sha1Size, sha1Of) ||
           endsWithHash(sha256Size, sha256Of);
}

std::optional<std::string> indexBytesAt(const std::string& path) {
    if (!isRegularFile(path)) {
        return std::nullopt;
    }
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamoff size = file ? static_cast<std::streamoff>(file.tellg()) : 0;
    std::string bytes(static_cast<std::size_t>(std::max<std::streamoff>(size, 0)), '\0');
    file.seekg(0);
    file.read(bytes.data(), size);
    return file ? std::optional(std::move(bytes)) : std::nullopt;
}

std::optional<IndexFile> indexFileAt(const std::string& path, std::size_t hashSize) {
    const std::optional<std::string> bytes = indexBytesAt(path);
    return bytes ? indexFileIn(*bytes, hashSize) : std::nullopt;
}

}  // namespace neb::nebsc
