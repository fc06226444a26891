// DateFormatter.h - parses dates such as "2020-09-13 17:28:20 +0100".
//
//     const DateFormatter formatter;
//     formatter.dateFromString("2020-09-13 17:28:20 +0100");   // 2020-09-13 16:28:20 UTC
//     formatter.dateFromString("yesterday");                   // nothing
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>

#include "Platform/Export.h"

namespace neb {

/// Parses dates of the Gregorian calendar in the format "yyyy-MM-dd HH:mm:ss ZZZZZ", independent of
/// the time zone and locale of the process. Thread-safe.
class NEB_EXPORT DateFormatter {
public:
    /// Whole seconds since 1970-01-01 00:00:00 UTC.
    using Date = std::chrono::sys_time<std::chrono::duration<std::int64_t>>;

    /// Returns the date, or nothing if the whole text does not have the format or the day or time
    /// does not exist. The year has at least four digits. The offset is "+0530", "+05:30", or "Z"
    /// for UTC. Its last two digits are minutes and may exceed 59.
    [[nodiscard]] std::optional<Date> dateFromString(std::string_view text) const;
};

}  // namespace neb
