// RPCMessage.h - the messages of JSON-RPC 2.0 (jsonrpc.org/specification), as a server reads and
// writes them.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "JSON/JSONText.h"

namespace neb::nebsc {

/// The codes of errors: those of JSON-RPC, and of the Language Server Protocol those that fit.
enum class RPCErrorCode {
    parseError = -32700,
    invalidRequest = -32600,
    methodNotFound = -32601,
    invalidParams = -32602,
    internalError = -32603,
    serverNotInitialized = -32002,
    requestCancelled = -32800,
};

/// A request or, without an id, a notification.
struct RPCMessage {
    /// A string or an integer, or null; absent in a notification.
    std::optional<nlohmann::ordered_json> id;
    std::string method;
    /// Of the kind null when there are none.
    JSONNode params;
};

struct RPCReading {
    std::optional<RPCMessage> message;
    /// What to answer when there is no message: with the id, where that could be read.
    std::string refusal;
};

/// Reads a message; a client's answer to what nobody asked is neither a message nor refused. From
/// any thread, as is all below.
[[nodiscard]] RPCReading readRPCMessage(std::string_view text);

/// The id of a message that cannot be read as a whole; null where the text is not JSON, has no id,
/// or memory runs out before it.
[[nodiscard]] nlohmann::ordered_json idOfRPCMessage(std::string_view text);

[[nodiscard]] std::string rpcResult(const nlohmann::ordered_json& id,
                                    const nlohmann::ordered_json& result);
/// The same with a result that is JSON text already.
[[nodiscard]] std::string rpcResultOfText(const nlohmann::ordered_json& id,
                                          std::string_view result);
/// `data`, JSON text, tells more than the sentence; absent where it is empty.
[[nodiscard]] std::string rpcError(const nlohmann::ordered_json& id, RPCErrorCode code,
                                   std::string_view sentence, std::string_view data = {});
[[nodiscard]] std::string rpcNotification(std::string_view method, nlohmann::ordered_json params);

/// A string or an integer as JSON has it; nothing for any other kind.
[[nodiscard]] std::optional<nlohmann::ordered_json> stringOrInteger(const JSONNode& node);

}  // namespace neb::nebsc
