#include "RPCMessage.h"

#include <algorithm>

namespace neb::nebsc {

namespace {

using JSON = nlohmann::ordered_json;
using Kind = JSONNode::Kind;

const JSONNode* memberOf(const JSONNode& node, std::string_view name) {
    const auto child =
        std::find_if(node.children.begin(), node.children.end(),
                     [name](const JSONNode& candidate) { return candidate.name == name; });
    return child != node.children.end() ? &*child : nullptr;
}

/// Bytes that are no UTF-8 become U+FFFD.
std::string textOf(const JSON& json) {
    return json.dump(-1, ' ', false, JSON::error_handler_t::replace);
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

RPCReading readRPCMessage(std::string_view text) {
    JSONReading reading = readJSON(text);
    if (!reading.root) {
        return {std::nullopt, rpcError(nullptr, RPCErrorCode::parseError, reading.failure)};
    }
    const auto refuse = [](const JSON& id, std::string_view sentence) {
        return RPCReading{std::nullopt, rpcError(id, RPCErrorCode::invalidRequest, sentence)};
    };
    const JSONNode& root = *reading.root;
    if (root.kind != Kind::object) {
        return refuse(nullptr, root.kind == Kind::array
                                   ? "The message is a batch; send one message at a time."
                                   : "The message is no object.");
    }
    RPCMessage message;
    if (const JSONNode* id = memberOf(root, "id")) {
        message.id = stringOrInteger(*id);
        if (!message.id && id->kind != Kind::null) {
            return refuse(nullptr, "The message's id is neither a string nor an integer.");
        }
        message.id = message.id.value_or(nullptr);
    }
    const JSON id = message.id.value_or(nullptr);
    const JSONNode* version = memberOf(root, "jsonrpc");
    if (version == nullptr || version->kind != Kind::string || version->text != "2.0") {
        return refuse(id, "The message's member \"jsonrpc\" is not \"2.0\".");
    }
    const JSONNode* method = memberOf(root, "method");
    if (method == nullptr && (memberOf(root, "result") || memberOf(root, "error"))) {
        return {};
    }
    if (method == nullptr || method->kind != Kind::string) {
        return refuse(id, "The message's member \"method\" is no string.");
    }
    message.method = method->text;
    if (const JSONNode* params = memberOf(root, "params")) {
        message.params = *params;
        message.params.name.clear();
    }
    return {std::move(message), {}};
}

std::string rpcResult(const JSON& id, JSON result) {
    return textOf({{"jsonrpc", "2.0"}, {"id", id}, {"result", std::move(result)}});
}

std::string rpcError(const JSON& id, RPCErrorCode code, std::string_view sentence, JSON data) {
    JSON error{{"code", static_cast<int>(code)}, {"message", sentence}};
    if (!data.is_null()) {
        error["data"] = std::move(data);
    }
    return textOf({{"jsonrpc", "2.0"}, {"id", id}, {"error", std::move(error)}});
}

std::string rpcNotification(std::string_view method, JSON params) {
    return textOf({{"jsonrpc", "2.0"}, {"method", method}, {"params", std::move(params)}});
}

}  // namespace neb::nebsc
