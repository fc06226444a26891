#include "NEBFoundation/NEBValue.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>

#include "LOMFoundation/LOMFormat.h"
#include "Platform/Text.h"

namespace neb {

// ---- shared content ---------------------------------------------------------------------------

/// Unless it is a SharedSlice, its characters follow this object in the same block of memory.
struct NEBValue::SharedText : Shared {
    explicit SharedText(std::size_t count, bool isPiece = false)
        : length(count), isHeldPiece(isPiece) {}
    const std::size_t length;
    const bool isHeldPiece;
};

/// A piece whose length or offset does not fit into a value.
struct NEBValue::SharedSlice : SharedText {
    SharedSlice(const Data& data, std::size_t start, std::size_t count)
        : SharedText(count, true), whole(data), offset(start) {}
    const Data whole;
    const std::size_t offset;
};

struct NEBValue::SharedPath : SharedContent {
    explicit SharedPath(LOMFilePath held) : path(std::move(held)) {}
    [[nodiscard]] std::string description() const override { return path.pathString(); }
    [[nodiscard]] bool equals(const SharedContent& other) const override {
        return path == static_cast<const SharedPath&>(other).path;
    }
    const LOMFilePath path;
};

struct NEBValue::SharedArray : SharedContent {
    explicit SharedArray(std::vector<NEBValue> held) : elements(std::move(held)) {}
    [[nodiscard]] std::string description() const override {
        std::string text = "[";
        for (const NEBValue& element : elements) {
            text.append(text.size() > 1 ? ", " : "").append(element.description());
        }
        return text + "]";
    }
    [[nodiscard]] bool equals(const SharedContent& other) const override {
        return elements == static_cast<const SharedArray&>(other).elements;
    }
    const std::vector<NEBValue> elements;
};

struct NEBValue::SharedBytes : SharedContent {
    explicit SharedBytes(Data held) : bytes(std::move(held)) {}
    [[nodiscard]] std::string description() const override {
        return textReplacingInvalidBytes(bytes);
    }
    [[nodiscard]] bool equals(const SharedContent& other) const override {
        return bytes == static_cast<const SharedBytes&>(other).bytes;
    }
    const Data bytes;
};

struct NEBValue::SharedObject : SharedContent {
    explicit SharedObject(std::shared_ptr<const NEBObject> held) : object(std::move(held)) {}
    [[nodiscard]] std::string description() const override {
        return object->descriptionForAssertionMessage();
    }
    [[nodiscard]] bool equals(const SharedContent& other) const override {
        return object == static_cast<const SharedObject&>(other).object;
    }
    const std::shared_ptr<const NEBObject> object;
};

void NEBValue::release() {
    if (_bits.kind == Kind::piece) {
        Data::release(static_cast<const Data::Block*>(shared()));
    } else if (_bits.kind == Kind::string) {
        releaseText(static_cast<const SharedText*>(shared()));
    } else if (shared()->release()) {
        delete sharedContent(_bits.kind);
    }
}

void NEBValue::retainText(const SharedText& text) {
    text.retain();
}

void NEBValue::releaseText(const SharedText* text) {
    if (!text->release()) {
        return;
    }
    if (text->isHeldPiece) {
        delete static_cast<const SharedSlice*>(text);
    } else {
        ::operator delete(const_cast<SharedText*>(text));
    }
}

const NEBValue::SharedText* NEBValue::sharedText() const {
    if (_bits.kind == Kind::string) {
        shared()->retain();
        return static_cast<const SharedText*>(shared());
    }
    return newText(*string());
}

std::string_view NEBValue::textOf(const SharedText& shared) {
    if (shared.isHeldPiece) {
        const auto& piece = static_cast<const SharedSlice&>(shared);
        return piece.whole.bytes().substr(piece.offset, piece.length);
    }
    return {reinterpret_cast<const char*>(&shared) + sizeof(SharedText), shared.length};
}

const NEBValue::SharedText* NEBValue::newText(std::string_view text) {
    void* block = ::operator new(sizeof(SharedText) + text.size());
    text.copy(static_cast<char*>(block) + sizeof(SharedText), text.size());
    return new (block) SharedText(text.size());
}

NEBValue::NEBValue(std::string_view string) {
    if (string.size() <= shortLength) {
        string.copy(_bits.content.data(), string.size());
        _bits.length = static_cast<std::uint8_t>(string.size());
        _bits.kind = Kind::shortString;
    } else {
        hold<const Shared*>(Kind::string, newText(string));
    }
}

NEBValue::NEBValue(const Data& whole, std::string_view piece) {
    if (piece.size() <= shortLength) {
        *this = NEBValue(piece);
        return;
    }
    const auto offset = static_cast<std::size_t>(piece.data() - whole.bytes().data());
    if (piece.size() > std::numeric_limits<std::uint16_t>::max() ||
        offset > std::numeric_limits<std::uint32_t>::max()) {
        hold<const Shared*>(Kind::string, new SharedSlice(whole, offset, piece.size()));
        return;
    }
    hold<const Shared*>(Kind::piece, whole._block);
    const auto noted = static_cast<std::uint32_t>(offset);
    std::memcpy(&_bits.content[offsetIndex], &noted, sizeof noted);
    _bits.content[lengthIndex] = static_cast<char>(piece.size() & 0xFFU);
    _bits.length = static_cast<std::uint8_t>(piece.size() >> 8U);
    shared()->retain();
}

std::string_view NEBValue::textOfSlice() const {
    std::uint32_t offset = 0;
    std::memcpy(&offset, &_bits.content[offsetIndex], sizeof offset);
    const std::size_t length =
        static_cast<unsigned char>(_bits.content[lengthIndex]) | std::size_t{_bits.length} << 8U;
    return {static_cast<const Data::Block*>(shared())->bytes + offset, length};
}

NEBValue::NEBValue(LOMFilePath path) {
    hold<const Shared*>(Kind::filePath, new SharedPath(std::move(path)));
}

NEBValue::NEBValue(std::vector<NEBValue> elements) {
    hold<const Shared*>(Kind::array, new SharedArray(std::move(elements)));
}

NEBValue NEBValue::ofBytes(Data bytes) {
    NEBValue value;
    value.hold<const Shared*>(Kind::bytes, new SharedBytes(std::move(bytes)));
    return value;
}

NEBValue::NEBValue(std::shared_ptr<const NEBObject> object) {
    if (object) {
        hold<const Shared*>(Kind::object, new SharedObject(std::move(object)));
    }
}

std::optional<bool> NEBValue::boolean() const {
    return _bits.kind == Kind::boolean ? std::optional(held<bool>()) : std::nullopt;
}
std::optional<std::int64_t> NEBValue::integer() const {
    return _bits.kind == Kind::integer ? std::optional(held<std::int64_t>()) : std::nullopt;
}
std::optional<std::string_view> NEBValue::string() const {
    if (_bits.kind == Kind::shortString) {
        return std::string_view(_bits.content.data(), _bits.length);
    }
    if (_bits.kind == Kind::piece) {
        return textOfSlice();
    }
    return _bits.kind == Kind::string
               ? std::optional(textOf(*static_cast<const SharedText*>(shared())))
               : std::nullopt;
}
std::optional<NEBDate> NEBValue::date() const {
    return _bits.kind == Kind::date
               ? std::optional(NEBDate(NEBDate::duration(held<std::int64_t>())))
               : std::nullopt;
}
const LOMFilePath* NEBValue::filePath() const {
    const auto* content = sharedContent(Kind::filePath);
    return content != nullptr ? &static_cast<const SharedPath*>(content)->path : nullptr;
}
const std::vector<NEBValue>* NEBValue::array() const {
    const auto* content = sharedContent(Kind::array);
    return content != nullptr ? &static_cast<const SharedArray*>(content)->elements : nullptr;
}
const Data* NEBValue::bytes() const {
    const auto* content = sharedContent(Kind::bytes);
    return content != nullptr ? &static_cast<const SharedBytes*>(content)->bytes : nullptr;
}
const NEBObject* NEBValue::object() const {
    const auto* content = sharedContent(Kind::object);
    return content != nullptr ? static_cast<const SharedObject*>(content)->object.get() : nullptr;
}

// ---- conversions ------------------------------------------------------------------------------

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
    if (isShared()) {
        return sharedContent(_bits.kind)->description();
    }
    return std::string(absentValueText);
}

std::string NEBValue::descriptionForAssertionMessage() const {
    return isString() ? '"' + description() + '"' : description();
}

bool operator==(const NEBValue& left, const NEBValue& right) {
    using Kind = NEBValue::Kind;
    if (left.isString() && right.isString()) {
        return left.string() == right.string();
    }
    if (left._bits.kind != right._bits.kind) {
        return false;
    }
    switch (left._bits.kind) {
        case Kind::nothing:
            return true;
        case Kind::boolean:
            return left.boolean() == right.boolean();
        case Kind::integer:
        case Kind::date:
            return left.held<std::int64_t>() == right.held<std::int64_t>();
        default:
            return left.sharedContent(left._bits.kind)
                ->equals(*right.sharedContent(right._bits.kind));
    }
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
