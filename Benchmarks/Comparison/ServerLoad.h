// ServerLoad.h - many small requests at once through "nebsc serve".
#pragma once

#include <filesystem>
#include <string>

#include "Rounds.h"

namespace neb::benchmarks {

struct ServerLoad {
    /// How many times as many requests a second as commands.
    Spread toXargs;
    /// Requests a second.
    double rate = 0;
};

/// Requests for the current branch of the repository at the path, 64 of them always under way,
/// through a server that is running already, beside the same git command, run as often by
/// "xargs -P 64". `nebsc` is the program's path.
ServerLoad measureServerLoad(const std::filesystem::path& nebsc, const std::string& path,
                             int rounds);

}  // namespace neb::benchmarks
