// Output.h - writing to a descriptor that others may share. From any thread.
#pragma once

#include <string_view>

namespace neb::nebsc {

/// Writes everything, to a descriptor that does not block too. Answers 0 or the errno of the
/// failure.
[[nodiscard]] int writeAll(int descriptor, std::string_view bytes);

}  // namespace neb::nebsc
