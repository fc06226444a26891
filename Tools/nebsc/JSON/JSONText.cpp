#include "JSON/JSONText.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <unordered_set>

#include "LOMFoundation/LOMPasswordRedaction.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

std::string shortened(std::string text) {
    constexpr std::size_t maximumSize = 300;
    // Before truncating, because a truncated URL may not be recognised.
    text = printable(textWithoutPasswords(text));
    if (text.size() > maximumSize) {
        std::size_t end = maximumSize;  // moved back to the start of a character
        while ((static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
            --end;
        }
        text.resize(end);
        text += "…";
    }
    return text;
}

namespace {

using nlohmann::json;

/// An array or object whose end has not been read.
struct OpenNode {
    JSONNode* node;
    std::unordered_set<std::string> names;  // of an object's members
};

/// Builds the tree from the events of the parser. Each function returns whether to continue.
class TreeBuilder : public nlohmann::json_sax<json> {
public:
    [[nodiscard]] JSONReading takeReading() {
        return _failure.empty() ? JSONReading{std::move(_root), {}}
                                : JSONReading{std::nullopt, std::move(_failure), _isRefusedJSON};
    }

    bool null() override { return addNode(JSONNode::Kind::null) != nullptr; }
    bool boolean(bool value) override {
        JSONNode* node = addNode(JSONNode::Kind::boolean);
        if (node != nullptr) {
            node->boolean = value;
        }
        return node != nullptr;
    }
    bool number_integer(number_integer_t value) override {
        JSONNode* node = addNode(JSONNode::Kind::integer);
        if (node != nullptr) {
            node->integer = value;
        }
        return node != nullptr;
    }
    bool number_unsigned(number_unsigned_t value) override {
        if (value > static_cast<number_unsigned_t>(INT64_MAX)) {
            return number_float(0, std::to_string(value));
        }
        return number_integer(static_cast<number_integer_t>(value));
    }
    bool number_float(number_float_t /*value*/, const string_t& written) override {
        return addTextNode(JSONNode::Kind::otherNumber, written);
    }
    bool string(string_t& value) override {
        return addTextNode(JSONNode::Kind::string, std::move(value));
    }
    bool binary(binary_t& /*value*/) override {
        return false;  // does not occur in text
    }

    bool start_object(std::size_t /*size*/) override { return open(JSONNode::Kind::object); }
    bool start_array(std::size_t /*size*/) override { return open(JSONNode::Kind::array); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool key(string_t& name) override {
        _key = std::move(name);
        return _open.back().names.insert(_key).second ||
               refuse(subjectAt(pathOfNext()) + " appears twice.");
    }

    bool parse_error(std::size_t /*position*/, const std::string& /*lastToken*/,
                     const json::exception& exception) override {
        const std::string what = exception.what();
        if (dynamic_cast<const json::out_of_range*>(&exception) != nullptr) {
            return fail(subjectAt(pathOfNext()) + " is a number that is too large.");
        }
        // "[json.exception.parse_error.101] parse error at line 1, column 2: syntax error …"
        const std::size_t line = what.find("line ");
        return fail("The request is not valid JSON: " +
                    shortened(line == std::string::npos ? what : what.substr(line)) + ".");
    }

private:
    bool fail(std::string sentence) {
        _failure = std::move(sentence);
        return false;
    }

    /// Returns the path of the next value.
    [[nodiscard]] std::string pathOfNext() const {
        std::string path;
        for (std::size_t i = 0; i < _open.size(); ++i) {
            const JSONNode& node = *_open[i].node;
            const bool isLast = i + 1 == _open.size();
            if (node.kind == JSONNode::Kind::object) {
                path = pathOfMember(path, isLast ? _key : node.children.back().name);
            } else {
                path = pathOfElement(path, node.children.size() - (isLast ? 0 : 1));
            }
        }
        return path;
    }

    bool refuse(std::string sentence) {
        _isRefusedJSON = true;
        return fail(std::move(sentence));
    }

    /// Adds a node for the next value. Returns null if there are too many values.
    JSONNode* addNode(JSONNode::Kind kind) {
        if (_count == mostJSONValues) {
            refuse("The request has more than " + std::to_string(mostJSONValues) + " values.");
            return nullptr;
        }
        ++_count;
        JSONNode& node =
            _open.empty() ? _root.emplace() : _open.back().node->children.emplace_back();
        node.kind = kind;
        node.name = std::move(_key);
        _key.clear();
        return &node;
    }

    bool addTextNode(JSONNode::Kind kind, std::string text) {
        JSONNode* node = addNode(kind);
        if (node != nullptr) {
            node->text = std::move(text);
        }
        return node != nullptr;
    }

    bool open(JSONNode::Kind kind) {
        if (_open.size() == deepestJSONNesting) {
            return refuse("The request is nested more than " + std::to_string(deepestJSONNesting) +
                          " levels deep.");
        }
        JSONNode* node = addNode(kind);
        if (node != nullptr) {
            _open.push_back({node, {}});
        }
        return node != nullptr;
    }

    bool close() {
        _open.pop_back();
        return true;
    }

    std::optional<JSONNode> _root;
    /// From the root to the innermost node. No sibling is added to an open node, so the pointers
    /// stay valid.
    std::vector<OpenNode> _open;
    std::string _key;
    std::size_t _count = 0;  // number of values so far
    std::string _failure;
    bool _isRefusedJSON = false;
};

}  // namespace

const JSONNode* memberOf(const JSONNode& node, std::string_view name) {
    const auto child =
        std::find_if(node.children.begin(), node.children.end(),
                     [name](const JSONNode& candidate) { return candidate.name == name; });
    return child != node.children.end() ? &*child : nullptr;
}

std::string_view nameOfKind(JSONNode::Kind kind) {
    switch (kind) {
        case JSONNode::Kind::null:
            return "null";
        case JSONNode::Kind::boolean:
            return "a boolean";
        case JSONNode::Kind::integer:
            return "an integer";
        case JSONNode::Kind::otherNumber:
            return "a number that is not a 64-bit integer";
        case JSONNode::Kind::string:
            return "a string";
        case JSONNode::Kind::array:
            return "an array";
        case JSONNode::Kind::object:
            return "an object";
    }
    return "";
}

JSONReading readJSON(std::string_view text) {
    if (text.size() > longestJSONText) {
        return {
            .root = std::nullopt,
            .failure = "The request has more than " + std::to_string(longestJSONText) + " bytes.",
            .isRefusedJSON = true};
    }
    if (text.find_first_not_of(" \t\r\n") == std::string_view::npos) {
        return {std::nullopt, "The request is empty; expected a JSON object."};
    }
    if (const std::size_t nul = text.find('\0'); nul != std::string_view::npos) {
        // The parser would treat it as the end of the text and ignore the rest.
        return {std::nullopt,
                "The request is not valid JSON: byte " + std::to_string(nul + 1) + " is NUL."};
    }
    TreeBuilder builder;
    json::sax_parse(text, &builder);
    return builder.takeReading();
}

std::string pathOfMember(std::string_view path, std::string_view name) {
    const std::string_view shown = name.empty() ? "\"\"" : name;
    return path.empty() ? std::string(shown) : std::string(path).append(".").append(shown);
}

std::string pathOfElement(std::string_view path, std::size_t index) {
    return std::string(path).append("[").append(std::to_string(index)).append("]");
}

std::string subjectAt(std::string_view path) {
    return path.empty() ? "The request"
                        : "The request's member " + inQuotes(shortened(std::string(path)));
}

}  // namespace neb::nebsc
