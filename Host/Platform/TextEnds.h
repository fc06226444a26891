// TextEnds.h - the beginning and the end of a text that is too long. Inside the host library only.
#pragma once

#include <cstddef>
#include <string_view>

namespace neb {

/// Two parts of a text.
struct TextEnds {
    std::string_view first;
    std::string_view last;
};

/// Returns the first and the last bytes of the text, about half of `limit` each.
/// `limit` must be at least 16 KiB, and at most the length of the text. Cuts between lines, or
/// between the characters of a line that is longer than 4 KiB. Thread-safe.
[[nodiscard]] TextEnds endsOf(std::string_view text, std::size_t limit);

}  // namespace neb
