// Collection.h - what the host library makes of a pipe.
#pragma once

#include "Rounds.h"

namespace neb::benchmarks {

struct Collection {
    /// Of the rate of a bare read loop that keeps all bytes, and of one that keeps none: it reads
    /// into the same memory over and over.
    Spread toKeeping, toDiscarding;
    /// Bytes a millisecond.
    double rate = 0;
};

/// Collects half a gigabyte that a child writes as fast as it can.
Collection measureCollection(int rounds);

}  // namespace neb::benchmarks
