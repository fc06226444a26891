#include "Platform/DateFormatter.h"

#include <algorithm>
#include <charconv>

namespace neb {

namespace {

/// The seconds of a year with more digits do not fit in 64 bits.
constexpr std::size_t mostYearDigits = 11;
constexpr std::size_t mostOffsetDigits = 9;

/// Reads a text from its start and remembers whether everything was as expected.
class Reader {
public:
    explicit Reader(std::string_view text) : _text(text) {}

    /// Reads `fewest` to `most` decimal digits whose value must be from `least` to `greatest`.
    std::int64_t number(std::size_t fewest, std::size_t most, std::int64_t least,
                        std::int64_t greatest) {
        std::int64_t value = 0;
        const char* const begin = _text.data();
        const char* const limit = begin + std::min(most, _text.size());
        const bool isSigned = _text.starts_with('-');  // from_chars accepts a sign
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
    [[nodiscard]] bool hasAt(std::size_t position, char character) const {
        return position < _text.size() && _text[position] == character;
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

std::int64_t daysOfMonth(std::int64_t year, std::int64_t month) {
    if (month == 2) {
        return isLeapYear(year) ? 29 : 28;
    }
    return 30 + (month + month / 8) % 2;  // July and August both have 31 days
}

/// Returns the days from 1970-01-01 to the date. Years start in March here, so that a leap day is
/// the last day of its year.
std::int64_t daysSinceEpoch(std::int64_t year, std::int64_t month, std::int64_t day) {
    const std::int64_t shiftedYear = month <= 2 ? year - 1 : year;
    const std::int64_t era = (shiftedYear >= 0 ? shiftedYear : shiftedYear - 399) / 400;
    const std::int64_t yearOfEra = shiftedYear - era * 400;
    const std::int64_t monthFromMarch = month > 2 ? month - 3 : month + 9;
    const std::int64_t dayOfYear = (153 * monthFromMarch + 2) / 5 + day - 1;
    const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

/// Reads the offset from UTC and returns it in seconds.
std::int64_t readOffset(Reader& reader) {
    if (reader.take('Z')) {
        return 0;
    }
    const bool isNegative = reader.take('-');
    if (!isNegative) {
        reader.expect('+');
    }
    std::int64_t digits = 0;
    if (reader.hasAt(2, ':')) {
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
        return std::nullopt;  // the month is needed for the number of days
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
