// NEBValue.h - a value whose kind is known only at run time: a destination, a file, a revision, an
// option, an entry of a result.
//
//     NEBValue value("topic");
//     value.string();             // "topic"
//     value.integer();            // absent: kinds are never converted
//     NEBValue().isPresent();     // false
//
//     const NEBValue id(output, output.bytes().substr(0, 40));   // shares the bytes of a Data
//     const NEBValue copy = id;                                  // so does the copy
#pragma once

#include <array>
#include <chrono>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "LOMFoundation/LOMFilePath.h"
#include "NEBFoundation/NEBConstant.h"
#include "NEBFoundation/NEBObject.h"
#include "Platform/Data.h"
#include "Platform/Export.h"

namespace neb {

class NEBDictionary;

/// An instant, in whole seconds since 1970-01-01 00:00:00 UTC, as git keeps them.
using NEBDate = std::chrono::sys_time<std::chrono::duration<std::int64_t>>;

/// A value type: copies are independent, and each thread may use its own copy. Numbers, dates and
/// short strings are stored in the value itself. Larger contents are immutable and shared by all
/// copies of a value, so that copying is cheap.
class NEB_EXPORT NEBValue {
public:
    /// Creates the absent value.
    NEBValue() = default;
    /// Creates a boolean. Takes only a bool, so that no pointer is converted to one.
    template <std::same_as<bool> Bool>
    NEBValue(Bool boolean) {
        hold(Kind::boolean, boolean);
    }
    /// Creates an integer. An unsigned number above the largest std::int64_t becomes negative. A
    /// char is refused at compile time, because it could mean a character.
    template <std::integral Integer>
    requires(!std::same_as<Integer, bool> && !std::same_as<Integer, char>)
        NEBValue(Integer integer) {
        hold(Kind::integer, static_cast<std::int64_t>(integer));
    }
    /// Creates a string. Copies the bytes, NUL bytes included; allocates memory for more than 13 of
    /// them. The text should be UTF-8; this is not checked.
    NEBValue(std::string_view string);
    /// The same.
    NEBValue(const std::string& string) : NEBValue(std::string_view(string)) {}
    /// The same, up to the terminating NUL. `string` must not be null.
    NEBValue(const char* string) : NEBValue(std::string_view(string)) {}
    /// Creates a string with the text `piece`, which must lie within the bytes of `whole`. A text
    /// of more than 13 bytes is not copied; the value keeps all bytes of `whole` alive.
    NEBValue(const Data& whole, std::string_view piece);
    /// Creates a string with all bytes of `text`, and shares them as above.
    NEBValue(const Data& text) : NEBValue(text, text) {}
    /// Creates a string with the text of the constant.
    NEBValue(NEBConstant constant) : NEBValue(constant.text()) {}
    /// Creates a date.
    NEBValue(NEBDate date) {
        hold(Kind::date, static_cast<std::int64_t>(date.time_since_epoch().count()));
    }
    /// Creates a file path, which is a kind of its own and not a string. Allocates memory.
    NEBValue(LOMFilePath path);
    /// Creates a dictionary. Allocates memory. Include NEBDictionary.h to use it.
    NEBValue(NEBDictionary dictionary);
    /// Creates an array. Its elements may be absent values. Allocates memory.
    NEBValue(std::vector<NEBValue> elements);
    /// Returns a value with these bytes: the content of a file, or a name that is not UTF-8. It
    /// shares them. Bytes are a kind of their own and not a string. Allocates memory.
    [[nodiscard]] static NEBValue ofBytes(Data bytes);
    /// Creates a value that shares ownership of the object, which must not change any more. A null
    /// pointer makes the absent value. Allocates memory.
    NEBValue(std::shared_ptr<const NEBObject> object);

    /// Copies a value in constant time: shared content gets one more owner. Throws nothing.
    NEBValue(const NEBValue& other) : _bits(other._bits) {
        _bits.keyLength = 0;
        if (isShared()) {
            shared()->retain();
        }
    }
    /// Takes over the content and leaves the other value absent.
    NEBValue(NEBValue&& other) noexcept : _bits(other._bits) {
        _bits.keyLength = 0;
        other._bits.kind = Kind::nothing;
    }
    /// Replaces the content. A value may be assigned to itself.
    NEBValue& operator=(const NEBValue& other) { return *this = NEBValue(other); }
    /// Exchanges the content of both values.
    NEBValue& operator=(NEBValue&& other) noexcept {
        std::swap(_bits, other._bits);
        std::swap(_bits.keyLength, other._bits.keyLength);
        return *this;
    }
    /// Frees shared content if this is its last owner.
    ~NEBValue() {
        if (isShared()) {
            release();
        }
    }

    /// Whether the value is of any kind. False only for the absent value: an empty string is
    /// present.
    [[nodiscard]] bool isPresent() const { return _bits.kind != Kind::nothing; }
    /// Whether the value is a string, however it is stored.
    [[nodiscard]] bool isString() const {
        return _bits.kind >= Kind::shortString && _bits.kind <= Kind::string;
    }

    /// Each returns the content when the value is of that kind; otherwise it is absent or null. The
    /// characters of a string and the objects behind the pointers belong to the value: they are
    /// valid until it is destroyed, moved or assigned to.
    ///
    ///     if (const auto limit = value.integer()) {
    ///         use(*limit);
    ///     }
    [[nodiscard]] std::optional<bool> boolean() const;
    [[nodiscard]] std::optional<std::int64_t> integer() const;
    [[nodiscard]] std::optional<std::string_view> string() const;
    [[nodiscard]] std::optional<NEBDate> date() const;
    [[nodiscard]] const LOMFilePath* filePath() const;
    [[nodiscard]] const NEBDictionary* dictionary() const;
    [[nodiscard]] const std::vector<NEBValue>* array() const;
    [[nodiscard]] const Data* bytes() const;
    [[nodiscard]] const NEBObject* object() const;

