#include "Session/Credentials/AskpassProgram.h"

#include <poll.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>

#include "Platform/FileDescriptor.h"
#include "Platform/PathString.h"

namespace neb::nebsc {

namespace {

constexpr std::size_t longestMessage = 65536;
constexpr std::chrono::seconds longestWait{5};
constexpr char answered = '+';

/// Sends all bytes. A broken connection raises no signal.
bool sendAll(int connection, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(count > 0 ? static_cast<std::size_t>(count) : 0);
    }
    return true;
}

FileDescriptor connectedSocket(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    FileDescriptor connection(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (path.size() >= sizeof address.sun_path || !connection.isOpen()) {
        return FileDescriptor();
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    if (::connect(connection.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        return FileDescriptor();
    }
    return connection;
}

/// Reads up to the end of the connection, and at most longestMessage bytes.
std::string receiveAll(int connection) {
    std::string bytes;
    std::array<char, 4096> buffer{};
    while (bytes.size() < longestMessage) {
        const ssize_t count = ::read(connection, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            break;
        }
        bytes.append(buffer.data(), static_cast<std::size_t>(count));
    }
    ::explicit_bzero(buffer.data(), buffer.size());
    return bytes;
}

}  // namespace

bool isAskpassProgram(const char* program) {
    return program != nullptr && lastPathComponentIn(program) == askpassProgramName;
}

int runAskpassProgram(int argc, const char* const* argv) noexcept {
    try {
        const char* token = ::getenv(std::string(askpassTokenVariable).c_str());
        const std::string folder = pathByDeletingLastComponent(argv[0]);
        const FileDescriptor connection =
            connectedSocket(folder + "/" + std::string(askpassSocketName));
        const std::string prompt = argc > 1 ? argv[1] : "";
        const std::string nul(1, '\0');
        if (token == nullptr || !connection.isOpen() ||
            !sendAll(connection.get(), token + nul + prompt + nul)) {
            return 1;
        }
        std::string reply = receiveAll(connection.get());
        if (!reply.starts_with(answered)) {
            return 1;
        }
        reply += '\n';
        const bool isPrinted = writeAll(STDOUT_FILENO, std::string_view(reply).substr(1)) == 0;
        ::explicit_bzero(reply.data(), reply.size());
        return isPrinted ? 0 : 1;
    } catch (const std::exception&) {
        return 1;
    }
}

std::optional<AskpassMessage> receiveAskpassMessage(int connection) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + longestWait;
    std::string bytes;
    std::array<char, 4096> buffer{};
    while (std::count(bytes.begin(), bytes.end(), '\0') < 2) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        pollfd readable{.fd = connection, .events = POLLIN, .revents = 0};
        if (left <= 0 || bytes.size() > longestMessage) {
            return std::nullopt;
        }
        if (::poll(&readable, 1, static_cast<int>(left)) <= 0) {
            continue;
        }
        const ssize_t count = ::read(connection, buffer.data(), buffer.size());
        if (count == 0 || (count < 0 && errno != EINTR)) {
            return std::nullopt;
        }
        bytes.append(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    const std::size_t first = bytes.find('\0');
    if (bytes.find('\0', first + 1) + 1 != bytes.size()) {
        return std::nullopt;
    }
    return AskpassMessage{.token = bytes.substr(0, first),
                          .prompt = bytes.substr(first + 1, bytes.size() - first - 2)};
}

bool sendAskpassAnswer(int connection, const std::string& answer) {
    return sendAll(connection, std::string(1, answered)) && sendAll(connection, answer);
}

}  // namespace neb::nebsc
