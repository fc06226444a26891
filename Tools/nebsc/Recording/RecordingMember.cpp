#include "Recording/RecordingMember.h"

#include <limits>
#include <utility>

#include "JSON/Base64.h"
#include "JSON/JSONText.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

using JSON = nlohmann::ordered_json;

/// Returns the path for a message; names of members come from the file.
std::string inMessage(const std::string& path) {
    return inQuotes(shortened(path));
}

/// Checks the limits while a line is parsed.
class Limits {
public:
    /// The callback of the parser. Throws InvalidMember.
    bool check(int depth, JSON::parse_event_t event, const JSON& value) {
        if (event == JSON::parse_event_t::key) {
            _last = value.get<std::string>();
            if (++_memberCounts.back() > mostObjectMembers) {
                throw InvalidMember("it has an object of more than " +
                                    std::to_string(mostObjectMembers) + " members, up to " +
                                    inMessage(_last));
            }
        } else if (event == JSON::parse_event_t::object_start ||
                   event == JSON::parse_event_t::array_start) {
            if (static_cast<std::size_t>(depth) >= deepestLineNesting) {
                throw InvalidMember("it is nested more than " + std::to_string(deepestLineNesting) +
                                    " levels deep" + lastMember());
            }
            _memberCounts.push_back(0);
        } else if (event == JSON::parse_event_t::object_end ||
                   event == JSON::parse_event_t::array_end) {
            _memberCounts.pop_back();
        }
        return true;
    }

    /// Returns the last member that was read, as the end of a sentence.
    [[nodiscard]] std::string lastMember() const {
        return _last.empty() ? "" : ", at or after the member " + inMessage(_last);
    }

private:
    /// Of the objects and arrays that have not ended.
    std::vector<std::size_t> _memberCounts;
    std::string _last;
};

std::string kindOf(const JSON& json) {
    switch (json.type()) {
        case JSON::value_t::null:
            return "null";
        case JSON::value_t::boolean:
            return "a boolean";
        case JSON::value_t::string:
            return "a string";
        case JSON::value_t::array:
            return "an array";
        case JSON::value_t::object:
            return "an object";
        default:
            return "the number " + json.dump();
    }
}

}  // namespace

JSON jsonOfLine(const std::string& line) {
    Limits limits;
    try {
        return JSON::parse(line, [&limits](int depth, JSON::parse_event_t event, JSON& value) {
            return limits.check(depth, event, value);
        });
    } catch (const JSON::parse_error& error) {
        throw InvalidMember("it is not JSON at byte " + std::to_string(error.byte) +
                            limits.lastMember());
    } catch (const JSON::out_of_range&) {
        throw InvalidMember("it has a number that is too large" + limits.lastMember());
    }
}

void RecordingMember::refuse(const std::string& problem) const {
    throw InvalidMember((_path.empty() ? "it " : "the member " + inMessage(_path) + " ") + problem);
}

void RecordingMember::refuseKind(const char* expected) const {
    refuse("is " + kindOf(_json) + "; expected " + expected);
}

const JSON& RecordingMember::object() const {
    if (!_json.is_object()) {
        refuseKind("an object");
    }
    return _json;
}

std::optional<RecordingMember> RecordingMember::find(const char* name) const {
    const auto member = object().find(name);
    return member == _json.end()
               ? std::nullopt
               : std::optional<RecordingMember>(std::in_place, *member, pathOfMember(_path, name));
}

RecordingMember RecordingMember::at(const char* name) const {
    const auto member = find(name);
    if (!member) {
        throw InvalidMember("the member " + inMessage(pathOfMember(_path, name)) + " is missing");
    }
    return *member;
}

std::vector<RecordingMember> RecordingMember::elements() const {
    if (!_json.is_array()) {
        refuseKind("an array");
    }
    std::vector<RecordingMember> elements;
    elements.reserve(_json.size());
    for (std::size_t i = 0; i < _json.size(); ++i) {
        elements.emplace_back(_json[i], pathOfElement(_path, i));
    }
    return elements;
}

bool RecordingMember::boolean() const {
    if (!_json.is_boolean()) {
        refuseKind("a boolean");
    }
    return _json.get<bool>();
}

int RecordingMember::integer(int least, int most) const {
    if (!_json.is_number_integer() || _json < least || _json > most) {
        refuseKind(
            ("an integer from " + std::to_string(least) + " to " + std::to_string(most)).c_str());
    }
    return _json.get<int>();
}

int RecordingMember::count() const {
    return integer(0, std::numeric_limits<int>::max());
}

std::chrono::nanoseconds RecordingMember::milliseconds() const {
    constexpr double most = 1e12;  // 31 years; nanoseconds have room for 292
    const double number = _json.is_number() ? _json.get<double>() : -1;
    if (!(number >= 0 && number <= most)) {  // also NaN
        refuseKind("a number of milliseconds");
    }
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
        std::chrono::duration<double, std::milli>(number));
}

std::string RecordingMember::text() const {
    if (!_json.is_string()) {
        refuseKind("a string");
    }
    return _json.get<std::string>();
}

std::string RecordingMember::bytes() const {
    if (!_json.is_object()) {
        if (!_json.is_string()) {
            refuseKind(R"(a string or {"base64": "…"})");
        }
        return text();
    }
    const RecordingMember base64 = at("base64");
    const auto bytes = bytesOfBase64(base64.text());
    if (!bytes) {
        base64.refuse("is not base64");
    }
    return *bytes;
}

std::string RecordingMember::withoutNUL() const {
    std::string value = bytes();
    if (value.find('\0') != std::string::npos) {
        refuse("contains a NUL byte");
    }
    return value;
}

std::vector<std::string> RecordingMember::arguments() const {
    std::vector<std::string> arguments;
    for (const RecordingMember& element : elements()) {
        arguments.push_back(element.bytes());
    }
    return arguments;
}

}  // namespace neb::nebsc
