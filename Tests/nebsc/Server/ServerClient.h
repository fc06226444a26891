// ServerClient.h - a client of `nebsc serve`, which runs as a program of its own.
#pragma once

#include <sys/types.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/FileDescriptor.h"
#include "Server/MessageDecoder.h"

namespace neb::test {

class ServerClient {
public:
    using JSON = nlohmann::ordered_json;

    /// Starts the server, with these variables beside the environment's. `launcher` is a program
    /// with its arguments that becomes the program whose command line follows it, such as
    /// prlimit(1).
    explicit ServerClient(
        const std::vector<std::pair<std::string, std::optional<std::string>>>& variables = {},
        std::vector<std::string> launcher = {});
    ServerClient(const ServerClient&) = delete;
    ServerClient& operator=(const ServerClient&) = delete;
    /// Kills it where it still runs.
    ~ServerClient();

    /// Sends a request or, without an id, a notification.
    void send(std::optional<JSON> id, std::string_view method, JSON params = nullptr);
    void sendMessage(std::string_view content);
    void sendBytes(std::string_view bytes) const;

    /// The next message; null when the server has ended or said nothing for a minute.
    JSON receive();
    /// The answer to the request; what else comes before it is kept in others().
    JSON answerTo(const JSON& id);
    [[nodiscard]] const std::vector<JSON>& others() const { return _others; }

    /// "initialize", and its answer.
    JSON initialize();
    /// Closes what the server reads from.
    void close() { _toServer.close(); }
    /// Closes what it writes to.
    void stopReading() { _fromServer.close(); }
    void signal(int signalNumber) const;
    /// Waits for the end; -1 when a signal ended the server.
    int exitStatus();

private:
    pid_t _pid = -1;
    FileDescriptor _toServer;
    FileDescriptor _fromServer;
    nebsc::MessageDecoder _frames{std::size_t{1} << 30};
    std::vector<JSON> _others;
};

}  // namespace neb::test
