// JSONText.h - a JSON parser with the strictness that requests need: it keeps the text of large
// numbers and rejects duplicate members.
//
//     const JSONReading reading = readJSON(R"({"type": 15})");
//     reading.root->children[0].name;      // "type"
//     reading.root->children[0].integer;   // 15
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace neb::nebsc {

/// A JSON value.
struct JSONNode {
    enum class Kind { null, boolean, integer, otherNumber, string, array, object };

    Kind kind = Kind::null;
    /// The name of the member if the parent is an object; otherwise empty.
    std::string name;
    bool boolean = false;
    /// A number without fraction and exponent that fits into a signed 64-bit integer. All other
    /// numbers have the kind otherNumber.
    std::int64_t integer = 0;
    /// The characters of a string; the text of an otherNumber as in the input.
    std::string text;
    /// The elements of an array or the members of an object, in order.
    std::vector<JSONNode> children;
};

/// Returns the member of an object; null if it has none of the name, or is no object. Thread-safe.
[[nodiscard]] const JSONNode* memberOf(const JSONNode& node, std::string_view name);

/// Returns the kind for use in a sentence: "null", "a boolean".
[[nodiscard]] std::string_view nameOfKind(JSONNode::Kind kind);

/// The maximum number of bytes, of values (members, elements and the root) and of nesting levels in
/// a request. They bound the memory that a request needs, and exceed what git accepts as arguments.
constexpr std::size_t longestJSONText = std::size_t{64} << 20;
constexpr std::size_t mostJSONValues = 250000;
constexpr std::size_t deepestJSONNesting = 32;

/// A JSON value, or the reason why it could not be read.
struct JSONReading {
    std::optional<JSONNode> root;
    /// One sentence that names the member, or the line and column; empty on success.
    std::string failure;
    /// Whether the text is valid JSON as far as it was read, but exceeds a limit or has a duplicate
    /// member.
    bool isRefusedJSON = false;
};

/// Reads one JSON value. Rejects syntax errors, bytes that are not UTF-8, empty text, text after
/// the value, duplicate members, numbers that overflow a double, and text that exceeds one of the
/// limits. Stops reading at the limit. Thread-safe.
[[nodiscard]] JSONReading readJSON(std::string_view text);

/// Returns the path of a child for messages: "sourceTree.name", "files[2]". `path` is the path of
/// the parent, empty for the root. Thread-safe, as are the functions below.
[[nodiscard]] std::string pathOfMember(std::string_view path, std::string_view name);
[[nodiscard]] std::string pathOfElement(std::string_view path, std::size_t index);

/// Returns "The request's member 'path'", or "The request" for the empty path.
[[nodiscard]] std::string subjectAt(std::string_view path);

/// Returns untrusted text in a form for messages: on one line, with control characters as escape
/// sequences, without passwords in URLs, and truncated with "…" if it is long.
[[nodiscard]] std::string shortened(std::string text);

}  // namespace neb::nebsc
