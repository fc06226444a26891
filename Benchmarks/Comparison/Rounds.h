// Rounds.h - several ways to do one thing, timed in turn, so that whatever else the machine does
// falls on all of them alike.
#pragma once

#include <functional>
#include <vector>

namespace neb::benchmarks {

/// What several rounds gave.
struct Spread {
    double median = 0;
    double least = 0;
    double most = 0;
};
Spread spreadOf(std::vector<double> values);

/// Milliseconds of one run.
double millisecondsOf(const std::function<void()>& run);

/// The milliseconds of each way in each round.
class Rounds {
public:
    /// Runs every way once unseen, then each once a round, in an order that moves on by one from
    /// round to round and turns around, so that none always follows the same. There are at least so
    /// many rounds, and of quick ways as many more as fill two seconds, but no more than 300.
    /// Nothing is left out.
    Rounds(const std::vector<std::function<void()>>& ways, int atLeast);

    [[nodiscard]] Spread milliseconds(std::size_t way) const { return spreadOf(_times[way]); }
    /// Of the quotients of the two in each round.
    [[nodiscard]] Spread ratio(std::size_t way, std::size_t other) const;
    /// Of the differences of the two in each round, in milliseconds.
    [[nodiscard]] Spread difference(std::size_t way, std::size_t other) const;

private:
    std::vector<std::vector<double>> _times;
};

}  // namespace neb::benchmarks
