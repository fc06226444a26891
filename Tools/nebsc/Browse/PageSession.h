// PageSession.h - the server of one open page.
//
//     PageSession session(hostSession, interruption);
//     session.send(R"({"jsonrpc":"2.0","id":1,"method":"sourceControl/perform", …})");
//     for (const std::string& message : session.receive(500ms)) { … }
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Platform/FileDescriptor.h"
#include "Server/MessageDecoder.h"
#include "Server/MessageWriter.h"
#include "Session/HostSession.h"
#include "Session/Interruption.h"

namespace neb::nebsc {

/// Runs a Server on a thread of its own and exchanges messages with it. The server pauses while its
/// messages are not received.
class PageSession {
public:
    /// Starts the server and initializes it. Both arguments must outlive the object. Throws
    /// std::system_error if the system has no more descriptors or threads.
    PageSession(const HostSession& session, Interruption& interruption);
    PageSession(const PageSession&) = delete;
    PageSession& operator=(const PageSession&) = delete;
    /// Cancels the requests that run, and waits for their end.
    ~PageSession();

    /// Sends a JSON-RPC message to the server. Does not wait. Thread-safe.
    void send(std::string_view message) { _writer->send(message); }

    /// Waits for messages of the server, at most for the time. Returns those that are complete, in
    /// order; empty if none came in time. Only for one thread at a time.
    [[nodiscard]] std::vector<std::string> receive(std::chrono::milliseconds longest);

    /// Whether the server has ended. Then no more messages come. Thread-safe.
    [[nodiscard]] bool hasEnded() const { return _hasEnded; }

private:
    Pipe _toServer, _fromServer;
    MessageDecoder _decoder;
    std::atomic<bool> _hasEnded = false;
    std::unique_ptr<MessageWriter> _writer;
    std::thread _server;
};

}  // namespace neb::nebsc
