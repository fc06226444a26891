// NEBValue.h - a value whose kind is known only at run time: a destination, a file, a revision, an
// option, an entry of a result.
//
//     NEBValue value("topic");
//     value.string();             // "topic"
//     value.integer();            // nothing: no kind is turned into another
//     NEBValue().isPresent();     // false
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

#include "LOMFoundation/LOMFilePath.h"
#include "NEBFoundation/NEBConstant.h"
#include "NEBFoundation/NEBObject.h"
#include "Platform/Data.h"
#include "Platform/Export.h"

namespace neb {

class NEBDictionary;

/// An instant, in whole seconds since 1970-01-01 00:00:00 UTC, as git keeps them.
using NEBDate = std::chrono::sys_time<std::chrono::duration<std::int64_t>>;

/// A value: copies are independent, any thread may use its own. A number, a date or a short text
/// stands in the value itself; whatever is larger is shared by the copies of a value and never
/// changes, so a copy costs nothing.
class NEB_EXPORT NEBValue {
public:
    /// Nothing.
    NEBValue() = default;
    template <std::same_as<bool> Bool>
    NEBValue(Bool boolean) {
        hold(Kind::boolean, boolean);
    }
    template <std::integral Integer>
    requires(!std::same_as<Integer, bool> && !std::same_as<Integer, char>)
        NEBValue(Integer integer) {
        hold(Kind::integer, static_cast<std::int64_t>(integer));
    }
    NEBValue(std::string_view string);
    NEBValue(const std::string& string) : NEBValue(std::string_view(string)) {}
    NEBValue(const char* string) : NEBValue(std::string_view(string)) {}
    /// The text that `piece` is, which must be a part of the bytes of `whole`. A long one is not
    /// copied: it keeps all the bytes alive.
    NEBValue(const Data& whole, std::string_view piece);
    /// The text that all of the Data is.
    NEBValue(const Data& text) : NEBValue(text, text) {}
    NEBValue(NEBConstant constant) : NEBValue(constant.text()) {}
    NEBValue(NEBDate date) {
        hold(Kind::date, static_cast<std::int64_t>(date.time_since_epoch().count()));
    }
    NEBValue(LOMFilePath path);
    NEBValue(NEBDictionary dictionary);
    /// An absent object makes nothing.
    NEBValue(std::shared_ptr<const NEBObject> object);

    NEBValue(const NEBValue& other) : _bits(other._bits) {
        _bits.noteOfKey = 0;
        if (isShared()) {
            shared()->retain();
        }
    }
    NEBValue(NEBValue&& other) noexcept : _bits(other._bits) {
        _bits.noteOfKey = 0;
        other._bits.kind = Kind::nothing;
    }
    NEBValue& operator=(const NEBValue& other) { return *this = NEBValue(other); }
    NEBValue& operator=(NEBValue&& other) noexcept {
        std::swap(_bits, other._bits);
        std::swap(_bits.noteOfKey, other._bits.noteOfKey);
        return *this;
    }
    ~NEBValue() {
        if (isShared()) {
            release();
        }
    }

    [[nodiscard]] bool isPresent() const { return _bits.kind != Kind::nothing; }
    [[nodiscard]] bool isString() const {
        return _bits.kind >= Kind::shortString && _bits.kind <= Kind::string;
    }

    /// Each answers the content when the value is of that kind, else nothing. A string's characters
    /// and a pointer are good as long as the value lives, unchanged and in its place.
    [[nodiscard]] std::optional<bool> boolean() const;
    [[nodiscard]] std::optional<std::int64_t> integer() const;
    [[nodiscard]] std::optional<std::string_view> string() const;
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

    /// From `piece` on, what is shared. A piece is a text too, of Data.
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
        object
    };
    /// What copies share.
    struct SharedText;
    struct HeldPiece;
    template <typename Thing>
    struct SharedThing;

    /// Puts a small thing into the content, or takes it out: a pointer itself, not what it points
    /// to.
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
    template <typename Thing>
    void holdShared(Kind kind, Thing thing);
    template <typename Thing>
    [[nodiscard]] const Thing* thing(Kind kind) const;
    [[nodiscard]] const Shared* shared() const { return held<const Shared*>(); }
    [[nodiscard]] bool isShared() const { return _bits.kind >= Kind::piece; }
    void release();
    template <typename Thing>
    static void releaseThing(const Shared* shared);
    [[nodiscard]] static const SharedText* newText(std::string_view text);
    static void retainText(const SharedText& text);
    static void releaseText(const SharedText* text);
    /// The text of a string value in the form in which values share one, with one holder more.
    [[nodiscard]] const SharedText* sharedText() const;
    [[nodiscard]] static std::string_view textOf(const SharedText& shared);
    [[nodiscard]] std::string_view textOfPiece() const;

    /// As many characters stand in the value itself: enough for an abbreviated revision.
    static constexpr std::size_t shortLength = 13;
    /// Behind the address of its Data, where a piece begins, and the low byte of its length.
    static constexpr std::size_t placeOfOffset = sizeof(std::int64_t);
    static constexpr std::size_t placeOfLength = placeOfOffset + sizeof(std::uint32_t);
    static_assert(placeOfLength < shortLength);

    struct Bits {
        /// A boolean, an integer (of a date, its seconds), a short string's characters, a piece, or
        /// the address of what is shared.
        alignas(std::int64_t) std::array<char, shortLength> content{};
        std::uint8_t length = 0;  // of a short string; of a piece, the high byte
        /// Where the value stands in a dictionary, what that notes of its key: there are many
        /// values, and this room costs nothing. It stays where it is when a value is copied.
        std::uint8_t noteOfKey = 0;
        Kind kind = Kind::nothing;
    };
    Bits _bits;
};

static_assert(sizeof(NEBValue) == 16, "a history has millions of them");

/// `2012-03-04T05:06:07Z`. Years beyond 9999 or before 0 carry their sign.
[[nodiscard]] NEB_EXPORT std::string textOfDate(NEBDate date);

}  // namespace neb
