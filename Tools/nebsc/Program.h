// Program.h - the program nebsc, apart from main().
#pragma once

namespace neb::nebsc {

class BrowseGateway;

/// Runs the command line, writes the output and returns the exit status. The arguments are those of
/// main(). `gateway` is for the command "browse"; null in nebsc itself. Throws nothing.
[[nodiscard]] int runProgram(int argc, const char* const* argv,
                             const BrowseGateway* gateway = nullptr) noexcept;

}  // namespace neb::nebsc
