#include "Server/Server.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "JSON/OutcomeJSON.h"
#include "JSON/RequestJSON.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlPlugIn.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "NEBFoundation/NEBSourceControlUnexpectedError.h"
#include "Platform/ErrnoText.h"
#include "Session/GitProgram.h"
#include "Session/OperationRun.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

using JSON = nlohmann::ordered_json;

/// More than the number of processors, because requests mostly wait for git.
constexpr std::size_t requestsAtOnce = 16;
constexpr std::size_t readSize = std::size_t{1} << 16;
/// Reading stops while this many requests are not answered, or this many bytes of responses are not
/// written.
constexpr std::size_t mostJobs = 4096;
constexpr std::size_t mostWaitingBytes = std::size_t{64} << 20;
constexpr std::chrono::milliseconds pollInterval{20};
/// How long the server waits at the end for a client that does not read its responses.
constexpr std::chrono::milliseconds endTimeout{2000};
/// How long the server waits at the end for the version of git, which "initialize" returns.
constexpr std::chrono::seconds initializationTimeout{5};

JSON requestTypes() {
    JSON types = JSON::array();
    for (const auto& type : NEBSourceControlAllRequestTypes()) {
        types.push_back({{"type", type.type}, {"name", type.name}});
    }
    return types;
}

std::string sentenceOfCurrentException() {
    return NEBSourceControlErrorOfCurrentException().localizedDescription().value_or("");
}

}  // namespace

// ---- messages ---------------------------------------------------------------------------------

struct Server::Method {
    std::string_view name;
    void (Server::*handler)(RPCMessage&);
    /// Whether it is a notification, which has no response. Otherwise it is a request.
    bool isNotification = false;
    /// Whether it is valid at any time. Otherwise only between "initialize" and "shutdown".
    bool isForAnyState = false;
};

const Server::Method Server::methods[] = {
    {.name = "initialize", .handler = &Server::initialize, .isForAnyState = true},
    {.name = "sourceControl/perform", .handler = &Server::perform},
    {.name = "sourceControl/plan", .handler = &Server::plan},
    {.name = "$/cancelRequest", .handler = &Server::cancelRequest, .isNotification = true},
    {.name = "shutdown", .handler = &Server::shutDown},
    {.name = "exit", .handler = &Server::exit, .isNotification = true, .isForAnyState = true},
};

Server::End Server::run(int input, int output) {
    _writer = std::make_unique<MessageWriter>(output, [this] { _wake.wake(); });
    _progress = std::make_unique<ProgressReports>(
        [this](const std::string& message) { _writer->send(message); });
    _queue = std::make_unique<OperationQueue>(requestsAtOnce);
    _scheduler = std::make_unique<RepositoryScheduler>(*_queue);
    try {
        const Interruption::Work work(_interruption, [this] { _wake.wake(); });
        readFrom(input);
        waitForInitialization();
    } catch (const std::exception&) {
        _end = {.isOrderly = false, .failure = sentenceOfCurrentException()};
    }
    cancelAll();
    _queue->waitUntilAllOperationsAreFinished();
    static_cast<void>(_writer->finish(endTimeout));
    return _end;
}

void Server::readFrom(int input) {
    std::string buffer(readSize, '\0');
    while (_state != State::ended) {
        const bool mayRead = mayReadMore();
        std::array<pollfd, 2> descriptors{
            // Polled even while reading is stopped: POLLHUP reports that the client is gone.
            {{.fd = input, .events = static_cast<short>(mayRead ? POLLIN : 0), .revents = 0},
             {.fd = _wake.descriptor(), .events = POLLIN, .revents = 0}}};
        const int timeout = mayRead ? -1 : static_cast<int>(pollInterval.count());
        if (::poll(descriptors.data(), descriptors.size(), timeout) < 0) {
            continue;  // a signal or no memory: try again
        }
        if (descriptors[1].revents != 0) {
            return;
        }
        if (descriptors[0].revents == 0) {
            continue;
        }
        if (!mayRead) {
            return;
        }
        const ssize_t count = ::read(input, buffer.data(), buffer.size());
        if (count > 0) {
            _decoder.append(std::string_view(buffer).substr(0, static_cast<std::size_t>(count)));
            handleMessages();
        } else if (count == 0) {
            if (!_decoder.isBetweenMessages()) {
                _end.failure = "The client closed its end in the middle of a message.";
            }
            return;
        } else if (errno != EINTR && errno != EAGAIN) {
            _end.failure = "The client's messages cannot be read: " + textOfErrno(errno) + ".";
            return;
        }
    }
}

