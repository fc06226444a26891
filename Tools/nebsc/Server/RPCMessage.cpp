#include "Server/RPCMessage.h"

#include <cstdint>
#include <new>
#include <utility>

namespace neb::nebsc {

namespace {

using JSON = nlohmann::ordered_json;
using Kind = JSONNode::Kind;

/// Finds the id of a message without storing the rest.
class IdFinder : public nlohmann::json_sax<JSON> {
public:
    [[nodiscard]] JSON id() const { return stringOrInteger(_id).value_or(nullptr); }

    bool null() override { return true; }
    bool boolean(bool /*value*/) override { return true; }
    bool number_integer(number_integer_t value) override {
        if (isId()) {
            _id.kind = Kind::integer;
            _id.integer = value;
        }
        return true;
    }
    bool number_unsigned(number_unsigned_t value) override {
        return value > INT64_MAX || number_integer(static_cast<number_integer_t>(value));
    }
    bool number_float(number_float_t /*value*/, const string_t& /*written*/) override {
        return true;
    }
    bool string(string_t& value) override {
        if (isId()) {
            _id.kind = Kind::string;
            _id.text = value;
        }
        return true;
    }
    bool binary(binary_t& /*value*/) override { return true; }
    bool start_object(std::size_t /*size*/) override { return enter(); }
    bool start_array(std::size_t /*size*/) override { return enter(); }
    bool end_object() override { return leave(); }
    bool end_array() override { return leave(); }
    bool key(string_t& name) override {
        _isAtId = _depth == 1 && name == "id";
        return true;
    }
    bool parse_error(std::size_t /*position*/, const std::string& /*lastToken*/,
                     const nlohmann::json::exception& /*exception*/) override {
        return false;
    }

private:
    bool isId() { return _depth == 1 && std::exchange(_isAtId, false); }
    bool enter() {
        ++_depth;
        return true;
    }
    bool leave() {
        --_depth;
        return true;
    }

    JSONNode _id;
    std::size_t _depth = 0;
    bool _isAtId = false;  // the next value of the outermost object is the id
};

/// Returns the JSON text. Replaces invalid UTF-8 with U+FFFD.
std::string textOf(const JSON& json) {
    return json.dump(-1, ' ', false, JSON::error_handler_t::replace);
}

RPCReading messageIn(const JSONNode& root) {
    const auto refuse = [](const JSON& id, std::string_view sentence) {
        return RPCReading{.refusal = rpcError(id, RPCErrorCode::invalidRequest, sentence)};
    };
    if (root.kind != Kind::object) {
        return refuse(nullptr, root.kind == Kind::array
                                   ? "The message is a batch; send one message at a time."
                                   : "The message must be an object.");
    }
    RPCMessage message;
    if (const JSONNode* id = memberOf(root, "id")) {
        message.id = stringOrInteger(*id);
        if (!message.id && id->kind != Kind::null) {
            return refuse(nullptr, "The message's member 'id' must be a string or an integer.");
        }
        message.id = message.id.value_or(nullptr);
    }
    const JSON id = message.id.value_or(nullptr);
    const JSONNode* version = memberOf(root, "jsonrpc");
    if (version == nullptr || version->kind != Kind::string || version->text != "2.0") {
        return refuse(id, "The message's member 'jsonrpc' must be '2.0'.");
    }
    const JSONNode* method = memberOf(root, "method");
    const JSONNode* result = memberOf(root, "result");
    if (method == nullptr && (result != nullptr || memberOf(root, "error") != nullptr)) {
        return {.response = RPCResponse{id, result != nullptr ? *result : JSONNode()}};
    }
    if (method == nullptr || method->kind != Kind::string) {
        return refuse(id, "The message's member 'method' must be a string.");
    }
    message.method = method->text;
    if (const JSONNode* params = memberOf(root, "params")) {
        message.params = *params;
        message.params.name.clear();
    }
    return {.message = std::move(message)};
}

}  // namespace

std::optional<JSON> stringOrInteger(const JSONNode& node) {
    switch (node.kind) {
        case Kind::string:
            return node.text;
        case Kind::integer:
            return node.integer;
        default:
            return std::nullopt;
    }
}

JSON idOfRPCMessage(std::string_view text) {
    IdFinder finder;
    try {
        return JSON::sax_parse(text, &finder) ? finder.id() : JSON();
    } catch (const std::bad_alloc&) {
        return finder.id();
    }
}

RPCReading readRPCMessage(std::string_view text) {
    const JSONReading reading = readJSON(text);
    if (reading.isRefusedJSON) {
        return {.refusal =
                    rpcError(idOfRPCMessage(text), RPCErrorCode::invalidRequest, reading.failure)};
    }
    if (!reading.root) {
        return {.refusal = rpcError(nullptr, RPCErrorCode::parseError, reading.failure)};
    }
    return messageIn(*reading.root);
}

std::string rpcResult(const JSON& id, const JSON& result) {
    return rpcResultOfText(id, textOf(result));
}

std::string rpcResultOfText(const JSON& id, std::string_view result) {
    std::string text = R"({"jsonrpc":"2.0","id":)" + textOf(id) + R"(,"result":)";
    return text.append(result).append("}");
}

std::string rpcError(const JSON& id, RPCErrorCode code, std::string_view sentence,
                     std::string_view data) {
    const JSON error{{"code", static_cast<int>(code)}, {"message", sentence}};
    std::string text = R"({"jsonrpc":"2.0","id":)" + textOf(id) + R"(,"error":)" + textOf(error);
    if (!data.empty()) {
        text.pop_back();  // the closing brace of the error
        text.append(R"(,"data":)").append(data).append("}");
    }
    return text + "}";
}

std::string rpcRequest(std::string_view id, std::string_view method, const JSON& params) {
    return textOf({{"jsonrpc", "2.0"}, {"id", id}, {"method", method}, {"params", params}});
}

std::string rpcNotification(std::string_view method, const JSON& params) {
    return rpcNotificationOfText(method, textOf(params));
}

std::string rpcNotificationOfText(std::string_view method, std::string_view params) {
    std::string text = R"({"jsonrpc":"2.0","method":)" + textOf(method) + R"(,"params":)";
    return text.append(params).append("}");
}

}  // namespace neb::nebsc
