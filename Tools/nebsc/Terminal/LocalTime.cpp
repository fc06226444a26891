#include "Terminal/LocalTime.h"

#include <time.h>

#include <array>

namespace neb::nebsc {

namespace {

/// What is beyond the years that the system can reckon with is shown as ISO writes it, in UTC.
std::string formatted(NEBDate date, const char* format) {
    const time_t seconds = date.time_since_epoch().count();
    tm parts{};
    ::tzset();  // localtime_r() need not
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
