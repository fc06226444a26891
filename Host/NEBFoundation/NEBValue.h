// NEBValue.h - a value whose kind is known only at run time: a destination, a file, a revision, an
// option, an entry of a result.
//
//     NEBValue value("topic");
//     value.string();             // points to "topic"
//     value.integer();            // nothing: no kind is turned into another
//     NEBValue().isPresent();     // false
#pragma once

#include <chrono>
#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "LOMFoundation/LOMFilePath.h"
#include "NEBFoundation/NEBConstant.h"
#include "NEBFoundation/NEBObject.h"
#include "Platform/Export.h"

namespace neb {

class NEBDictionary;

/// An instant, in whole seconds since 1970-01-01 00:00:00 UTC, as git keeps them.
using NEBDate = std::chrono::sys_time<std::chrono::duration<std::int64_t>>;

/// A value: copies are independent, any thread may use its own. The dictionary or object inside is
/// shared and never changes.
class NEB_EXPORT NEBValue {
public:
    /// Nothing.
    NEBValue() = default;
    template <std::same_as<bool> Bool>
    NEBValue(Bool boolean) : _value(boolean) {}
    template <std::integral Integer>
    requires(!std::same_as<Integer, bool> && !std::same_as<Integer, char>) NEBValue(Integer integer)
        : _value(static_cast<std::int64_t>(integer)) {}
    NEBValue(std::string string) : _value(std::move(string)) {}
    NEBValue(std::string_view string) : _value(std::string(string)) {}
    NEBValue(const char* string) : _value(std::string(string)) {}
    NEBValue(NEBConstant constant) : _value(std::string(constant.text())) {}
    NEBValue(NEBDate date) : _value(date) {}
    NEBValue(LOMFilePath path) : _value(std::move(path)) {}
    NEBValue(NEBDictionary dictionary);
    /// An absent object makes nothing.
    NEBValue(std::shared_ptr<const NEBObject> object);

    [[nodiscard]] bool isPresent() const { return _value.index() != 0; }
    [[nodiscard]] bool isString() const { return string() != nullptr; }

    /// Each answers the content when the value is of that kind, else nothing. A pointer is good as
    /// long as the value lives unchanged.
    [[nodiscard]] std::optional<bool> boolean() const;
    [[nodiscard]] std::optional<std::int64_t> integer() const;
    [[nodiscard]] const std::string* string() const;
    [[nodiscard]] std::optional<NEBDate> date() const;
    [[nodiscard]] const LOMFilePath* filePath() const;
    [[nodiscard]] const NEBDictionary* dictionary() const;
    [[nodiscard]] const NEBObject* object() const;

    /// True for true, for an integer other than 0, and for a string that begins with a letter of
    /// "yes" or "true" or with a number other than 0; false for anything else.
    [[nodiscard]] bool boolValue() const;

    /// The value as text fills a place in a message: a string as it is, a number in decimal,
    /// nothing as "(null)".
    [[nodiscard]] std::string description() const;
    /// As text in the message of an assertion report: like description(), a string in quotes.
    [[nodiscard]] std::string descriptionForAssertionMessage() const;

    /// Equal kind and content; dictionaries by their entries, objects by identity.
    friend NEB_EXPORT bool operator==(const NEBValue& left, const NEBValue& right);

private:
    std::variant<std::monostate, bool, std::int64_t, std::string, NEBDate, LOMFilePath,
                 std::shared_ptr<const NEBDictionary>, std::shared_ptr<const NEBObject>>
        _value;
};

/// `2012-03-04T05:06:07Z`. Years beyond 9999 or before 0 carry their sign.
[[nodiscard]] NEB_EXPORT std::string textOfDate(NEBDate date);

}  // namespace neb
