// LoopbackServer.h - a server that always answers the same, for failures of the network.
#pragma once

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace neb::test {

/// Listens on a free port of the loopback address and answers each request with the text; without
/// one it accepts and stays silent.
class LoopbackServer {
public:
    explicit LoopbackServer(std::string answer) : _answer(std::move(answer)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        _listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        EXPECT_EQ(::bind(_listener, reinterpret_cast<sockaddr*>(&address), length), 0);
        EXPECT_EQ(::listen(_listener, 8), 0);
        EXPECT_EQ(::getsockname(_listener, reinterpret_cast<sockaddr*>(&address), &length), 0);
        _port = ntohs(address.sin_port);
        _thread = std::thread([this] { serve(); });
    }
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;
    ~LoopbackServer() {
        ::shutdown(_listener, SHUT_RDWR);
        _thread.join();
        ::close(_listener);
    }

    [[nodiscard]] std::string url() const {
        return "http://127.0.0.1:" + std::to_string(_port) + "/x.git";
    }
    [[nodiscard]] bool wasAsked() const { return _wasAsked; }

private:
    void serve() {
        std::vector<int> silent;
        for (int peer = ::accept4(_listener, nullptr, nullptr, SOCK_CLOEXEC); peer >= 0;
             peer = ::accept4(_listener, nullptr, nullptr, SOCK_CLOEXEC)) {
            char request[4096];
            static_cast<void>(::read(peer, request, sizeof request));
            _wasAsked = true;
            if (_answer.empty()) {
                silent.push_back(peer);
                continue;
            }
            static_cast<void>(::write(peer, _answer.data(), _answer.size()));
            ::close(peer);
        }
        for (const int peer : silent) {
            ::close(peer);
        }
    }

    std::string _answer;
    int _listener = -1;
    int _port = 0;
    std::atomic<bool> _wasAsked = false;
    std::thread _thread;
};

}  // namespace neb::test
