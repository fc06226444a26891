#include "Server/Server.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "JSON/RequestJSON.h"
#include "JSON/Schema/RequestSchema.h"
#include "NEBFoundation/NEBSourceControlPlugIn.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "NEBFoundation/NEBSourceControlUnexpectedError.h"
#include "Platform/ErrnoText.h"
#include "Server/InitializeParams.h"
#include "Server/PartialResults.h"
#include "Server/RecordParam.h"
#include "Server/RequestResponse.h"
#include "Session/GitProgram.h"
#include "Session/OperationRun.h"
#include "Session/RequestRecording.h"
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
constexpr std::chrono::milliseconds unlimited{-1};
/// How often the server looks for idle cursors while it has any.
constexpr std::chrono::milliseconds idleCheckInterval{10000};
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

JSON capabilities() {
    JSON all{{"partialResults", true},
             {"background", true},
             {"credentials", true},
             {"describe", true},
             {"record", true},
             {"trust", JSON::array({"trusted", "inspect"})},
             {"cursors", {{"max", CursorRequests::mostCursors}}}};
    if (WatchRequests::areAvailable()) {
        all["watch"] = {{"max", WatchRequests::mostWatches}};
    }
    return all;
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
    {.name = "sourceControl/describe", .handler = &Server::describe},
    {.name = "sourceControl/perform", .handler = &Server::perform},
    {.name = "sourceControl/plan", .handler = &Server::plan},
    {.name = "sourceControl/open", .handler = &Server::openCursor},
    {.name = "sourceControl/next", .handler = &Server::nextPage},
    {.name = "sourceControl/close", .handler = &Server::closeCursor},
    {.name = "sourceControl/watch", .handler = &Server::watch},
    {.name = "sourceControl/unwatch", .handler = &Server::unwatch},
    {.name = "$/cancelRequest", .handler = &Server::cancelRequest, .isNotification = true},
    {.name = "shutdown", .handler = &Server::shutDown},
    {.name = "exit", .handler = &Server::exit, .isNotification = true, .isForAnyState = true},
};

