#include "Rounds.h"

#include <algorithm>
#include <chrono>

namespace neb::benchmarks {

namespace {

constexpr double worthwhileMilliseconds = 2000;
constexpr int mostRounds = 300;

/// Returns `combine` of the two for each round.
template <typename Combine>
Spread combined(const std::vector<double>& left, const std::vector<double>& right,
                Combine combine) {
    std::vector<double> values(left.size());
    std::transform(left.begin(), left.end(), right.begin(), values.begin(), combine);
    return spreadOf(std::move(values));
}

}  // namespace

Spread spreadOf(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    const double median =
        values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
    return {.median = median, .least = values.front(), .most = values.back()};
}

double millisecondsOf(const std::function<void()>& run) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    run();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

Rounds::Rounds(const std::vector<std::function<void()>>& ways, int atLeast) : _times(ways.size()) {
    double onceRound = 0;
    for (const auto& way : ways) {
        onceRound += millisecondsOf(way);
    }
    const auto rounds =
        std::max(atLeast, static_cast<int>(std::min<double>(
                              mostRounds, worthwhileMilliseconds / std::max(onceRound, 0.001))));
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < ways.size(); ++i) {
            const std::size_t place = round % 2 == 0 ? i : ways.size() - 1 - i;
            const std::size_t way = (place + static_cast<std::size_t>(round / 2)) % ways.size();
            _times[way].push_back(millisecondsOf(ways[way]));
        }
    }
}

Spread Rounds::ratio(std::size_t way, std::size_t other) const {
    return combined(_times[way], _times[other], [](double a, double b) { return a / b; });
}

Spread Rounds::difference(std::size_t way, std::size_t other) const {
    return combined(_times[way], _times[other], [](double a, double b) { return a - b; });
}

}  // namespace neb::benchmarks
