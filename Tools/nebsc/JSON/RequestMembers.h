// RequestMembers.h - readers for the single members of a request's JSON. Part of RequestJSON.
//
// Each reader returns true on success. Otherwise it returns false and stores the message in the
// refusal.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "JSON/JSONText.h"
#include "NEBFoundation/NEBValue.h"

namespace neb::nebsc {

/// A node of the input, and the path by which messages name it.
struct InputNode {
    const JSONNode& node;
    std::string path;
};

// Languages with a single type for both (Lua tables) encode an empty object as [] or an empty array
// as {}.

/// Returns whether the node is an object or an empty array.
[[nodiscard]] bool isObject(const JSONNode& node);
/// Returns whether the node is an array or an empty object.
[[nodiscard]] bool isArray(const JSONNode& node);

/// The reason why a request is refused. Only the first one is reported.
struct Refusal {
    std::string sentence;

    /// Stores "… is an array; expected a string." Returns false.
    bool wrongKind(const InputNode& input, std::string_view expected);
    /// Stores "… is missing.", where `reason` is "is missing". Returns false.
    bool wrongValue(const InputNode& input, std::string_view reason);
};

/// Reads a 32-bit integer. null is refused.
[[nodiscard]] bool readType(Refusal& refusal, const InputNode& input, std::int32_t& type);

// For the readers below, null leaves the target unchanged.

[[nodiscard]] bool readString(Refusal& refusal, const InputNode& input,
                              std::optional<std::string>& string);
/// Reads a string, or bytes as {"base64": "…"}.
[[nodiscard]] bool readText(Refusal& refusal, const InputNode& input,
                            std::optional<std::string>& text);
[[nodiscard]] bool readBoolean(Refusal& refusal, const InputNode& input, bool& boolean);
/// Reads an integer above 0.
[[nodiscard]] bool readMilliseconds(Refusal& refusal, const InputNode& input,
                                    std::optional<std::chrono::milliseconds>& time);
[[nodiscard]] bool readByteCount(Refusal& refusal, const InputNode& input,
                                 std::optional<std::uint64_t>& count);
/// Reads an integer from 0 to 2147483647, the most that settings of git accept.
[[nodiscard]] bool readWaitingTime(Refusal& refusal, const InputNode& input,
                                   std::chrono::milliseconds& time);
/// Reads a string, a boolean, a number, or bytes as {"base64": "…"}, which become a string. A
/// number that is not a 64-bit integer becomes an object whose description is the text of the
/// number.
[[nodiscard]] bool readScalar(Refusal& refusal, const InputNode& input, NEBValue& value);

/// Reads a scalar, or an array of scalars.
[[nodiscard]] bool readValue(Refusal& refusal, const InputNode& input, NEBValue& value);

/// Refuses an unknown member; the message lists the known ones. Returns false.
bool refuseUnknownMember(Refusal& refusal, const InputNode& input, std::string_view known);

/// A member of a JSON object, and the function that reads it into the target.
template <typename Target>
struct Member {
    std::string_view name;
    bool (*read)(Refusal&, const InputNode&, Target&);
};

/// Reads the input into the field of the target with `readValue`, one of the readers above. For
/// Member::read.
template <auto readValue, auto field, typename Target>
bool readInto(Refusal& refusal, const InputNode& input, Target& target) {
    return readValue(refusal, input, target.*field);
}

/// Reads all members of the object `input`. Refuses members that are not in the table.
template <typename Target>
bool readMembers(Refusal& refusal, const InputNode& input, std::span<const Member<Target>> members,
                 Target& target) {
    for (const JSONNode& child : input.node.children) {
        const InputNode childInput{child, pathOfMember(input.path, child.name)};
        const auto member = std::find_if(
            members.begin(), members.end(),
            [&child](const Member<Target>& candidate) { return candidate.name == child.name; });
        if (member == members.end()) {
            std::string known;
            for (const Member<Target>& one : members) {
                known.append(known.empty() ? "" : ", ").append(one.name);
            }
            return refuseUnknownMember(refusal, childInput, known);
        }
        if (!member->read(refusal, childInput, target)) {
            return false;
        }
    }
    return true;
}

}  // namespace neb::nebsc
