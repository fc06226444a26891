#include "nebsc/Server/ServerClient.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>

#include "Support/ProgramStart.h"

namespace neb::test {

namespace {

constexpr int answerTimeout = 60000;  // milliseconds

}  // namespace

ServerClient::ServerClient(
    const std::vector<std::pair<std::string, std::optional<std::string>>>& variables,
    std::vector<std::string> launcher) {
    Pipe input;
    Pipe output;
    if (openPipe(input, PipeSize::ordinary) != 0 || openPipe(output, PipeSize::ordinary) != 0) {
        throw std::runtime_error("no pipe");
    }
    launcher.insert(launcher.end(), {NEB_BUILD_FOLDER "/bin/nebsc", "serve"});
    _pid = startProgram(launcher, environmentWith(variables),
                        {.standardInput = ChildStream::copyOf(input.readEnd.get()),
                         .standardOutput = ChildStream::copyOf(output.writeEnd.get()),
                         .defaultSignals = {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGPIPE}});
    _toServer = std::move(input.writeEnd);
    _fromServer = std::move(output.readEnd);
    ::signal(SIGPIPE, SIG_IGN);
}

ServerClient::~ServerClient() {
    if (_pid > 0) {
        ::kill(_pid, SIGKILL);
        ::waitpid(_pid, nullptr, 0);
    }
}

void ServerClient::send(std::optional<JSON> id, std::string_view method, JSON params) {
    JSON message{{"jsonrpc", "2.0"}, {"method", method}};
    if (id) {
        message["id"] = std::move(*id);
    }
    if (!params.is_null()) {
        message["params"] = std::move(params);
    }
    sendMessage(message.dump());
}

void ServerClient::sendMessage(std::string_view content) {
    sendBytes(nebsc::MessageDecoder::framed(content));
}

void ServerClient::sendBytes(std::string_view bytes) const {
    while (!bytes.empty()) {
        const ssize_t count = ::write(_toServer.get(), bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) {
            return;
        }
        bytes.remove_prefix(count > 0 ? static_cast<std::size_t>(count) : 0);
    }
}

ServerClient::JSON ServerClient::receive() {
    while (true) {
        if (const auto frame = _decoder.take()) {
            return JSON::parse(frame->content);
        }
        pollfd readable{.fd = _fromServer.get(), .events = POLLIN, .revents = 0};
        char buffer[65536];
        if (::poll(&readable, 1, answerTimeout) != 1) {
            return nullptr;
        }
        const ssize_t count = ::read(_fromServer.get(), buffer, sizeof buffer);
        if (count <= 0) {
            return nullptr;
        }
        _decoder.append({buffer, static_cast<std::size_t>(count)});
    }
}

ServerClient::JSON ServerClient::answerTo(const JSON& id) {
    while (true) {
        JSON message = receive();
        if (message.is_null() || (message.contains("id") && message["id"] == id)) {
            return message;
        }
        _others.push_back(std::move(message));
    }
}

ServerClient::JSON ServerClient::initialize() {
    send("initialize", "initialize", JSON::object());
    return answerTo("initialize");
}

void ServerClient::signal(int signalNumber) const {
    ::kill(_pid, signalNumber);
}

int ServerClient::exitStatus() {
    int status = 0;
    while (::waitpid(_pid, &status, 0) < 0 && errno == EINTR) {
    }
    _pid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace neb::test
