#include "GitExtensions/GitRecordFields.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <optional>

#include "NEBFoundation/NEBSourceControlPathQuoting.h"
#include "Platform/Text.h"

namespace neb {

namespace {

struct StateLetter {
    char letter;
    std::string_view state;
};

constexpr StateLetter stateLetters[] = {
    {'A', "added"},   {'C', "copied"},       {'D', "deleted"},  {'M', "modified"},
    {'R', "renamed"}, {'T', "type changed"}, {'U', "conflict"},
};

/// Whether the text has a character other than zeros.
bool isNotZero(std::string_view text) {
    return text.find_first_not_of('0') != std::string_view::npos;
}

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

void gitSetText(NEBDictionary& record, NEBConstant key, const std::string& text) {
    const Data copy(text);
    gitSetText(record, key, copy, copy);
}

void gitSetName(NEBDictionary& record, const GitNameKeys& keys, const Data& output,
                std::string_view field) {
    gitSetText(record, keys.text, output, field);
    if (!isUTF8(field)) {
        record.set(keys.bytes, NEBValue::ofBytes(field));
    }
}

void gitSetName(NEBDictionary& record, const GitNameKeys& keys, const std::string& name) {
    const Data copy(name);
    gitSetName(record, keys, copy, copy);
}

void gitSetQuotedName(NEBDictionary& record, const GitNameKeys& keys, std::string_view field) {
    gitSetName(record, keys, gitUnquotedName(field));
}

void gitSetObjectID(NEBDictionary& record, NEBConstant key, std::string_view field) {
    if (isNotZero(field)) {
        gitSetText(record, key, std::string(field));
    }
}

void gitSetMode(NEBDictionary& record, NEBConstant key, std::string_view field) {
    if (isNotZero(field)) {
        gitSetText(record, key, std::string(field));
    }
}

void gitSetState(NEBDictionary& record, NEBConstant key, std::string_view field) {
    const auto* row =
        std::ranges::find(stateLetters, field.empty() ? ' ' : field.front(), &StateLetter::letter);
    if (row != std::end(stateLetters)) {
        record.set(key, row->state);
    }
}

void gitSetSimilarity(NEBDictionary& record, std::string_view field) {
    if (!field.empty()) {
        gitSetInteger(record, NEBSourceControlOperationSimilarityKey, field.substr(1));
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

void gitSetTimeZone(NEBDictionary& record, NEBConstant key, std::string_view field) {
    if (const auto minutes = minutesOf(field)) {
        record.set(key, *minutes);
    }
}

NEBDictionary gitStage(std::int64_t stage, std::string_view mode, std::string_view id) {
    NEBDictionary record{{NEBSourceControlOperationStageKey, stage}};
    gitSetMode(record, NEBSourceControlOperationModeKey, mode);
    gitSetObjectID(record, NEBSourceControlOperationObjectIDKey, id);
    return record;
}

NEBValue gitTextOrBytes(const Data& output, std::string_view field) {
    return isUTF8(field) ? NEBValue(output, field) : NEBValue::ofBytes(field);
}

std::string gitUnquotedName(std::string_view field) {
    return field.starts_with('"') ? NEBSourceControlUnquotedPath(field) : std::string(field);
}

}  // namespace neb
