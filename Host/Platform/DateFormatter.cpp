#include "Platform/DateFormatter.h"

#include <algorithm>
#include <charconv>

namespace neb {

namespace {

/// More digits are no year that an instant of 64 bits could be in.
constexpr std::size_t mostYearDigits = 11;
constexpr std::size_t mostOffsetDigits = 9;

/// Reads a text from its start; the first thing that is not as expected makes all of it wrong.
class Reader {
public:
    explicit Reader(std::string_view text) : _text(text) {}

    /// At least `fewest` and at most `most` decimal digits; a value of `least` to `greatest`.
    std::int64_t number(std::size_t fewest, std::size_t most, std::int64_t least,
                        std::int64_t greatest) {
        std::int64_t value = 0;
        const char* const begin = _text.data();
        const char* const limit = begin + std::min(most, _text.size());
        const bool isSigned = _text.starts_with('-');  // from_chars would take the sign
        const auto [end, failure] = std::from_chars(begin, limit, value);
        const auto length = static_cast<std::size_t>(end - begin);
        _isGood = _isGood && !isSigned && failure == std::errc() && length >= fewest &&
                  value >= least && value <= greatest;
        _text.remove_prefix(length);
        return value;
    }
    std::int64_t twoDigits(std::int64_t least, std::int64_t greatest) {
        return number(2, 2, least, greatest);
    }
    void expect(char character) { _isGood = take(character) && _isGood; }
    bool take(char character) {
        const bool isThere = _text.starts_with(character);
        _text.remove_prefix(isThere ? 1 : 0);
        return isThere;
    }
    [[nodiscard]] bool holdsAt(std::size_t place, char character) const {
        return place < _text.size() && _text[place] == character;
    }
    [[nodiscard]] bool isGood() const { return _isGood; }
    [[nodiscard]] bool isAtEnd() const { return _text.empty(); }

private:
    std::string_view _text;
    bool _isGood = true;
};

bool isLeapYear(std::int64_t year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

/// Long months and short ones take turns, but July and August are both long.
std::int64_t daysOfMonth(std::int64_t year, std::int64_t month) {
    if (month == 2) {
        return isLeapYear(year) ? 29 : 28;
    }
    return 30 + (month + month / 8) % 2;
}

/// Days from 1970-01-01 to the date. A year is counted from March here, so that its leap day is the
/// last one.
std::int64_t daysSinceEpoch(std::int64_t year, std::int64_t month, std::int64_t day) {
    const std::int64_t shiftedYear = month <= 2 ? year - 1 : year;
    const std::int64_t era = (shiftedYear >= 0 ? shiftedYear : shiftedYear - 399) / 400;
    const std::int64_t yearOfEra = shiftedYear - era * 400;
    const std::int64_t monthFromMarch = month > 2 ? month - 3 : month + 9;
    const std::int64_t dayOfYear = (153 * monthFromMarch + 2) / 5 + day - 1;
    const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

/// The offset from UTC in seconds: "Z", a sign with "hh:mm", or a sign with "hhmm".
std::int64_t readOffset(Reader& reader) {
    if (reader.take('Z')) {
        return 0;
    }
    const bool isNegative = reader.take('-');
    if (!isNegative) {
        reader.expect('+');
    }
    std::int64_t digits = 0;
    if (reader.holdsAt(2, ':')) {
        digits = reader.twoDigits(0, 99) * 100;
        reader.expect(':');
        digits += reader.twoDigits(0, 99);
    } else {
        digits = reader.number(4, mostOffsetDigits, 0, 999999999);
    }
    const std::int64_t seconds = (digits / 100 * 60 + digits % 100) * 60;
    return isNegative ? -seconds : seconds;
}

}  // namespace

std::optional<DateFormatter::Date> DateFormatter::dateFromString(std::string_view text) const {
    Reader reader(text);
    const std::int64_t year = reader.number(4, mostYearDigits, 0, 99999999999);
    reader.expect('-');
    const std::int64_t month = reader.twoDigits(1, 12);
    reader.expect('-');
    if (!reader.isGood()) {
        return std::nullopt;  // there is no month to look the days up by
    }
    const std::int64_t day = reader.twoDigits(1, daysOfMonth(year, month));
    reader.expect(' ');
    const std::int64_t hours = reader.twoDigits(0, 23);
    reader.expect(':');
    const std::int64_t minutes = reader.twoDigits(0, 59);
    reader.expect(':');
    const std::int64_t seconds = reader.twoDigits(0, 59);
    reader.expect(' ');
    const std::int64_t offset = readOffset(reader);
    if (!reader.isGood() || !reader.isAtEnd()) {
        return std::nullopt;
    }
    const std::int64_t local =
        ((daysSinceEpoch(year, month, day) * 24 + hours) * 60 + minutes) * 60 + seconds;
    return Date(std::chrono::seconds(local - offset));
}

}  // namespace neb
