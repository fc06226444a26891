// Reads arbitrary JSON-RPC messages. Each is a request, a response that is ignored, or is refused
// with an error response of one line.

#include "Server/RPCMessage.h"

#include "Property.h"

using namespace neb::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    const auto reading = neb::nebsc::readRPCMessage(bytes);
    require(!reading.message || reading.refusal.empty(),
            "there is a message or a refusal, not both");
    if (reading.message) {
        const auto& id = reading.message->id;
        require(!id || id->is_string() || id->is_number_integer() || id->is_null(),
                "an id is a string, an integer or null");
    }
    if (!reading.refusal.empty()) {
        const auto refusal = nlohmann::json::parse(reading.refusal);  // an exception is a failure
        require(refusal.at("jsonrpc") == "2.0" && refusal.contains("id") &&
                    refusal.at("error").at("code").is_number_integer() &&
                    !refusal.at("error").at("message").get<std::string>().empty(),
                "a refusal is an error response");
        require(reading.refusal.find('\n') == std::string::npos, "a refusal is one line");
    }
    return 0;
}
