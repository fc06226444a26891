// Measurement.h - the figures of one case at one size.
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
    /// What git printed.
    std::size_t bytes = 0;
    /// Milliseconds of git started by hand, of the whole operation, of libgit2.
    Spread git{}, operation{}, libgit2{};
    /// By rounds: the operation to git and to libgit2, and what it takes longer than git.
    Spread toGit{}, toLibGit2{}, added{};
    /// Bytes a millisecond of processor time at which the printed bytes become records.
    double parsing = 0;
    /// Bytes by which the process grows while it carries the request out.
    std::int64_t peak = 0;

    [[nodiscard]] double peakToPrinted() const {
        return static_cast<double>(peak) / static_cast<double>(bytes);
    }
};

/// Asks the repository at the path. Parties whose answers differ are a std::runtime_error.
Measurement measure(const Case& what, int size, const std::string& path, int rounds);

}  // namespace neb::benchmarks
