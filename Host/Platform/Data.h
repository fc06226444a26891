// Data.h - bytes as a child process wrote them.
#pragma once

#include <string>

namespace neb {

/// A byte buffer. It may hold anything: NUL bytes, bytes that are no UTF-8, nothing at all. Where
/// "no buffer" differs from "an empty buffer", the type is std::optional<Data>.
using Data = std::string;

}  // namespace neb
