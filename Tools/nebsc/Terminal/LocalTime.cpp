#include "Terminal/LocalTime.h"

#include <time.h>

#include <array>

namespace neb::nebsc {

namespace {

/// Returns the ISO 8601 form in UTC if the year is out of the system's range.
std::string formatted(NEBDate date, const char* format) {
    const time_t seconds = date.time_since_epoch().count();
    tm parts{};
    ::tzset();  // localtime_r() does not always call it
    if (::localtime_r(&seconds, &parts) == nullptr) {
        return textOfDate(date);
    }
    std::array<char, 64> text{};
    return {text.data(), ::strftime(text.data(), text.size(), format, &parts)};
}

}  // namespace

std::string localMinute(NEBDate date) {
    return formatted(date, "%Y-%m-%d %H:%M");
}

std::string localSecondWithZone(NEBDate date) {
    return formatted(date, "%Y-%m-%d %H:%M:%S %z");
}

}  // namespace neb::nebsc
