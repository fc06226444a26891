// Program.h - nebsc as a whole.
#pragma once

namespace neb::nebsc {

/// Does what the command line asks for, writes what there is to say, and answers the exit status.
/// Nothing is thrown.
[[nodiscard]] int runProgram(int argc, const char* const* argv) noexcept;

}  // namespace neb::nebsc