Server::End Server::run(int input, int output) {
    _writer = std::make_unique<MessageWriter>(output, [this] { _wake.wake(); });
    _progress = std::make_unique<ProgressReports>(
        [this](const std::string& message) { _writer->send(message); });
    _credentials = std::make_unique<CredentialRequests>(*_writer);
    _jobs = std::make_unique<Jobs>(*_writer, [this] { _wake.wake(); });
    _scheduler = std::make_unique<NEBSourceControlScheduler>(requestsAtOnce);
    _cursors =
        std::make_unique<CursorRequests>(_session, *_writer, *_progress, *_jobs, *_credentials);
    _watches = std::make_unique<WatchRequests>(_session, *_writer, *_jobs, *_scheduler);
    try {
        const Interruption::Work work(_interruption, [this] { _wake.wake(); });
        readFrom(input);
        waitForInitialization();
    } catch (const std::exception&) {
        _end = {.isOrderly = false, .failure = sentenceOfCurrentException()};
    }
    _jobs->cancelAll();
    _cursors.reset();
    _scheduler->waitUntilAllWorkIsDone();
    _watches.reset();
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
        _cursors->closeIdle();
        const std::chrono::milliseconds timeout = !mayRead             ? pollInterval
                                                  : _cursors->hasAny() ? idleCheckInterval
                                                                       : unlimited;
        if (::poll(descriptors.data(), descriptors.size(), static_cast<int>(timeout.count())) < 0) {
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
    while (_initialization && _jobs->has(*_initialization) &&
           std::chrono::steady_clock::now() < end &&
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
        } else if (reading.response) {
            _credentials->answer(*reading.response);
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
    const auto trust = declaredTrust(message.params);
    if (!trust) {
        refuse(message, RPCErrorCode::invalidParams,
               "The member 'trust' is neither 'trusted' nor 'inspect'.");
        return;
    }
    _state = State::initialized;
    _initialization = message.id;
    _trust = *trust;
    _cursors->setDefaultTrust(*trust);
    if (declaresCredentials(message.params)) {
        _credentials->enable();
    }
    _jobs->start(*message.id, *_scheduler, {}, [this](Job& job) {
        ChildProcess git;
        const Job::Work work(job, [&git] { git.cancel(); });
        const auto version =
            trimmedOutputOf(runGit(git, _session.trace(), {"--version"}, std::nullopt));
        return rpcResult(job.id(), {{"capabilities", capabilities()},
                                    {"serverInfo", {{"name", "nebsc"}, {"version", NEBSC_VERSION}}},
                                    {"contractVersion", NEBSourceControlContractVersion},
                                    {"gitVersion", version ? JSON(*version) : JSON()},
                                    {"requestTypes", requestTypes()}});
    });
}

void Server::describe(RPCMessage& message) {
    _writer->send(rpcResult(*message.id, requestSchema()));
}

void Server::perform(RPCMessage& message) {
    startRequest(message, true);
}

void Server::plan(RPCMessage& message) {
    startRequest(message, false);
}

void Server::startRequest(RPCMessage& message, bool isRun) {
    const ProgressToken token = takeProgressToken(message.params, "workDoneToken");
    const ProgressToken partialToken = takeProgressToken(message.params, "partialResultToken");
    const RecordParam record = takeRecordParam(message.params);
    for (const std::string& refusal : {token.refusal, partialToken.refusal, record.refusal}) {
        if (!refusal.empty()) {
            refuse(message, RPCErrorCode::invalidParams, refusal);
            return;
        }
    }
    const RequestReading reading = requestFromJSON(message.params, _trust);
    if (!reading.request) {
        refuse(message, RPCErrorCode::invalidParams, reading.refusal);
        return;
    }
    const auto& request = reading.request;
    const RunSettings settings =
        isRun ? _credentials->settingsFor(reading, *message.id) : reading.settings;
    const auto name = NEBSourceControlRequestTypeName(request->type);
    _jobs->start(
        *message.id, *_scheduler,
        {.places = isRun ? NEBSourceControlWrittenPlaces(*request) : std::vector<std::string>(),
         .isBackground = settings.isBackgroundWork},
        [this, request, settings, isRun, token = token.value, partialToken = partialToken.value,
         record, title = std::string(name.value_or("request"))](Job& job) {
            std::optional<ProgressReports::Work> progress;
            if (token) {
                progress.emplace(*_progress, *token, title);
            }
            return isRun ? recordedResponseTo(
                               job, record, _session, _plugInVersion,
                               [&] { return performed(job, request, settings, partialToken); })
                         : planned(job, request);
        });
}

std::string Server::planned(Job& job,
                            const std::shared_ptr<NEBSourceControlRequest>& request) const {
    return responseTo(job, _session.perform(request, {}));
}

RequestResult Server::performed(Job& job, const std::shared_ptr<NEBSourceControlRequest>& request,
                                const RunSettings& settings,
                                const std::optional<JSON>& partialToken) const {
    const HostSession::Runner run = [this, &job, &settings,
                                     &partialToken](NEBSourceControlOperation& operation) {
        settings.applyTo(operation);
        if (partialToken) {
            operation.setRecordSink(
                recordedSink(partialResultSink(operation, *_writer, *partialToken)));
        }
        const Job::Work work(job, [this, &operation] {
            cancelOperation(operation);
            _writer->wakeWaiting();
        });
        operation.start();
    };
    return _session.perform(request, run);
}

void Server::cancelRequest(RPCMessage& message) {
    const JSONNode* id = memberOf(message.params, "id");
    const auto key = id != nullptr ? stringOrInteger(*id) : std::nullopt;
    if (!key) {
        return;
    }
    _jobs->cancel(*key);
}

void Server::openCursor(RPCMessage& message) {
    _cursors->open(message);
}

void Server::nextPage(RPCMessage& message) {
    _cursors->next(message);
}

void Server::closeCursor(RPCMessage& message) {
    _cursors->close(message);
}

void Server::watch(RPCMessage& message) {
    _watches->watch(message);
}

void Server::unwatch(RPCMessage& message) {
    _watches->unwatch(message);
}

void Server::shutDown(RPCMessage& message) {
    _state = State::shutDown;
    _writer->send(rpcResult(*message.id, nullptr));
}

void Server::exit(RPCMessage& /*message*/) {
    _end.isOrderly = _state == State::shutDown;
    _state = State::ended;
}

bool Server::mayReadMore() const {
    return _jobs->count() < mostJobs && _writer->waitingBytes() < mostWaitingBytes;
}

}  // namespace neb::nebsc
