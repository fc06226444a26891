// Parses dates and compares them with gmtime_r of the system.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#include "Platform/DateFormatter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const neb::DateFormatter formatter;
    const auto read =
        formatter.dateFromString(std::string_view(reinterpret_cast<const char*>(data), size));
    std::time_t time = read ? read->time_since_epoch().count() : 0;
    if (!read && size >= sizeof time) {
        std::memcpy(&time, data, sizeof time);
    }
    std::tm parts{};
    constexpr std::time_t aroundYear9999 = 253402300799;
    constexpr std::time_t year0 = -62167219200;
    if (time < year0 || time > aroundYear9999 || ::gmtime_r(&time, &parts) == nullptr) {
        return 0;
    }
    char text[64];
    static_cast<void>(std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d +0000",
                                    parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday,
                                    parts.tm_hour, parts.tm_min, parts.tm_sec));
    const auto again = formatter.dateFromString(text);
    if (!again || again->time_since_epoch().count() != time) {
        std::abort();
    }
    return 0;
}
