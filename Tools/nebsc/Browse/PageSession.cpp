#include "Browse/PageSession.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "JSON/JSONText.h"
#include "Platform/SignalFreeThread.h"
#include "Server/RPCMessage.h"
#include "Server/Server.h"

namespace neb::nebsc {

namespace {

constexpr std::size_t readSize = std::size_t{1} << 16;
/// The id of "initialize", and how its response begins. The ids of the page are numbers.
constexpr std::string_view initializeID = "initialize";
constexpr std::string_view initializeResponse = R"({"jsonrpc":"2.0","id":"initialize")";

void openPipeOrThrow(Pipe& pipe) {
    if (const int failure = openPipe(pipe, PipeSize::ordinary); failure != 0) {
        throw std::system_error(failure, std::generic_category(), "pipe");
    }
}

}  // namespace

PageSession::PageSession(const HostSession& session, Interruption& interruption)
    : _decoder(longestJSONText) {
    openPipeOrThrow(_toServer);
    openPipeOrThrow(_fromServer);
    _writer = std::make_unique<MessageWriter>(_toServer.writeEnd.get(), [] {});
    _server = startSignalFreeThread([this, &session, &interruption] {
        static_cast<void>(
            Server(session, interruption).run(_toServer.readEnd.get(), _fromServer.writeEnd.get()));
        _hasEnded = true;
        _fromServer.writeEnd.close();
    });
    if (!_server.joinable()) {
        throw std::system_error(EAGAIN, std::generic_category(), "thread");
    }
    send(rpcRequest(initializeID, "initialize", nlohmann::ordered_json::object()));
}

/// The server ends when its input does, and does not wait for a reader that is gone.
PageSession::~PageSession() {
    _writer.reset();
    _toServer.writeEnd.close();
    _fromServer.readEnd.close();
    _server.join();
}

std::vector<std::string> PageSession::receive(std::chrono::milliseconds longest) {
    std::vector<std::string> messages;
    pollfd readable{.fd = _fromServer.readEnd.get(), .events = POLLIN, .revents = 0};
    if (::poll(&readable, 1, static_cast<int>(longest.count())) <= 0) {
        return messages;
    }
    std::string buffer(readSize, '\0');
    const ssize_t count = ::read(readable.fd, buffer.data(), buffer.size());
    if (count <= 0) {
        return messages;
    }
    buffer.resize(static_cast<std::size_t>(count));
    _decoder.append(buffer);
    while (auto frame = _decoder.take()) {
        if (!frame->content.starts_with(initializeResponse)) {
            messages.push_back(std::move(frame->content));
        }
    }
    return messages;
}

}  // namespace neb::nebsc
