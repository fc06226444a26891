#include "NEBFoundation/NEBValue.h"

#include <array>
#include <atomic>
#include <cstdio>

#include "LOMFoundation/LOMFormat.h"
#include "NEBFoundation/NEBDictionary.h"

namespace neb {

namespace {

/// From this length on a string that is given away is kept rather than copied.
constexpr std::size_t worthHolding = 4096;

}  // namespace

// ---- what is held -----------------------------------------------------------------------------

struct NEBValue::Shared {
    mutable std::atomic<std::uint32_t> holders = 1;
};

/// A text. Its characters stand behind this object in the same block of memory, or are those of a
/// HeldString.
struct NEBValue::SharedText : Shared {
    bool isHeldString = false;
    std::string_view text;
};

/// A long text that came as a string and is kept as it came, without a copy.
struct NEBValue::HeldString : SharedText {
    explicit HeldString(std::string held) : string(std::move(held)) {
        isHeldString = true;
        text = string;
    }
    const std::string string;
};

template <typename Thing>
struct NEBValue::SharedThing : Shared {
    explicit SharedThing(Thing held) : thing(std::move(held)) {}
    const Thing thing;
};

template <typename Thing>
void NEBValue::holdShared(Kind kind, Thing thing) {
    hold<const Shared*>(new SharedThing<Thing>(std::move(thing)));
    _kind = kind;
}

template <typename Thing>
const Thing* NEBValue::thing(Kind kind) const {
    return _kind == kind ? &static_cast<const SharedThing<Thing>*>(shared())->thing : nullptr;
}

void NEBValue::retain(const Shared& shared) {
    shared.holders.fetch_add(1, std::memory_order_relaxed);
}

template <typename Thing>
void NEBValue::releaseThing(const Shared* shared) {
    if (shared->holders.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete static_cast<const SharedThing<Thing>*>(shared);
    }
}

void NEBValue::release() {
    switch (_kind) {
        case Kind::string:
            return releaseText(static_cast<const SharedText*>(shared()));
        case Kind::filePath:
            return releaseThing<LOMFilePath>(shared());
        case Kind::dictionary:
            return releaseThing<NEBDictionary>(shared());
        case Kind::object:
            return releaseThing<std::shared_ptr<const NEBObject>>(shared());
        default:
            return;  // nothing is shared
    }
}

void NEBValue::retainText(const SharedText& text) {
    retain(text);
}

void NEBValue::releaseText(const SharedText* text) {
    if (text->holders.fetch_sub(1, std::memory_order_acq_rel) != 1) {
        return;
    }
    if (text->isHeldString) {
        delete static_cast<const HeldString*>(text);
    } else {
        ::operator delete(const_cast<SharedText*>(text));
    }
}

const NEBValue::SharedText* NEBValue::sharedText() const {
    if (_kind == Kind::string) {
        retain(*shared());
        return static_cast<const SharedText*>(shared());
    }
    return newText(*string());
}

std::string_view NEBValue::textOf(const SharedText& shared) {
    return shared.text;
}

const NEBValue::SharedText* NEBValue::newText(std::string_view text) {
    void* block = ::operator new(sizeof(SharedText) + text.size());
    char* characters = static_cast<char*>(block) + sizeof(SharedText);
    text.copy(characters, text.size());
    auto* shared = new (block) SharedText;
    shared->text = std::string_view(characters, text.size());
    return shared;
}

NEBValue::NEBValue(std::string_view string) {
    if (string.size() <= shortLength) {
        string.copy(_content.data(), string.size());
        _length = static_cast<std::uint8_t>(string.size());
        _kind = Kind::shortString;
    } else {
        hold<const Shared*>(newText(string));
        _kind = Kind::string;
    }
}

NEBValue::NEBValue(std::string string) {
    if (string.size() < worthHolding) {
        *this = NEBValue(std::string_view(string));
    } else {
        hold<const Shared*>(new HeldString(std::move(string)));
        _kind = Kind::string;
    }
}

NEBValue::NEBValue(LOMFilePath path) {
    holdShared(Kind::filePath, std::move(path));
}

NEBValue::NEBValue(NEBDictionary dictionary) {
    holdShared(Kind::dictionary, std::move(dictionary));
}

NEBValue::NEBValue(std::shared_ptr<const NEBObject> object) {
    if (object) {
        holdShared(Kind::object, std::move(object));
    }
}

std::optional<bool> NEBValue::boolean() const {
    return _kind == Kind::boolean ? std::optional(held<bool>()) : std::nullopt;
}
std::optional<std::int64_t> NEBValue::integer() const {
    return _kind == Kind::integer ? std::optional(held<std::int64_t>()) : std::nullopt;
}
std::optional<std::string_view> NEBValue::string() const {
    if (_kind == Kind::shortString) {
        return std::string_view(_content.data(), _length);
    }
    return _kind == Kind::string ? std::optional(textOf(*static_cast<const SharedText*>(shared())))
                                 : std::nullopt;
}
std::optional<NEBDate> NEBValue::date() const {
    return _kind == Kind::date ? std::optional(NEBDate(NEBDate::duration(held<std::int64_t>())))
                               : std::nullopt;
}
const LOMFilePath* NEBValue::filePath() const {
    return thing<LOMFilePath>(Kind::filePath);
}
const NEBDictionary* NEBValue::dictionary() const {
    return thing<NEBDictionary>(Kind::dictionary);
}
const NEBObject* NEBValue::object() const {
    const auto* held = thing<std::shared_ptr<const NEBObject>>(Kind::object);
    return held != nullptr ? held->get() : nullptr;
}

// ---- as a truth, as text ----------------------------------------------------------------------

namespace {

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

bool NEBValue::boolValue() const {
    if (const auto text = string()) {
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
    if (const auto held = string()) {
        return std::string(*held);
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
    return isString() ? '"' + description() + '"' : description();
}

bool operator==(const NEBValue& left, const NEBValue& right) {
    using Kind = NEBValue::Kind;
    if (left._kind != right._kind) {
        return false;
    }
    switch (left._kind) {
        case Kind::nothing:
            return true;
        case Kind::boolean:
            return left.boolean() == right.boolean();
        case Kind::integer:
        case Kind::date:
            return left.held<std::int64_t>() == right.held<std::int64_t>();
        case Kind::shortString:
        case Kind::string:
            return left.string() == right.string();
        case Kind::filePath:
            return *left.filePath() == *right.filePath();
        case Kind::dictionary:
            return *left.dictionary() == *right.dictionary();
        case Kind::object:
            return left.object() == right.object();
    }
    return false;
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
