// Rounds.h - alternating measurements, so that other load affects all candidates alike.
#pragma once

#include <functional>
#include <vector>

namespace neb::benchmarks {

/// The results of several rounds.
struct Spread {
    double median = 0;
    double least = 0;
    double most = 0;
};
Spread spreadOf(std::vector<double> values);

/// Runs once and returns the milliseconds.
double millisecondsOf(const std::function<void()>& run);

/// The milliseconds of each candidate in each round.
class Rounds {
public:
    /// Runs each candidate once unmeasured, then once per round, in rotating and reversing order,
    /// so that none always follows the same. Runs at least that many rounds; for fast candidates as
    /// many as take two seconds, at most 300. All rounds count.
    Rounds(const std::vector<std::function<void()>>& ways, int atLeast);

    [[nodiscard]] Spread milliseconds(std::size_t way) const { return spreadOf(_times[way]); }
    /// Summarizes the quotients of the two per round.
    [[nodiscard]] Spread ratio(std::size_t way, std::size_t other) const;
    /// Summarizes the differences of the two per round, in milliseconds.
    [[nodiscard]] Spread difference(std::size_t way, std::size_t other) const;

private:
    std::vector<std::vector<double>> _times;
};

}  // namespace neb::benchmarks
