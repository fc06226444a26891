// Measurement.h - the figures of a case for one size.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Cases.h"
#include "Rounds.h"

namespace neb::benchmarks {

struct Measurement {
    const Case* what = nullptr;
    int size = 0;
    std::size_t records = 0;
    /// The size of the output of git.
    std::size_t bytes = 0;
    /// Milliseconds of a bare git process, of the whole operation, and of libgit2.
    Spread git{}, operation{}, libgit2{};
    /// Per round: the operation relative to git and to libgit2, and its difference to git.
    Spread toGit{}, toLibGit2{}, added{};
    /// Parsed bytes per millisecond of processor time.
    double parsing = 0;
    /// The growth of the process in bytes while it carries out the request.
    std::int64_t peak = 0;

    [[nodiscard]] double peakToPrinted() const {
        return static_cast<double>(peak) / static_cast<double>(bytes);
    }
};

/// Measures the case in the repository at the path. Throws std::runtime_error if results differ.
Measurement measure(const Case& what, int size, const std::string& path, int rounds);

}  // namespace neb::benchmarks
