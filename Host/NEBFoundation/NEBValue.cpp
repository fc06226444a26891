#include "NEBFoundation/NEBValue.h"

#include <array>
#include <cstdio>

#include "LOMFoundation/LOMFormat.h"
#include "NEBFoundation/NEBDictionary.h"

namespace neb {

NEBValue::NEBValue(NEBDictionary dictionary)
    : _value(std::make_shared<const NEBDictionary>(std::move(dictionary))) {}

NEBValue::NEBValue(std::shared_ptr<const NEBObject> object) {
    if (object) {
        _value = std::move(object);
    }
}

namespace {

template <typename Kind, typename Variant>
std::optional<Kind> copyIfHeld(const Variant& variant) {
    const Kind* held = std::get_if<Kind>(&variant);
    return held != nullptr ? std::optional(*held) : std::nullopt;
}

template <typename Kind, typename Variant>
const Kind* sharedIfHeld(const Variant& variant) {
    const auto* held = std::get_if<std::shared_ptr<const Kind>>(&variant);
    return held != nullptr ? held->get() : nullptr;
}

bool boolValueOfString(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n"), text.size()));
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
        text.remove_prefix(1);
    }
    text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
    return !text.empty() &&
           std::string_view("YyTt123456789").find(text.front()) != std::string_view::npos;
}

std::string descriptionOfDictionary(const NEBDictionary& dictionary) {
    std::string text = "{";
    for (const NEBDictionary::Entry& entry : dictionary) {
        text.append(text.size() > 1 ? ", " : "").append(entry.key()).append(" = ");
        text += entry.value().description();
    }
    return text + "}";
}

}  // namespace

std::optional<bool> NEBValue::boolean() const {
    return copyIfHeld<bool>(_value);
}
std::optional<std::int64_t> NEBValue::integer() const {
    return copyIfHeld<std::int64_t>(_value);
}
const std::string* NEBValue::string() const {
    return std::get_if<std::string>(&_value);
}
std::optional<NEBDate> NEBValue::date() const {
    return copyIfHeld<NEBDate>(_value);
}
const LOMFilePath* NEBValue::filePath() const {
    return std::get_if<LOMFilePath>(&_value);
}
const NEBDictionary* NEBValue::dictionary() const {
    return sharedIfHeld<NEBDictionary>(_value);
}
const NEBObject* NEBValue::object() const {
    return sharedIfHeld<NEBObject>(_value);
}

bool NEBValue::boolValue() const {
    if (const std::string* text = string()) {
        return boolValueOfString(*text);
    }
    return boolean().value_or(false) || integer().value_or(0) != 0;
}

std::string NEBValue::description() const {
    if (const auto held = boolean()) {
        return *held ? "true" : "false";
    }
    if (const auto held = integer()) {
        return std::to_string(*held);
    }
    if (const std::string* held = string()) {
        return *held;
    }
    if (const auto held = date()) {
        return textOfDate(*held);
    }
    if (const LOMFilePath* held = filePath()) {
        return held->pathString();
    }
    if (const NEBDictionary* held = dictionary()) {
        return descriptionOfDictionary(*held);
    }
    if (const NEBObject* held = object()) {
        return held->descriptionForAssertionMessage();
    }
    return std::string(absentValueText);
}

std::string NEBValue::descriptionForAssertionMessage() const {
    return isString() ? "\"" + *string() + "\"" : description();
}

bool operator==(const NEBValue& left, const NEBValue& right) {
    const NEBDictionary* leftDictionary = left.dictionary();
    const NEBDictionary* rightDictionary = right.dictionary();
    if (leftDictionary != nullptr && rightDictionary != nullptr) {
        return *leftDictionary == *rightDictionary;
    }
    return left._value == right._value;
}

std::string textOfDate(NEBDate date) {
    const auto day =
        std::chrono::floor<std::chrono::duration<std::int64_t, std::ratio<86400>>>(date);
    const std::chrono::hh_mm_ss time(date - day);
    // Howard Hinnant's days-to-civil, in 64 bits: the library's year_month_day ends with year
    // 32767.
    const std::int64_t days = day.time_since_epoch().count() + 719468;
    const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const std::int64_t dayOfEra = days - era * 146097;
    const std::int64_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t shiftedMonth = (5 * dayOfYear + 2) / 153;  // 0 is March
    const std::int64_t month = shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9;
    const std::int64_t year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);

    const bool isOrdinary = year >= 0 && year <= 9999;
    std::array<char, 64> text{};
    static_cast<void>(std::snprintf(
        text.data(), text.size(),
        isOrdinary ? "%04lld-%02d-%02dT%02d:%02d:%02dZ" : "%+05lld-%02d-%02dT%02d:%02d:%02dZ",
        static_cast<long long>(year), static_cast<int>(month),
        static_cast<int>(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1),
        static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
        static_cast<int>(time.seconds().count())));
    return text.data();
}

}  // namespace neb
