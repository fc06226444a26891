// Collection.h - the rate at which the host library reads a pipe.
#pragma once

#include "Rounds.h"

namespace neb::benchmarks {

struct Collection {
    /// Relative to a bare read loop that keeps all bytes, and to one that reads into the same
    /// memory repeatedly.
    Spread toKeeping, toDiscarding;
    /// Bytes per millisecond.
    double rate = 0;
};

/// Reads half a gigabyte from a child that writes at full speed.
Collection measureCollection(int rounds);

}  // namespace neb::benchmarks
