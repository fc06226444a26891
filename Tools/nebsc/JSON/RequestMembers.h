// RequestMembers.h - reads single members of a request's JSON, and refuses by name what is wrong.
//
// Part of RequestJSON. Each reader answers whether to go on; when not, the refusal holds the
// sentence for the person. Of one thread at a time.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "JSON/JSONText.h"
#include "NEBFoundation/NEBValue.h"

namespace neb::nebsc {

/// A node, and how sentences name it.
struct Place {
    const JSONNode& node;
    std::string path;
};

// Encoders of languages with one type for both (a table in Lua) write an empty object as [] or an
// empty array as {}.

/// Whether the node is an object, or an empty array.
[[nodiscard]] bool isObject(const JSONNode& node);
/// Whether the node is an array, or an empty object.
[[nodiscard]] bool isArray(const JSONNode& node);

/// Why the request is refused: the first reason.
struct Refusal {
    std::string sentence;

    /// "… is an array; a string was expected." Answers false.
    bool wrongKind(const Place& place, std::string_view expected);
    /// "… is missing." Answers false.
    bool wrongValue(const Place& place, std::string_view reason);
};

/// An integer in 32 bits.
[[nodiscard]] bool readType(Refusal& refusal, const Place& place, std::int32_t& type);

// Of the following, null leaves what is to be filled as it is.

[[nodiscard]] bool readString(Refusal& refusal, const Place& place,
                              std::optional<std::string>& string);
[[nodiscard]] bool readBoolean(Refusal& refusal, const Place& place, bool& boolean);
/// A string, a boolean or a number; one that is no 64-bit integer becomes an object that describes
/// itself with the number's text.
[[nodiscard]] bool readScalar(Refusal& refusal, const Place& place, NEBValue& value);

/// Refuses a member that the form does not know, with the list of those that it knows.
bool refuseUnknownMember(Refusal& refusal, const Place& place, std::string_view known);

/// One member of an object of the form, and what it fills.
template <typename Target>
struct Member {
    std::string_view name;
    bool (*read)(Refusal&, const Place&, Target&);
};

/// Reads all members of the object at `place`.
template <typename Target>
bool readMembers(Refusal& refusal, const Place& place, std::span<const Member<Target>> members,
                 Target& target) {
    for (const JSONNode& child : place.node.children) {
        const Place childPlace{child, pathOfMember(place.path, child.name)};
        const auto member = std::find_if(
            members.begin(), members.end(),
            [&child](const Member<Target>& candidate) { return candidate.name == child.name; });
        if (member == members.end()) {
            std::string known;
            for (const Member<Target>& one : members) {
                known.append(known.empty() ? "" : ", ").append(one.name);
            }
            return refuseUnknownMember(refusal, childPlace, known);
        }
        if (!member->read(refusal, childPlace, target)) {
            return false;
        }
    }
    return true;
}

}  // namespace neb::nebsc
