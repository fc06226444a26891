// RPCMessage.h - JSON-RPC 2.0 messages (jsonrpc.org/specification) of a server. All functions are
// thread-safe.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "JSON/JSONText.h"

namespace neb::nebsc {

/// Error codes of JSON-RPC and of the Language Server Protocol.
enum class RPCErrorCode {
    parseError = -32700,
    invalidRequest = -32600,
    methodNotFound = -32601,
    invalidParams = -32602,
    internalError = -32603,
    serverNotInitialized = -32002,
    requestCancelled = -32800,
    requestFailed = -32803,
};

/// A request or, without an id, a notification.
struct RPCMessage {
    /// A string or an integer, or null; absent in a notification.
    std::optional<nlohmann::ordered_json> id;
    std::string method;
    /// Of the kind null if the message has none.
    JSONNode params;
};

/// The client's response to a request of the server.
struct RPCResponse {
    /// A string or an integer, or null.
    nlohmann::ordered_json id;
    /// Of the kind null after an error.
    JSONNode result;
};

/// One of the three, or none for a response without an id.
struct RPCReading {
    std::optional<RPCMessage> message{};
    std::optional<RPCResponse> response{};
    /// The error response to an invalid message, with its id if that is readable. Empty otherwise.
    std::string refusal{};
};

/// Parses a message.
[[nodiscard]] RPCReading readRPCMessage(std::string_view text);

/// Returns the id of a message that is otherwise invalid or too large. Null if the text is not JSON
/// or has no id, or if memory runs out before the id.
[[nodiscard]] nlohmann::ordered_json idOfRPCMessage(std::string_view text);

[[nodiscard]] std::string rpcResult(const nlohmann::ordered_json& id,
                                    const nlohmann::ordered_json& result);
/// Returns the same for a result that is already JSON text.
[[nodiscard]] std::string rpcResultOfText(const nlohmann::ordered_json& id,
                                          std::string_view result);
/// `data` is JSON text with details; the member is omitted if it is empty.
[[nodiscard]] std::string rpcError(const nlohmann::ordered_json& id, RPCErrorCode code,
                                   std::string_view sentence, std::string_view data = {});
[[nodiscard]] std::string rpcRequest(std::string_view id, std::string_view method,
                                     const nlohmann::ordered_json& params);
[[nodiscard]] std::string rpcNotification(std::string_view method,
                                          const nlohmann::ordered_json& params);
/// Returns the same for parameters that are already JSON text.
[[nodiscard]] std::string rpcNotificationOfText(std::string_view method, std::string_view params);

/// Returns the string or integer; absent for a node of another kind.
[[nodiscard]] std::optional<nlohmann::ordered_json> stringOrInteger(const JSONNode& node);

}  // namespace neb::nebsc
