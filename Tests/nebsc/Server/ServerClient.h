// ServerClient.h - a client that starts `nebsc serve` and sends it messages.
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

    /// Starts the server with these additional variables. `launcher` is a program with arguments
    /// that then executes the command line after it, such as prlimit(1).
    explicit ServerClient(
        const std::vector<std::pair<std::string, std::optional<std::string>>>& variables = {},
        std::vector<std::string> launcher = {});
    ServerClient(const ServerClient&) = delete;
    ServerClient& operator=(const ServerClient&) = delete;
    /// Kills the server if it still runs.
    ~ServerClient();

    /// Sends a request or, without an id, a notification.
    void send(std::optional<JSON> id, std::string_view method, JSON params = nullptr);
    void sendMessage(std::string_view content);
    void sendBytes(std::string_view bytes) const;

    /// Returns the next message; null if the server has ended or sends nothing for a minute.
    JSON receive();
    /// Returns the response to the request. Messages before it are added to others().
    JSON answerTo(const JSON& id);
    [[nodiscard]] const std::vector<JSON>& others() const { return _others; }

    /// Sends "initialize" and returns the response.
    JSON initialize();
    /// Closes the server's standard input.
    void close() { _toServer.close(); }
    /// Closes the read end of the server's standard output.
    void stopReading() { _fromServer.close(); }
    void signal(int signalNumber) const;
    /// The process of the server.
    [[nodiscard]] pid_t process() const { return _pid; }
    /// Waits for the end of the server. Returns -1 if a signal killed it.
    int exitStatus();

private:
    pid_t _pid = -1;
    FileDescriptor _toServer;
    FileDescriptor _fromServer;
    nebsc::MessageDecoder _decoder{std::size_t{1} << 30};
    std::vector<JSON> _others;
};

}  // namespace neb::test
