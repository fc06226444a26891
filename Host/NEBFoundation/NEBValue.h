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
#include <utility>

#include "LOMFoundation/LOMFilePath.h"
#include "NEBFoundation/NEBConstant.h"
#include "NEBFoundation/NEBObject.h"
#include "Platform/Export.h"

namespace neb {

class NEBDictionary;

/// An instant, in whole seconds since 1970-01-01 00:00:00 UTC, as git keeps them.
using NEBDate = std::chrono::sys_time<std::chrono::duration<std::int64_t>>;

/// A value: copies are independent, any thread may use its own. Whatever is larger than a number is
/// shared by the copies of a value and never changes, so a copy costs nothing.
class NEB_EXPORT NEBValue {
public:
    /// Nothing.
    NEBValue() = default;
    template <std::same_as<bool> Bool>
    NEBValue(Bool boolean) : _content{.boolean = boolean}, _kind(Kind::boolean) {}
    template <std::integral Integer>
    requires(!std::same_as<Integer, bool> && !std::same_as<Integer, char>) NEBValue(Integer integer)
        : _content{.integer = static_cast<std::int64_t>(integer)}, _kind(Kind::integer) {}
    NEBValue(std::string string);
    NEBValue(std::string_view string) : NEBValue(std::string(string)) {}
    NEBValue(const char* string) : NEBValue(std::string(string)) {}
    NEBValue(NEBConstant constant) : NEBValue(constant.text()) {}
    NEBValue(NEBDate date)
        : _content{.integer = date.time_since_epoch().count()}, _kind(Kind::date) {}
    NEBValue(LOMFilePath path);
    NEBValue(NEBDictionary dictionary);
    /// An absent object makes nothing.
    NEBValue(std::shared_ptr<const NEBObject> object);

    NEBValue(const NEBValue& other) : _content(other._content), _kind(other._kind) { share(); }
    NEBValue(NEBValue&& other) noexcept
        : _content(other._content), _kind(std::exchange(other._kind, Kind::nothing)) {}
    NEBValue& operator=(const NEBValue& other) { return *this = NEBValue(other); }
    NEBValue& operator=(NEBValue&& other) noexcept {
        std::swap(_content, other._content);
        std::swap(_kind, other._kind);
        return *this;
    }
    ~NEBValue() {
        if (isShared()) {
            release();
        }
    }

    [[nodiscard]] bool isPresent() const { return _kind != Kind::nothing; }
    [[nodiscard]] bool isString() const { return _kind == Kind::string; }

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
    friend class NEBDictionary;

    /// From `string` on, what is shared.
    enum class Kind : std::uint8_t {
        nothing,
        boolean,
        integer,
        date,
        string,
        filePath,
        dictionary,
        object
    };
    /// What copies share, with the number of them.
    struct Shared;
    template <typename Thing>
    struct SharedThing;
    union Content {
        bool boolean;
        std::int64_t integer;  // of a date, its seconds
        const Shared* shared;
    };

    template <typename Thing>
    void hold(Kind kind, Thing thing);
    template <typename Thing>
    [[nodiscard]] const Thing* thing(Kind kind) const;
    [[nodiscard]] bool isShared() const { return _kind >= Kind::string; }
    void share() {
        if (isShared()) {
            retain(*_content.shared);
        }
    }
    void release();
    static void retain(const Shared& shared);
    template <typename Thing>
    static void releaseThing(const Shared* shared);
    /// Of what a string value shares.
    static void releaseString(const Shared* shared);
    [[nodiscard]] static const std::string& stringOf(const Shared& shared);

    Content _content{.integer = 0};
    Kind _kind = Kind::nothing;
    /// Where the value stands in a dictionary, what that notes of its key: there are many values,
    /// and this room costs nothing. Never copied.
    std::uint32_t _noteOfKey = 0;
};

static_assert(sizeof(NEBValue) == 16, "a history has millions of them");

/// `2012-03-04T05:06:07Z`. Years beyond 9999 or before 0 carry their sign.
[[nodiscard]] NEB_EXPORT std::string textOfDate(NEBDate date);

}  // namespace neb
