// ServerLoad.h - many concurrent small requests to "nebsc serve".
#pragma once

#include <filesystem>
#include <string>

#include "Rounds.h"

namespace neb::benchmarks {

struct ServerLoad {
    /// Requests per second divided by commands per second.
    Spread toXargs;
    /// Requests per second.
    double rate = 0;
};

/// Requests the current branch of the repository at the path from a running server, 64 requests at
/// a time, and compares with "xargs -P 64" running the same git command as often. `nebsc` is the
/// path of the program.
ServerLoad measureServerLoad(const std::filesystem::path& nebsc, const std::string& path,
                             int rounds);

}  // namespace neb::benchmarks