/// A client may send all its messages at once and close its stream; cancelling git would then
/// leave the response to "initialize" without the version. A signal or a closed output ends the
/// wait.
void Server::waitForInitialization() {
    const auto end = std::chrono::steady_clock::now() + initializationTimeout;
    pollfd wake{.fd = _wake.descriptor(), .events = POLLIN, .revents = 0};
    while (!_initialization.expired() && std::chrono::steady_clock::now() < end &&
           ::poll(&wake, 1, static_cast<int>(pollInterval.count())) <= 0) {
    }
}

void Server::handleMessages() {
    while (_state != State::ended) {
        const auto frame = _decoder.take();
        if (!frame) {
            break;
        }
        handle(*frame);
    }
    if (const auto& failure = _decoder.failure()) {
        _end.failure = *failure;
        _writer->send(rpcError(nullptr, RPCErrorCode::parseError, *failure));
        _state = State::ended;
    }
}

void Server::handle(const MessageDecoder::Frame& frame) {
    if (frame.length > longestJSONText) {
        _writer->send(rpcError(nullptr, RPCErrorCode::invalidRequest,
                               "The message has " + std::to_string(frame.length) +
                                   " bytes; the limit is " + std::to_string(longestJSONText) +
                                   "."));
        return;
    }
    JSON id;
    try {
        RPCReading reading = readRPCMessage(frame.content);
        if (reading.message) {
            id = reading.message->id.value_or(nullptr);
            dispatch(*reading.message);
        } else if (!reading.refusal.empty()) {
            _writer->send(reading.refusal);
        }
    } catch (const std::exception&) {
        if (id.is_null()) {
            id = idOfRPCMessage(frame.content);
        }
        _writer->send(rpcError(id, RPCErrorCode::internalError, sentenceOfCurrentException()));
    }
}

void Server::dispatch(RPCMessage& message) {
    const auto* method =
        std::find_if(std::begin(methods), std::end(methods),
                     [&message](const Method& row) { return row.name == message.method; });
    const bool isKnown = method != std::end(methods);
    if (!message.id) {
        if (isKnown && method->isNotification) {
            (this->*method->handler)(message);
        }
        return;  // unknown notifications are ignored
    }
    if (!isKnown || method->isNotification) {
        refuse(message, RPCErrorCode::methodNotFound,
               "The method " + inQuotes(shortened(message.method)) + " is unknown.");
    } else if (_state == State::fresh && !method->isForAnyState) {
        refuse(message, RPCErrorCode::serverNotInitialized,
               "The first request must be 'initialize'.");
    } else if (_state == State::shutDown) {
        refuse(message, RPCErrorCode::invalidRequest, "No request is accepted after 'shutdown'.");
    } else {
        (this->*method->handler)(message);
    }
}

void Server::refuse(const RPCMessage& message, RPCErrorCode code, std::string_view sentence) {
    _writer->send(rpcError(*message.id, code, sentence));
}

// ---- methods ----------------------------------------------------------------------------------

void Server::initialize(RPCMessage& message) {
    if (_state != State::fresh) {
        refuse(message, RPCErrorCode::invalidRequest, "The server is already initialized.");
        return;
    }
    _state = State::initialized;
    _initialization = start(message, std::nullopt, [this](Job& job) {
        ChildProcess git;
        const Job::Work work(job, [&git] { git.cancel(); });
        const auto version = answerOf(runGit(git, _session.trace(), {"--version"}, std::nullopt));
        return rpcResult(job.id(), {{"capabilities", JSON::object()},
                                    {"serverInfo", {{"name", "nebsc"}, {"version", NEBSC_VERSION}}},
                                    {"contractVersion", NEBSourceControlContractVersion},
                                    {"gitVersion", version ? JSON(*version) : JSON()},
                                    {"requestTypes", requestTypes()}});
    });
}

void Server::perform(RPCMessage& message) {
    startRequest(message, true);
}

void Server::plan(RPCMessage& message) {
    startRequest(message, false);
}

void Server::startRequest(RPCMessage& message, bool isRun) {
    const ProgressToken token = takeProgressToken(message.params);
    if (!token.refusal.empty()) {
        refuse(message, RPCErrorCode::invalidParams, token.refusal);
        return;
    }
    const RequestReading reading = requestFromJSON(message.params);
    if (!reading.request) {
        refuse(message, RPCErrorCode::invalidParams, reading.refusal);
        return;
    }
    const auto& request = reading.request;
    const auto name = NEBSourceControlRequestTypeName(request->type);
    start(message, isRun ? writtenLocationOf(*request) : std::nullopt,
          [this, request, isRun, token = token.value,
           title = std::string(name.value_or("request"))](Job& job) {
              std::optional<ProgressReports::Work> progress;
              if (token) {
                  progress.emplace(*_progress, *token, title);
              }
              return responseTo(job, request, isRun);
          });
}

