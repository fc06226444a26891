// Server.h - serves requests over JSON-RPC 2.0, framed as language servers do: docs/server.md tells
// of the methods.
//
//     Interruption interruption;
//     const Server::End end = Server(session, interruption).run(STDIN_FILENO, STDOUT_FILENO);
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Mutex.h"
#include "Platform/OperationQueue.h"
#include "Server/Job.h"
#include "Server/MessageDecoder.h"
#include "Server/MessageWriter.h"
#include "Server/ProgressReports.h"
#include "Server/RPCMessage.h"
#include "Server/RepositoryScheduler.h"
#include "Server/Wake.h"
#include "Session/HostSession.h"
#include "Session/Interruption.h"

namespace neb::nebsc {

class Server {
public:
    /// How the conversation came to its end.
    struct End {
        /// Whether the client had asked to shut down before.
        bool isOrderly = false;
        /// One sentence; empty where nothing was wrong with the stream.
        std::string failure;
    };

    /// Both outlive the server. A signal ends the conversation.
    Server(const HostSession& session, Interruption& interruption)
        : _session(session), _interruption(interruption) {}

    /// Talks with the client until it says "exit", is gone, or cannot be understood; then nothing
    /// of its work runs any more. The descriptors stay the caller's. Once for an object.
    [[nodiscard]] End run(int input, int output);

private:
    enum class State { fresh, initialized, shutDown, ended };

    struct Method;
    static const Method methods[];

    void readFrom(int input);
    void takeFrames();
    void take(const MessageDecoder::Frame& frame);
    void dispatch(RPCMessage& message);

    // The methods. Of a notification the id is absent.
    void initialize(RPCMessage& message);
    void perform(RPCMessage& message);
    void plan(RPCMessage& message);
    void cancelRequest(RPCMessage& message);
    void shutDown(RPCMessage& message);
    void exit(RPCMessage& message);

    void startRequest(RPCMessage& message, bool isRun);
    [[nodiscard]] std::string answerTo(Job& job,
                                       const std::shared_ptr<NEBSourceControlRequest>& request,
                                       bool isRun) const;

    /// Lets `answer` make the answer, when its turn has come: see RepositoryScheduler for the
    /// place.
    void start(const RPCMessage& message, std::optional<std::string> place,
               std::function<std::string(Job&)> answer);
    void work(Job& job, const std::function<std::string(Job&)>& answer);
    void finish(Job& job, const std::string& answer);
    void cancel(Job& job);
    void cancelAll();
    [[nodiscard]] bool mayReadOn();
    void refuse(const RPCMessage& message, RPCErrorCode code, std::string_view sentence);

    const HostSession& _session;
    Interruption& _interruption;
    State _state = State::fresh;
    End _end;
    MessageDecoder _frames{longestJSONText};
    Wake _wake;

    Mutex _mutex;
    std::map<std::string, std::shared_ptr<Job>> _jobs NEB_GUARDED_BY(_mutex);  // by id

    // In the order in which each needs those before it.
    std::unique_ptr<MessageWriter> _writer;
    std::unique_ptr<ProgressReports> _progress;
    std::unique_ptr<OperationQueue> _queue;
    std::unique_ptr<RepositoryScheduler> _order;
};

}  // namespace neb::nebsc
