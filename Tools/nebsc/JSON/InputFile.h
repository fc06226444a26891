// InputFile.h - reads what a person names on the command line.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace neb::nebsc {

/// All bytes of an input, or why there are none.
struct InputReading {
    std::optional<std::string> bytes;
    /// One sentence that names the file and the reason; empty when there are bytes.
    std::string failure;
};

/// Reads the file to its end; "-" stands for standard input. Fails, without reading on, when it has
/// more than `most` bytes. Blocks as long as the writer of a pipe or terminal takes.
[[nodiscard]] InputReading readInput(const std::string& file, std::size_t most);

}  // namespace neb::nebsc