    /// Returns the truth value: true for `true`, for an integer other than 0, and for a string that
    /// starts with one of "YyTt" or with a number other than 0; false for anything else. Blanks, a
    /// sign and zeros at the start of a string are skipped: "yes", "-1" and " 007" are true.
    [[nodiscard]] bool boolValue() const;

    /// Returns the text for a message: a string as it is, a number in decimal, "true" or "false", a
    /// date as textOfDate() does, the text of a file path, a dictionary as `{key = value, …}`, an
    /// array as `[element, …]`, bytes with U+FFFD for those that are not UTF-8, an object's own
    /// description, "(null)" for the absent value.
    [[nodiscard]] std::string description() const;
    /// Returns the text for an assertion report: description(), with a string in quotes.
    [[nodiscard]] std::string descriptionForAssertionMessage() const;

    /// Compares kind and content; dictionaries by their entries, objects by identity. Values of
    /// different kinds differ: neither "1" nor `true` equals 1. Two absent values are equal.
    friend NEB_EXPORT bool operator==(const NEBValue& left, const NEBValue& right);

private:
    friend class NEBDictionary;

    /// The kinds from `piece` on share their content. A piece is a string within a Data.
    enum class Kind : std::uint8_t {
        nothing,
        boolean,
        integer,
        date,
        shortString,
        piece,
        string,
        filePath,
        dictionary,
        array,
        bytes,
        object
    };
    /// The shared content of a string.
    struct SharedText;
    /// The same for a piece of a Data that is too long, or too far from its start, for Kind::piece.
    struct SharedSlice;
    /// The shared content of the other kinds.
    struct SharedContent : Shared {
        virtual ~SharedContent() = default;
        /// Returns what NEBValue::description() returns.
        [[nodiscard]] virtual std::string description() const = 0;
        /// Compares the content with that of `other`, which is of the same kind.
        [[nodiscard]] virtual bool equals(const SharedContent& other) const = 0;
    };
    struct SharedPath;
    struct SharedArray;
    struct SharedBytes;
    struct SharedObject;
    /// Defined in NEBDictionary.cpp, so that values do not depend on dictionaries.
    struct SharedDictionary;

    /// Stores and loads the content; of a pointer the pointer itself.
    // NOLINTBEGIN(bugprone-sizeof-expression)
    template <typename Small>
    void hold(Kind kind, Small small) {
        std::memcpy(_bits.content.data(), &small, sizeof small);
        _bits.kind = kind;
    }
    template <typename Small>
    [[nodiscard]] Small held() const {
        Small small;
        std::memcpy(&small, _bits.content.data(), sizeof small);
        return small;
    }
    // NOLINTEND(bugprone-sizeof-expression)
    /// Returns the shared content. The value must have some.
    [[nodiscard]] const Shared* shared() const { return held<const Shared*>(); }
    /// Whether the value shares its content with other values.
    [[nodiscard]] bool isShared() const { return _bits.kind >= Kind::piece; }
    /// Null unless the value is of this kind, one of those from filePath on.
    [[nodiscard]] const SharedContent* sharedContent(Kind kind) const {
        return _bits.kind == kind ? static_cast<const SharedContent*>(shared()) : nullptr;
    }
    /// Gives up the shared content, and deletes it after its last owner.
    void release();
    /// Returns a copy of the text as shared content with one owner, the caller.
    [[nodiscard]] static const SharedText* newText(std::string_view text);
    /// Adds an owner.
    static void retainText(const SharedText& text);
    /// Removes an owner, and deletes the content after the last one.
    static void releaseText(const SharedText* text);
    /// Returns the text of a string value as shared content, retained for the caller.
    [[nodiscard]] const SharedText* sharedText() const;
    /// Returns the characters, which are valid as long as the shared content.
    [[nodiscard]] static std::string_view textOf(const SharedText& shared);
    /// Returns the characters of a value whose kind is `piece`.
    [[nodiscard]] std::string_view textOfSlice() const;

    /// The longest string that is stored in the value itself; enough for an abbreviated revision.
    static constexpr std::size_t shortLength = 13;
    /// The content of a piece: the address of its Data, its offset there, and the low byte of its
    /// length.
    static constexpr std::size_t offsetIndex = sizeof(std::int64_t);
    static constexpr std::size_t lengthIndex = offsetIndex + sizeof(std::uint32_t);
    static_assert(lengthIndex < shortLength);

    /// The whole value: 16 bytes.
    struct Bits {
        /// A boolean, an integer, the seconds of a date, the characters of a short string, a piece,
        /// or the address of the shared content.
        alignas(std::int64_t) std::array<char, shortLength> content{};
        std::uint8_t length = 0;  // of a short string; of a piece the high byte
        /// Used by the dictionary entry that holds the value: the length of its key. It lies here
        /// because the byte is free. Copying a value does not copy it.
        std::uint8_t keyLength = 0;
        Kind kind = Kind::nothing;
    };
    Bits _bits;
};

static_assert(sizeof(NEBValue) == 16, "a history has millions of them");

/// Returns the date in UTC in the format of ISO 8601, `2012-03-04T05:06:07Z`. Years after 9999 and
/// before 0 have a sign. Any value of the type is valid. Thread-safe.
[[nodiscard]] NEB_EXPORT std::string textOfDate(NEBDate date);

}  // namespace neb
