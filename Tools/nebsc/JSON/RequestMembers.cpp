#include "JSON/RequestMembers.h"

#include <limits>
#include <memory>

namespace neb::nebsc {

namespace {

using Kind = JSONNode::Kind;

/// A number for which a request has no kind of its own.
class NumberObject : public NEBObject {
public:
    explicit NumberObject(std::string text) : _text(std::move(text)) {}
    [[nodiscard]] std::string descriptionForAssertionMessage() const override { return _text; }

private:
    std::string _text;
};

}  // namespace

bool isObject(const JSONNode& node) {
    return node.kind == Kind::object || (node.kind == Kind::array && node.children.empty());
}

bool isArray(const JSONNode& node) {
    return node.kind == Kind::array || (node.kind == Kind::object && node.children.empty());
}

bool Refusal::wrongKind(const Place& place, std::string_view expected) {
    sentence = subjectAt(place.path)
                   .append(" is ")
                   .append(nameOfKind(place.node.kind))
                   .append("; ")
                   .append(expected)
                   .append(" was expected.");
    return false;
}

bool Refusal::wrongValue(const Place& place, std::string_view reason) {
    sentence = subjectAt(place.path).append(" ").append(reason).append(".");
    return false;
}

bool readType(Refusal& refusal, const Place& place, std::int32_t& type) {
    using Limits = std::numeric_limits<std::int32_t>;
    constexpr std::string_view expected = "an integer from -2147483648 to 2147483647";
    if (place.node.kind != Kind::integer) {
        return refusal.wrongKind(place, expected);
    }
    if (place.node.integer < Limits::min() || place.node.integer > Limits::max()) {
        return refusal.wrongValue(place, "is " + std::to_string(place.node.integer) + "; " +
                                             std::string(expected) + " was expected");
    }
    type = static_cast<std::int32_t>(place.node.integer);
    return true;
}

bool readString(Refusal& refusal, const Place& place, std::optional<std::string>& string) {
    if (place.node.kind == Kind::string) {
        string = place.node.text;
    }
    return place.node.kind == Kind::string || place.node.kind == Kind::null ||
           refusal.wrongKind(place, "a string");
}

bool readBoolean(Refusal& refusal, const Place& place, bool& boolean) {
    if (place.node.kind == Kind::boolean) {
        boolean = place.node.boolean;
    }
    return place.node.kind == Kind::boolean || place.node.kind == Kind::null ||
           refusal.wrongKind(place, "true or false");
}

bool readScalar(Refusal& refusal, const Place& place, NEBValue& value) {
    switch (place.node.kind) {
        case Kind::null:
            return true;
        case Kind::boolean:
            value = place.node.boolean;
            return true;
        case Kind::integer:
            value = place.node.integer;
            return true;
        case Kind::otherNumber:
            value = NEBValue(std::make_shared<const NumberObject>(place.node.text));
            return true;
        case Kind::string:
            value = place.node.text;
            return true;
        case Kind::array:
        case Kind::object:
            break;
    }
    return refusal.wrongKind(place, "a string, a number or a boolean");
}

bool refuseUnknownMember(Refusal& refusal, const Place& place, std::string_view known) {
    return refusal.wrongValue(place, "is not known; known are " + std::string(known));
}

}  // namespace neb::nebsc
