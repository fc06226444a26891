// TypeMembers.h - what each request type reads, and what its records have: docs/requests.md as
// tables.
//
//     for (const ValueDescription& option : describedOptions()) { … }
//     membersOfType(NEBSourceControlRequestTag).options;   // "Action Message Force …"
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace neb::nebsc {

enum class ValueKind : std::uint8_t {
    string,
    integer,
    boolean,
    /// A date and time in the form of RFC 3339.
    date,
    /// {"base64": …}
    bytes,
    /// A string or bytes.
    text,
    booleanOrString,
    /// An array of strings or bytes.
    strings,
    /// An array of records.
    records,
    /// An object with the path of each file and its state, an integer.
    statesOfPaths,
};

/// The value of an option or of a key of records.
struct ValueDescription {
    /// Without "NEBSourceControlRequestOption", or "NEBSourceControlOperation" and "Key".
    std::string_view name;
    ValueKind kind;
    /// Of ValueKind::records: the names of the keys of these records, between blanks.
    std::string_view nested{};
};

/// Return all options and all keys of records. Thread-safe.
[[nodiscard]] std::span<const ValueDescription> describedOptions();
[[nodiscard]] std::span<const ValueDescription> describedRecordKeys();

/// The members of a type: names between blanks.
struct TypeMembers {
    std::int32_t type = -1;
    /// Of the request, beside "type", "sourceTree", "options" and what every request can have.
    std::string_view request{};
    /// Names of describedOptions().
    std::string_view options{};
    /// Names of describedRecordKeys(). For a key with a name or path, also its key with "Bytes".
    std::string_view record{};
};

/// Returns the members of a type; without any for a type that has no operation. Thread-safe.
[[nodiscard]] const TypeMembers& membersOfType(std::int32_t type);

}  // namespace neb::nebsc
