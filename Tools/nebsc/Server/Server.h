// Server.h - a JSON-RPC 2.0 server for requests, with the framing of the Language Server Protocol.
// docs/server.md describes the methods.
//
//     Interruption interruption;
//     const Server::End end = Server(session, interruption).run(STDIN_FILENO, STDOUT_FILENO);
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "NEBFoundation/NEBSourceControlScheduler.h"
#include "Platform/Wake.h"
#include "Server/Credentials/CredentialRequests.h"
#include "Server/CursorRequests.h"
#include "Server/Jobs.h"
#include "Server/MessageDecoder.h"
#include "Server/MessageWriter.h"
#include "Server/ProgressReports.h"
#include "Server/RPCMessage.h"
#include "Server/Watch/WatchRequests.h"
#include "Session/HostSession.h"
#include "Session/Interruption.h"

namespace neb::nebsc {

/// Serves one client. Not thread-safe; it uses threads of its own.
class Server {
public:
    struct End {
        /// Whether the client sent "shutdown" before "exit".
        bool isOrderly = false;
        /// One sentence; empty if the input could be read and decoded.
        std::string failure;
    };

    /// Both references must outlive the server. A signal ends run(). The version is that of the
    /// plug-in, for recordings.
    Server(const HostSession& session, Interruption& interruption, std::string plugInVersion = {})
        : _session(session),
          _interruption(interruption),
          _plugInVersion(std::move(plugInVersion)) {}

    /// Serves the client until it sends "exit" or an invalid header, or closes a stream. Then
    /// completes the response to "initialize", cancels all other requests and waits for their end.
    /// The caller owns the descriptors. Can be called once.
    [[nodiscard]] End run(int input, int output);

private:
    enum class State { fresh, initialized, shutDown, ended };

    struct Method;
    static const Method methods[];

    void readFrom(int input);
    void handleMessages();
    void handle(const MessageDecoder::Frame& frame);
    void dispatch(RPCMessage& message);

    // The methods. A notification has no id.
    void initialize(RPCMessage& message);
    void describe(RPCMessage& message);
    void perform(RPCMessage& message);
    void plan(RPCMessage& message);
    void openCursor(RPCMessage& message);
    void nextPage(RPCMessage& message);
    void closeCursor(RPCMessage& message);
    void watch(RPCMessage& message);
    void unwatch(RPCMessage& message);
    void cancelRequest(RPCMessage& message);
    void shutDown(RPCMessage& message);
    void exit(RPCMessage& message);

    void startRequest(RPCMessage& message, bool isRun);
    [[nodiscard]] std::string planned(
        Job& job, const std::shared_ptr<NEBSourceControlRequest>& request) const;
    /// With a token, delivers the records as partial results.
    [[nodiscard]] RequestResult performed(
        Job& job, const std::shared_ptr<NEBSourceControlRequest>& request,
        const RunSettings& settings,
        const std::optional<nlohmann::ordered_json>& partialToken) const;

    /// Returns whether the server has capacity for another message.
    [[nodiscard]] bool mayReadMore() const;
    void waitForInitialization();
    void refuse(const RPCMessage& message, RPCErrorCode code, std::string_view sentence);

    const HostSession& _session;
    Interruption& _interruption;
    const std::string _plugInVersion;
    State _state = State::fresh;
    /// For requests that do not say it.
    NEBSourceControlTrust _trust = NEBSourceControlTrust::trusted;
    /// The id of "initialize"; absent before.
    std::optional<nlohmann::ordered_json> _initialization;
    End _end;
    MessageDecoder _decoder{longestJSONText};
    Wake _wake;

    // Each member uses those before it.
    std::unique_ptr<MessageWriter> _writer;
    std::unique_ptr<ProgressReports> _progress;
    std::unique_ptr<CredentialRequests> _credentials;
    std::unique_ptr<Jobs> _jobs;
    std::unique_ptr<NEBSourceControlScheduler> _scheduler;
    std::unique_ptr<CursorRequests> _cursors;
    std::unique_ptr<WatchRequests> _watches;
};

}  // namespace neb::nebsc