std::string Server::responseTo(Job& job, const std::shared_ptr<NEBSourceControlRequest>& request,
                               bool isRun) const {
    const HostSession::Runner run = [&job](NEBSourceControlOperation& operation) {
        const Job::Work work(job, [&operation] { cancelOperation(operation); });
        operation.start();
    };
    RequestResult requestResult = _session.perform(request, isRun ? run : HostSession::Runner());
    if (requestResult.refusedValue) {
        return rpcError(job.id(), RPCErrorCode::invalidParams,
                        sentenceOfRefusedValue(*requestResult.refusedValue));
    }
    return writtenOutcome(*requestResult.outcome, [&job](const Outcome& outcome) {
        const bool wasCancelled =
            outcome.error && outcome.error->errorClass == NEBSourceControlCancelledErrorClass;
        return wasCancelled ? rpcError(job.id(), RPCErrorCode::requestCancelled,
                                       "The request was cancelled.", textOfOutcome(outcome))
                            : rpcResultOfText(job.id(), textOfOutcome(outcome));
    });
}

/// A waiting request is answered at once, a running one when it has ended.
void Server::cancelRequest(RPCMessage& message) {
    const auto id = std::find_if(message.params.children.begin(), message.params.children.end(),
                                 [](const JSONNode& child) { return child.name == "id"; });
    const auto key = id != message.params.children.end() ? stringOrInteger(*id) : std::nullopt;
    if (!key) {
        return;
    }
    std::shared_ptr<Job> job;
    {
        const MutexLock lock(_mutex);
        const auto entry = _jobs.find(key->dump());
        job = entry != _jobs.end() ? entry->second : nullptr;
    }
    if (job) {
        cancel(*job);
    }
}

void Server::shutDown(RPCMessage& message) {
    _state = State::shutDown;
    _writer->send(rpcResult(*message.id, nullptr));
}

void Server::exit(RPCMessage& /*message*/) {
    _end.isOrderly = _state == State::shutDown;
    _state = State::ended;
}

// ---- jobs -------------------------------------------------------------------------------------

std::weak_ptr<Job> Server::start(const RPCMessage& message, std::optional<std::string> location,
                                 std::function<std::string(Job&)> respond) {
    const auto job = std::make_shared<Job>(*message.id);
    {
        const MutexLock lock(_mutex);
        if (!_jobs.try_emplace(message.id->dump(), job).second) {
            refuse(message, RPCErrorCode::invalidRequest,
                   "A request with the id " + message.id->dump() + " is still running.");
            return {};
        }
    }
    try {
        _scheduler->add(std::move(location),
                        [this, job, respond = std::move(respond)] { work(*job, respond); });
    } catch (...) {
        const MutexLock lock(_mutex);
        _jobs.erase(message.id->dump());
        throw;
    }
    return job;
}

void Server::work(Job& job, const std::function<std::string(Job&)>& respond) {
    if (!job.begin()) {
        return;
    }
    try {
        try {
            finish(job, respond(job));
        } catch (const std::exception&) {
            finish(job,
                   rpcError(job.id(), RPCErrorCode::internalError, sentenceOfCurrentException()));
        }
    } catch (const std::exception&) {
        _wake.wake();  // no memory for a response: end the server
    }
}

void Server::finish(Job& job, const std::string& response) {
    {
        const MutexLock lock(_mutex);
        _jobs.erase(job.id().dump());
    }
    _writer->send(response);
}

void Server::cancel(Job& job) {
    if (job.cancel()) {
        finish(job, rpcError(job.id(), RPCErrorCode::requestCancelled,
                             "The request was cancelled before it started."));
    }
}

/// Cancels all jobs. Responses to waiting jobs are skipped if memory runs out.
void Server::cancelAll() {
    std::map<std::string, std::shared_ptr<Job>> jobs;
    {
        const MutexLock lock(_mutex);
        jobs.swap(_jobs);
    }
    for (const auto& [id, job] : jobs) {
        try {
            cancel(*job);
        } catch (const std::bad_alloc&) {
            continue;
        }
    }
}

bool Server::mayReadMore() {
    const MutexLock lock(_mutex);
    return _jobs.size() < mostJobs && _writer->waitingBytes() < mostWaitingBytes;
}

}  // namespace neb::nebsc
