#include "Platform/ErrnoText.h"

#include <array>
#include <cstring>

namespace neb {

namespace {

/// strerror_r returns the text on some systems. On others it returns a status and fills the buffer.
[[maybe_unused]] const char* textOf(const char* text, const char* /*buffer*/) {
    return text;
}
[[maybe_unused]] const char* textOf(int /*status*/, const char* buffer) {
    return buffer;
}

}  // namespace

std::string textOfErrno(int number) {
    std::array<char, 256> buffer{};
    const std::string text =
        textOf(::strerror_r(number, buffer.data(), buffer.size()), buffer.data());
    // The text of musl for each error that it does not know.
    return text == "No error information" ? "Unknown error " + std::to_string(number) : text;
}

}  // namespace neb
