#include "GitExtensions/GitRecordFields.h"

#include <charconv>
#include <cstdint>
#include <optional>

#include "Platform/Text.h"

namespace neb {

namespace {

/// Parses the whole text; absent if it is not an integer.
std::optional<std::int64_t> integerOf(std::string_view text) {
    std::int64_t value = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, value);
    return read.ec == std::errc() && read.ptr == end ? std::optional(value) : std::nullopt;
}

/// Returns the minutes of "+hhmm" or "-hhmm".
std::optional<std::int64_t> minutesOf(std::string_view zone) {
    constexpr std::int64_t minutesPerHour = 60;
    constexpr std::int64_t hundred = 100;
    const bool isEast = zone.starts_with('+');
    const auto digits = integerOf(isEast ? zone.substr(1) : zone);
    return digits && (isEast || zone.starts_with('-'))
               ? std::optional(*digits / hundred * minutesPerHour + *digits % hundred)
               : std::nullopt;
}

}  // namespace

void gitSetText(NEBDictionary& record, NEBConstant key, const Data& output,
                std::string_view field) {
    if (!field.empty()) {
        record.set(key, isUTF8(field) ? NEBValue(output, field)
                                      : NEBValue(textReplacingInvalidBytes(field)));
    }
}

void gitSetName(NEBDictionary& record, const GitNameKeys& keys, const Data& output,
                std::string_view field) {
    gitSetText(record, keys.text, output, field);
    if (!isUTF8(field)) {
        record.set(keys.bytes, NEBValue::ofBytes(field));
    }
}

void gitSetInteger(NEBDictionary& record, NEBConstant key, std::string_view field) {
    if (const auto value = integerOf(field)) {
        record.set(key, *value);
    }
}

void gitSetTime(NEBDictionary& record, const GitTimeKeys& keys, std::string_view field) {
    const std::size_t blank = field.find(' ');
    const auto seconds = integerOf(field.substr(0, blank));
    const auto minutes =
        minutesOf(field.substr(blank == std::string_view::npos ? field.size() : blank + 1));
    if (seconds && minutes) {
        record.set(keys.seconds, *seconds);
        record.set(keys.offset, *minutes);
    }
}

}  // namespace neb
