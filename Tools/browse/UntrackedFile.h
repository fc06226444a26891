// UntrackedFile.h - reads a file of a working copy for the page.
#pragma once

#include <string>

namespace neb::nebsc {

struct UntrackedFile {
    std::string bytes{};
    /// A sentence that says why there are no bytes; empty if there are.
    std::string refusal{};
};

/// Reads a regular file of at most 4 MiB. `path` is relative to `folder`, the top of a working
/// copy; it cannot lead out of it: "..", ".git" and symbolic links are refused. Thread-safe.
[[nodiscard]] UntrackedFile readUntrackedFile(const std::string& folder, const std::string& path);

}  // namespace neb::nebsc
