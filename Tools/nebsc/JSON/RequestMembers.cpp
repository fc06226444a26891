#include "JSON/RequestMembers.h"

#include <limits>
#include <memory>

#include "JSON/Base64.h"

namespace neb::nebsc {

namespace {

using Kind = JSONNode::Kind;

/// A number that is not a 64-bit integer.
class NumberObject : public NEBObject {
public:
    explicit NumberObject(std::string text) : _text(std::move(text)) {}
    [[nodiscard]] std::string descriptionForAssertionMessage() const override { return _text; }

private:
    std::string _text;
};

bool readPositive(Refusal& refusal, const InputNode& input, std::optional<std::int64_t>& number) {
    constexpr std::string_view expected = "an integer above 0";
    if (input.node.kind == Kind::null) {
        return true;
    }
    if (input.node.kind != Kind::integer) {
        return refusal.wrongKind(input, expected);
    }
    if (input.node.integer <= 0) {
        return refusal.wrongValue(input, "is " + std::to_string(input.node.integer) +
                                             "; expected " + std::string(expected));
    }
    number = input.node.integer;
    return true;
}

bool isBytes(const JSONNode& node) {
    return node.kind == Kind::object && node.children.size() == 1 &&
           node.children.front().name == "base64";
}

/// Reads {"base64": "…"}.
bool readBytes(Refusal& refusal, const InputNode& input, std::optional<std::string>& bytes) {
    const JSONNode& member = input.node.children.front();
    const InputNode memberInput{member, pathOfMember(input.path, member.name)};
    std::optional<std::string> text;
    if (!readString(refusal, memberInput, text)) {
        return false;
    }
    bytes = text ? bytesOfBase64(*text) : std::nullopt;
    return bytes || refusal.wrongValue(memberInput, "is not base64 with padding");
}

}  // namespace

bool isObject(const JSONNode& node) {
    return node.kind == Kind::object || (node.kind == Kind::array && node.children.empty());
}

bool isArray(const JSONNode& node) {
    return node.kind == Kind::array || (node.kind == Kind::object && node.children.empty());
}

bool Refusal::wrongKind(const InputNode& input, std::string_view expected) {
    sentence = subjectAt(input.path)
                   .append(" is ")
                   .append(nameOfKind(input.node.kind))
                   .append("; expected ")
                   .append(expected)
                   .append(".");
    return false;
}

bool Refusal::wrongValue(const InputNode& input, std::string_view reason) {
    sentence = subjectAt(input.path).append(" ").append(reason).append(".");
    return false;
}

namespace {

/// Refuses what is not an integer from `least` to 2147483647.
bool checkInteger32(Refusal& refusal, const InputNode& input, std::int32_t least) {
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    const std::string expected =
        "an integer from " + std::to_string(least) + " to " + std::to_string(most);
    if (input.node.kind != Kind::integer) {
        return refusal.wrongKind(input, expected);
    }
    if (input.node.integer < least || input.node.integer > most) {
        return refusal.wrongValue(
            input, "is " + std::to_string(input.node.integer) + "; expected " + expected);
    }
    return true;
}

}  // namespace

bool readType(Refusal& refusal, const InputNode& input, std::int32_t& type) {
    if (!checkInteger32(refusal, input, std::numeric_limits<std::int32_t>::min())) {
        return false;
    }
    type = static_cast<std::int32_t>(input.node.integer);
    return true;
}

bool readString(Refusal& refusal, const InputNode& input, std::optional<std::string>& string) {
    if (input.node.kind == Kind::string) {
        string = input.node.text;
    }
    return input.node.kind == Kind::string || input.node.kind == Kind::null ||
           refusal.wrongKind(input, "a string");
}

bool readText(Refusal& refusal, const InputNode& input, std::optional<std::string>& text) {
    return isBytes(input.node) ? readBytes(refusal, input, text) : readString(refusal, input, text);
}

bool readBoolean(Refusal& refusal, const InputNode& input, bool& boolean) {
    if (input.node.kind == Kind::boolean) {
        boolean = input.node.boolean;
    }
    return input.node.kind == Kind::boolean || input.node.kind == Kind::null ||
           refusal.wrongKind(input, "true or false");
}

bool readMilliseconds(Refusal& refusal, const InputNode& input,
                      std::optional<std::chrono::milliseconds>& time) {
    std::optional<std::int64_t> count;
    const bool isRead = readPositive(refusal, input, count);
    if (count) {
        time = std::chrono::milliseconds(*count);
    }
    return isRead;
}

bool readWaitingTime(Refusal& refusal, const InputNode& input, std::chrono::milliseconds& time) {
    if (input.node.kind == Kind::null) {
        return true;
    }
    if (!checkInteger32(refusal, input, 0)) {
        return false;
    }
    time = std::chrono::milliseconds(input.node.integer);
    return true;
}

bool readByteCount(Refusal& refusal, const InputNode& input, std::optional<std::uint64_t>& count) {
    std::optional<std::int64_t> number;
    const bool isRead = readPositive(refusal, input, number);
    if (number) {
        count = static_cast<std::uint64_t>(*number);
    }
    return isRead;
}

bool readScalar(Refusal& refusal, const InputNode& input, NEBValue& value) {
    switch (input.node.kind) {
        case Kind::null:
            return true;
        case Kind::boolean:
            value = input.node.boolean;
            return true;
        case Kind::integer:
            value = input.node.integer;
            return true;
        case Kind::otherNumber:
            value = NEBValue(std::make_shared<const NumberObject>(input.node.text));
            return true;
        case Kind::string:
            value = input.node.text;
            return true;
        case Kind::object:
            if (std::optional<std::string> bytes; isBytes(input.node)) {
                const bool isRead = readBytes(refusal, input, bytes);
                value = bytes ? NEBValue(*bytes) : NEBValue();
                return isRead;
            }
            break;
        case Kind::array:
            break;
    }
    return refusal.wrongKind(input, "a string, a number or a boolean");
}

bool readValue(Refusal& refusal, const InputNode& input, NEBValue& value) {
    if (input.node.kind != Kind::array) {
        return readScalar(refusal, input, value);
    }
    std::vector<NEBValue> elements;
    for (const JSONNode& child : input.node.children) {
        const std::string path = pathOfElement(input.path, elements.size());
        if (!readScalar(refusal, {child, path}, elements.emplace_back())) {
            return false;
        }
    }
    value = NEBValue(std::move(elements));
    return true;
}

bool refuseUnknownMember(Refusal& refusal, const InputNode& input, std::string_view known) {
    return refusal.wrongValue(input, "is unknown; expected one of " + std::string(known));
}

}  // namespace neb::nebsc
