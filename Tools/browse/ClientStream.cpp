#include "ClientStream.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>

#include "Platform/Text.h"

namespace neb::nebsc {

namespace {

using namespace std::chrono_literals;

constexpr auto timeForHead = 5s;
/// A program on this machine sends the head at once.
constexpr auto timeForHeadWhileOthersWait = 200ms;
constexpr std::string_view endOfHead = "\r\n\r\n";
constexpr auto timeForBody = 10s;
constexpr auto timeToWrite = 5s;
/// How long, and how many bytes, are read from a client that sends after the response.
constexpr auto timeToFinish = 200ms;
constexpr std::size_t mostAfterwards = std::size_t{1} << 16;

bool waitFor(int socket, short events, std::chrono::steady_clock::duration longest) {
    pollfd descriptor{.fd = socket, .events = events, .revents = 0};
    const auto milliseconds =
        std::chrono::ceil<std::chrono::milliseconds>(std::max(longest, decltype(longest)::zero()));
    int count = 0;
    do {
        count = ::poll(&descriptor, 1, static_cast<int>(milliseconds.count()));
    } while (count < 0 && errno == EINTR);
    return count > 0;
}

}  // namespace

ClientStream::ClientStream(int socket, std::size_t longestBody)
    : _socket(socket), _bodyRest(longestBody), _latest(_begin + timeForHead) {}

bool ClientStream::waitUntilReadable(Clock::time_point latest) const {
    return waitFor(_socket, POLLIN, latest - Clock::now());
}

bool ClientStream::waitForHead(const std::function<bool()>& othersWait) const {
    while (Clock::now() < _latest) {
        if (waitUntilReadable(std::min(_latest, Clock::now() + timeForHeadWhileOthersWait / 4))) {
            return true;
        }
        if (Clock::now() >= _begin + timeForHeadWhileOthersWait && othersWait()) {
            return false;
        }
    }
    return false;
}

/// Whether the head names ranges of the response. httplib would repeat the response for each of
/// them, also one that refuses the request; no response needs them.
bool ClientStream::hasRange() const {
    constexpr std::string_view name = "\nrange:";
    const auto end = _head.begin() + static_cast<std::ptrdiff_t>(_head.find(endOfHead));
    return std::search(_head.begin(), end, name.begin(), name.end(),
                       [](char one, char other) { return lowercaseASCII(one) == other; }) != end;
}

ClientStream::Head ClientStream::readHead(const std::function<bool()>& othersWait) {
    std::array<char, 4096> buffer{};
    while (_head.find(endOfHead) == std::string::npos) {
        const std::size_t room = std::min(buffer.size(), longestHead - _head.size());
        if (room == 0) {
            return Head::tooLong;
        }
        const bool isLate = !waitForHead(othersWait);
        const ssize_t count = isLate ? 0 : ::recv(_socket, buffer.data(), room, 0);
        if (count <= 0 && !_head.empty()) {
            return isLate ? Head::late : Head::incomplete;
        }
        if (count <= 0) {
            return Head::none;
        }
        _head.append(buffer.data(), static_cast<std::size_t>(count));
    }
    _latest = Clock::now() + timeForBody;
    return hasRange() ? Head::withRange : Head::complete;
}

/// A socket that is closed with unread bytes resets the connection, and the response may be lost.
void ClientStream::finish() {
    ::shutdown(_socket, SHUT_WR);
    const auto latest = Clock::now() + timeToFinish;
    std::array<char, 4096> buffer{};
    ssize_t count = 1;
    for (std::size_t sum = 0; count > 0 && sum < mostAfterwards;
         sum += static_cast<std::size_t>(count)) {
        count = waitUntilReadable(latest) ? ::recv(_socket, buffer.data(), buffer.size(), 0) : 0;
    }
}

bool ClientStream::is_readable() const {
    return _taken < _head.size() || waitUntilReadable(_latest);
}

bool ClientStream::is_writable() const {
    return waitFor(_socket, POLLOUT, timeToWrite);
}

ssize_t ClientStream::read(char* bytes, std::size_t size) {
    if (_taken < _head.size()) {
        const std::size_t count = _head.copy(bytes, size, _taken);
        _taken += count;
        return static_cast<ssize_t>(count);
    }
    const std::size_t room = std::min(size, _bodyRest);
    if (room == 0 || !waitUntilReadable(_latest)) {
        return -1;
    }
    const ssize_t count = ::recv(_socket, bytes, room, 0);
    _bodyRest -= static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    return count;
}

ssize_t ClientStream::write(const char* bytes, std::size_t size) {
    if (!is_writable()) {
        return -1;
    }
    const ssize_t count = ::send(_socket, bytes, size, MSG_NOSIGNAL | MSG_DONTWAIT);
    return count < 0 && (errno == EAGAIN || errno == EINTR) ? 0 : count;
}

/// Both ends are on the loopback interface.
void ClientStream::get_remote_ip_and_port(std::string& ip, int& port) const {
    ip = "127.0.0.1";
    port = 0;
}

void ClientStream::get_local_ip_and_port(std::string& ip, int& port) const {
    get_remote_ip_and_port(ip, port);
}

}  // namespace neb::nebsc
