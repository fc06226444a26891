// InputFile.h - reads a file that is named on the command line, or standard input.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace neb::nebsc {

/// The bytes of an input, or the reason why it could not be read.
struct InputReading {
    std::optional<std::string> bytes;
    /// One sentence that names the file and the reason; empty on success.
    std::string failure;
};

/// Reads the file to its end; "-" means standard input. Fails as soon as more than `maximumSize`
/// bytes have been read. Blocks until the writer of a pipe or terminal closes it. Thread-safe.
[[nodiscard]] InputReading readInput(const std::string& file, std::size_t maximumSize);

}  // namespace neb::nebsc
