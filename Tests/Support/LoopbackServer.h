// LoopbackServer.h - a server with a fixed response, for tests of network failures.
#pragma once

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace neb::test {

/// Listens on a free port of the loopback address and sends the same response to each request. With
/// an empty response it accepts the connection and sends nothing, or closes it. A second response
/// is for requests that begin with "POST".
class LoopbackServer {
public:
    enum class Silence { waits, hangsUp };

    explicit LoopbackServer(std::string answer, Silence silence = Silence::waits)
        : _answer(std::move(answer)), _silence(silence) {
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
    LoopbackServer(std::string answer, std::string answerToPost)
        : LoopbackServer(std::move(answer)) {
        const std::lock_guard lock(_mutex);
        _answerToPost = std::move(answerToPost);
    }
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;
    ~LoopbackServer() {
        ::shutdown(_listener, SHUT_RDWR);
        _thread.join();
        ::close(_listener);
    }

    [[nodiscard]] std::string url(const std::string& scheme = "http") const {
        return scheme + "://127.0.0.1:" + std::to_string(_port) + "/x.git";
    }
    [[nodiscard]] bool wasAsked() const { return _wasAsked; }

private:
    void serve() {
        std::vector<int> silent;
        for (int peer = ::accept4(_listener, nullptr, nullptr, SOCK_CLOEXEC); peer >= 0;
             peer = ::accept4(_listener, nullptr, nullptr, SOCK_CLOEXEC)) {
            char request[4096];
            const ssize_t length = ::read(peer, request, sizeof request);
            _wasAsked = true;
            const std::string answer =
                answerTo({request, length > 0 ? static_cast<std::size_t>(length) : std::size_t{0}});
            if (answer.empty() && _silence == Silence::waits) {
                silent.push_back(peer);
                continue;
            }
            static_cast<void>(::write(peer, answer.data(), answer.size()));
            hangUp(peer);
        }
        for (const int peer : silent) {
            ::close(peer);
        }
    }

    std::string answerTo(std::string_view request) {
        const std::lock_guard lock(_mutex);
        return request.starts_with("POST") && !_answerToPost.empty() ? _answerToPost : _answer;
    }

    /// Reads the rest of the request, for three seconds at most, and closes the connection. Closing
    /// it with unread data would reset it, and the response could be lost.
    static void hangUp(int peer) {
        const timeval patience{.tv_sec = 3, .tv_usec = 0};
        ::setsockopt(peer, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        ::shutdown(peer, SHUT_WR);
        char rest[4096];
        while (::read(peer, rest, sizeof rest) > 0) {
        }
        ::close(peer);
    }

    const std::string _answer;
    std::mutex _mutex;
    std::string _answerToPost;  // guarded by _mutex
    Silence _silence;
    int _listener = -1;
    int _port = 0;
    std::atomic<bool> _wasAsked = false;
    std::thread _thread;
};

}  // namespace neb::test
