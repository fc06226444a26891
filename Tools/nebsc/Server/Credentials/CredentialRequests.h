// CredentialRequests.h - the requests "sourceControl/credentials" of the server to its client.
//
//     CredentialRequests credentials(writer);
//     credentials.enable();
//     credentials.settingsFor(reading, *message.id).applyTo(operation);
//     credentials.answer(response);   // of the client
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "JSON/RequestJSON.h"
#include "Platform/Mutex.h"
#include "Platform/Wake.h"
#include "Server/MessageWriter.h"
#include "Server/RPCMessage.h"
#include "Session/Credentials/CredentialService.h"

namespace neb::nebsc {

/// Asks one client for what git and ssh need. Thread-safe.
class CredentialRequests {
public:
    /// The writer must outlive this object.
    explicit CredentialRequests(MessageWriter& writer) : _writer(writer) {}
    CredentialRequests(const CredentialRequests&) = delete;
    CredentialRequests& operator=(const CredentialRequests&) = delete;

    /// From now on the client is asked. Must be called by the thread that calls settingsFor().
    void enable() { _isEnabled = true; }

    /// Returns the settings of the request with the permission to ask, if it contacts a server and
    /// a user waits for it. `id` is that of the client's message.
    [[nodiscard]] RunSettings settingsFor(const RequestReading& reading,
                                          const nlohmann::ordered_json& id);

    /// Takes the client's response. Ignores one to a question that was not asked or is withdrawn.
    void answer(const RPCResponse& response);

private:
    struct Question {
        Wake answered;
        /// Absent if the question is declined.
        std::optional<std::string> value;
    };

    [[nodiscard]] std::optional<std::string> ask(const CredentialQuestion& question,
                                                 const std::string& request, int end);
    [[nodiscard]] std::string add(const std::shared_ptr<Question>& question);
    /// Returns whether the question was still open.
    bool remove(const std::string& id);

    MessageWriter& _writer;
    bool _isEnabled = false;
    Mutex _mutex;
    std::uint64_t _lastNumber NEB_GUARDED_BY(_mutex) = 0;
    std::map<std::string, std::shared_ptr<Question>> _questions NEB_GUARDED_BY(_mutex);  // by id
    /// Last: it uses the others.
    CredentialService _service{[this](const CredentialQuestion& question,
                                      const std::string& request,
                                      int end) { return ask(question, request, end); }};
};

}  // namespace neb::nebsc
