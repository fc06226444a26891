// Program.h - the program nebsc, apart from main().
#pragma once

namespace neb::nebsc {

/// Runs the command line, writes the output and returns the exit status. The arguments are those of
/// main(). Throws nothing.
[[nodiscard]] int runProgram(int argc, const char* const* argv) noexcept;

}  // namespace neb::nebsc
