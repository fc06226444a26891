// JSONText.h - a JSON text as a tree that keeps what a request is judged by: how a number was
// written, and that no member stands twice.
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

struct JSONNode {
    enum class Kind { null, boolean, integer, otherNumber, string, array, object };

    Kind kind = Kind::null;
    /// The member's name, when the node stands in an object.
    std::string name;
    bool boolean = false;
    /// A number written without fraction and exponent that fits into 64 bits with sign; any other
    /// is an otherNumber.
    std::int64_t integer = 0;
    /// A string's characters; an otherNumber as it was written.
    std::string text;
    /// The elements of an array, the members of an object, in their order.
    std::vector<JSONNode> children;
};

/// "null", "a boolean", … as a sentence needs it.
[[nodiscard]] std::string_view nameOfKind(JSONNode::Kind kind);

/// A request has at most this many bytes, values (members, elements, and the root) and levels of
/// nesting. git takes fewer arguments than that. The limits bound the memory that a request needs,
/// whoever wrote it.
constexpr std::size_t longestJSONText = std::size_t{64} << 20;
constexpr std::size_t mostJSONValues = 250000;
constexpr std::size_t deepestJSONNesting = 32;

struct JSONReading {
    std::optional<JSONNode> root;
    /// One sentence; empty when there is a root. It names the location: the member, or line and
    /// column.
    std::string failure;
    /// Whether the text, as far as it was read, is JSON: one of the limits refused it, or a member
    /// that is there twice.
    bool isRefusedJSON = false;
};

/// Reads one JSON value. Refuses bad syntax, bytes that are not UTF-8, an empty text, anything
/// behind the value, a member that stands twice, a number too large for any arithmetic, and a text
/// that exceeds one of the limits. Stops reading at the limit. Thread-safe.
[[nodiscard]] JSONReading readJSON(std::string_view text);

/// The path of a child as sentences name it: "files[2]", "sourceTree.name"; `path` is that of its
/// parent, empty for the root.
[[nodiscard]] std::string pathOfMember(std::string_view path, std::string_view name);
[[nodiscard]] std::string pathOfElement(std::string_view path, std::size_t index);

/// `The request's member "path"`, or `The request` for the empty path.
[[nodiscard]] std::string subjectAt(std::string_view path);

/// The text as a sentence can hold it, for somebody else wrote it: on one line, control characters
/// written out, without the passwords of URLs, cut off with "…" where it is too long.
[[nodiscard]] std::string shortened(std::string text);

}  // namespace neb::nebsc
