#include "Platform/ErrnoText.h"

#include <array>
#include <cstring>

namespace neb {

namespace {

/// strerror_r answers a text on some systems, and a status on others, with the text in the buffer.
[[maybe_unused]] const char* textOf(const char* answer, const char* /*buffer*/) {
    return answer;
}
[[maybe_unused]] const char* textOf(int /*answer*/, const char* buffer) {
    return buffer;
}

}  // namespace

std::string textOfErrno(int number) {
    std::array<char, 256> buffer{};
    return textOf(::strerror_r(number, buffer.data(), buffer.size()), buffer.data());
}

}  // namespace neb
