// ClientStream.h - the connection of an HTTP client that may send whatever it likes.
#pragma once

#include <httplib.h>

#include <chrono>
#include <functional>
#include <string>

namespace neb::nebsc {

/// Reads and writes a socket. Reads a bounded number of bytes in a bounded time: httplib collects a
/// line or headers of any length in memory before it checks them. Not thread-safe.
class ClientStream : public httplib::Stream {
public:
    static constexpr std::size_t longestHead = std::size_t{1} << 14;

    /// The request line and the headers. `incomplete`: the client has closed the connection.
    enum class Head { complete, none, incomplete, late, tooLong, withRange };

    /// The socket stays open. A body has at most `longestBody` bytes.
    ClientStream(int socket, std::size_t longestBody);

    /// Reads the request line and the headers, which have less time while `othersWait`.
    [[nodiscard]] Head readHead(const std::function<bool()>& othersWait);
    /// Ends the connection so that the client can read the response although it still sends.
    void finish();

    [[nodiscard]] bool is_readable() const override;
    [[nodiscard]] bool is_writable() const override;
    ssize_t read(char* bytes, std::size_t size) override;
    ssize_t write(const char* bytes, std::size_t size) override;
    void get_remote_ip_and_port(std::string& ip, int& port) const override;
    void get_local_ip_and_port(std::string& ip, int& port) const override;
    [[nodiscard]] socket_t socket() const override { return _socket; }

private:
    using Clock = std::chrono::steady_clock;

    [[nodiscard]] bool waitUntilReadable(Clock::time_point latest) const;
    [[nodiscard]] bool waitForHead(const std::function<bool()>& othersWait) const;
    [[nodiscard]] bool hasRange() const;

    int _socket;
    /// Bytes that were read and not yet taken.
    std::string _head;
    std::size_t _taken = 0;
    std::size_t _bodyRest;
    Clock::time_point _begin = Clock::now();
    Clock::time_point _latest;
};

}  // namespace neb::nebsc
