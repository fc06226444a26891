// DateFormatter.h - dates as git writes them for people to read.
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

/// Reads the one pattern "yyyy-MM-dd HH:mm:ss ZZZZZ" of the Gregorian calendar, whatever the time
/// zone, the locale or the clock of the process. From any thread.
class NEB_EXPORT DateFormatter {
public:
    /// An instant, in whole seconds since 1970-01-01 00:00:00 UTC.
    using Date = std::chrono::sys_time<std::chrono::duration<std::int64_t>>;

    /// The instant that the text names; nothing when it is not wholly of the pattern, or names a
    /// day or time that there is not. The year has four digits or more. The offset is "+0530",
    /// "+05:30", or "Z" for none; the last two digits are minutes, however many, as with git.
    [[nodiscard]] std::optional<Date> dateFromString(std::string_view text) const;
};

}  // namespace neb
