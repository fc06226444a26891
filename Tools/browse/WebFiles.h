// WebFiles.h - the files of the page, which the program contains.
#pragma once

#include <span>
#include <string_view>

namespace neb::nebsc {

struct WebFile {
    /// As in a URL, "/page.js".
    std::string_view path;
    std::string_view bytes;
};

/// Returns all files. They live as long as the program. Thread-safe.
[[nodiscard]] std::span<const WebFile> webFiles();

}  // namespace neb::nebsc
