// RecordingMember.h - a checked view of the members of a line of a recording, which may be damaged
// or made to do harm.
//
//     const RecordingMember line(json);
//     const int number = line.at("request").count();   // throws InvalidMember
#pragma once

#include <chrono>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace neb::nebsc {

/// The text names a member and what is wrong with it: "the member 'request' is missing".
struct InvalidMember : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The maximum number of nesting levels in a line, and of members in one object. A request may have
/// deepestJSONNesting levels, and is nested itself.
constexpr std::size_t deepestLineNesting = 64;
constexpr std::size_t mostObjectMembers = 1000;

/// Returns the JSON of a line. Throws InvalidMember if it is not JSON or exceeds a limit; the text
/// names the last member before. Thread-safe.
[[nodiscard]] nlohmann::ordered_json jsonOfLine(const std::string& line);

/// A value with its path, "children[0].status". Refers to the JSON, which must outlive it. All
/// functions that convert it throw InvalidMember for a value of another kind.
class RecordingMember {
public:
    /// The path of a line is empty.
    explicit RecordingMember(const nlohmann::ordered_json& json, std::string path = {})
        : _json(json), _path(std::move(path)) {}

    /// Returns a member of this object. Throws InvalidMember if it is missing.
    [[nodiscard]] RecordingMember at(const char* name) const;
    /// Returns a member of this object; absent if it is missing.
    [[nodiscard]] std::optional<RecordingMember> find(const char* name) const;
    /// Returns the elements of this array.
    [[nodiscard]] std::vector<RecordingMember> elements() const;
    /// Returns this value if it is an object.
    [[nodiscard]] const nlohmann::ordered_json& object() const;

    [[nodiscard]] bool isNull() const { return _json.is_null(); }
    [[nodiscard]] bool boolean() const;
    [[nodiscard]] int integer(int least, int most) const;
    /// Returns an integer from 0 on.
    [[nodiscard]] int count() const;
    /// Returns the duration of a number of milliseconds, at most 31 years.
    [[nodiscard]] std::chrono::nanoseconds milliseconds() const;
    [[nodiscard]] std::string text() const;
    /// Returns the bytes of a text or of {"base64": "…"}.
    [[nodiscard]] std::string bytes() const;
    /// Returns bytes without NUL, for the environment.
    [[nodiscard]] std::string withoutNUL() const;
    /// Returns the elements of this array as bytes. A request may have arguments with NUL, which
    /// no process gets.
    [[nodiscard]] std::vector<std::string> arguments() const;

    /// Throws InvalidMember: "the member 'children' " and the problem.
    [[noreturn]] void refuse(const std::string& problem) const;

private:
    /// Throws InvalidMember with the kind of this value and the expected one.
    [[noreturn]] void refuseKind(const char* expected) const;

    const nlohmann::ordered_json& _json;
    const std::string _path;
};

}  // namespace neb::nebsc
