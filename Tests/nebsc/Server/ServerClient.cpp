#include "nebsc/Server/ServerClient.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>

#include "NEBFoundation/NEBSourceControlChildEnvironment.h"

namespace neb::test {

namespace {

constexpr int longEnough = 60000;  // milliseconds

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

ServerClient::ServerClient(
    const std::vector<std::pair<std::string, std::optional<std::string>>>& variables,
    std::vector<std::string> launcher) {
    Pipe input;
    Pipe output;
    if (openPipe(input, PipeSize::ordinary) != 0 || openPipe(output, PipeSize::ordinary) != 0) {
        throw std::runtime_error("no pipe");
    }
    std::vector<std::string> environment = NEBSourceControlInheritedEnvironment();
    for (const auto& [name, value] : variables) {
        std::erase_if(environment, [start = name + "="](const std::string& variable) {
            return variable.starts_with(start);
        });
        if (value) {
            environment.push_back(name + "=" + *value);
        }
    }
    std::vector<std::string>& words = launcher;
    words.insert(words.end(), {NEB_BUILD_FOLDER "/bin/nebsc", "serve"});
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, input.readEnd.get(), STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, output.writeEnd.get(), STDOUT_FILENO);
    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    sigset_t defaults;
    ::sigemptyset(&defaults);
    for (const int signalNumber : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        ::sigaddset(&defaults, signalNumber);
    }
    ::posix_spawnattr_setsigdefault(&attributes, &defaults);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    const int failure = ::posix_spawn(&_pid, words.front().c_str(), &actions, &attributes,
                                      pointersTo(words).data(), pointersTo(environment).data());
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) {
        throw std::runtime_error("cannot start " + words.front());
    }
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
        if (const auto frame = _frames.take()) {
            return JSON::parse(frame->content);
        }
        pollfd readable{.fd = _fromServer.get(), .events = POLLIN, .revents = 0};
        char piece[65536];
        if (::poll(&readable, 1, longEnough) != 1) {
            return nullptr;
        }
        const ssize_t count = ::read(_fromServer.get(), piece, sizeof piece);
        if (count <= 0) {
            return nullptr;
        }
        _frames.append({piece, static_cast<std::size_t>(count)});
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
