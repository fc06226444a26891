// ChildLimits.h - how long child processes may run, and how much they may write.
//
//     ChildLimits limits{.silence = std::chrono::seconds(30), .outputBytes = 1U << 20U};
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace neb {

/// The limits of a run. An absent member is no limit. When one is exceeded, the children are ended
/// as if the run were cancelled.
struct ChildLimits {
    /// The longest time during which the children may write nothing.
    std::optional<std::chrono::milliseconds> silence = std::nullopt;
    /// The longest time of the run. Time in which a receiver of the output held the children back
    /// does not count.
    std::optional<std::chrono::milliseconds> total = std::nullopt;
    /// The most bytes that the children may write to standard error and, the last one, to standard
    /// output.
    std::optional<std::uint64_t> outputBytes = std::nullopt;
};

/// A member of ChildLimits.
enum class ChildLimit { silence, total, outputBytes };

}  // namespace neb
