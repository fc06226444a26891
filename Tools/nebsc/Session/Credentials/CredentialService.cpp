#include "Session/Credentials/CredentialService.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "Platform/SignalFreeThread.h"
#include "Session/Credentials/AskpassProgram.h"
#include "Session/Credentials/PrivateFolder.h"
#include "Session/ProgramFile.h"

namespace neb::nebsc {

namespace {

constexpr std::size_t questionsAtOnce = 16;
constexpr std::size_t tokenBytes = 32;

/// Returns random bytes in hexadecimal digits; empty if the system has none.
std::string newToken() {
    const FileDescriptor random(::open("/dev/urandom", O_RDONLY | O_CLOEXEC));
    std::array<unsigned char, tokenBytes> bytes{};
    if (::read(random.get(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
        return {};
    }
    constexpr std::string_view digits = "0123456789abcdef";
    std::string token;
    for (const unsigned char byte : bytes) {
        token += digits[byte / digits.size()];
        token += digits[byte % digits.size()];
    }
    return token;
}

/// The time until a connection is accepted again after the system had no descriptor or memory for
/// it; see accept(2).
constexpr int pauseInMilliseconds = 100;

bool isShortOfResources(int error) {
    return error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM;
}

bool belongsToThisUser(int connection) {
#ifdef SO_PEERCRED
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           peer.uid == ::geteuid();
#else
    uid_t user = 0;
    gid_t group = 0;
    return ::getpeereid(connection, &user, &group) == 0 && user == ::geteuid();
#endif
}

}  // namespace

/// A connection of a process with a grant, until its end.
class CredentialService::Connection {
public:
    Connection(CredentialService& service, std::string token, int connection)
        : _service(service),
          _token(std::move(token)),
          _connection(connection),
          _context(service.enter(_token, connection)) {}
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() { _service.leave(_token, _connection); }

    /// Absent if the token is unknown.
    [[nodiscard]] const std::optional<std::string>& context() const { return _context; }

private:
    CredentialService& _service;
    const std::string _token;
    const int _connection;
    const std::optional<std::string> _context;
};

std::vector<std::string> CredentialService::Grant::variables(Precedence precedence) const {
    std::string program;
    {
        const MutexLock lock(_service._mutex);
        program = _service._folder + "/" + std::string(askpassProgramName);
    }
    std::vector<std::string> variables{"SSH_ASKPASS=" + program, "SSH_ASKPASS_REQUIRE=force",
                                       std::string(askpassTokenVariable) + "=" + _token};
    if (precedence == Precedence::beforeUsersPrograms) {
        variables.push_back("GIT_ASKPASS=" + program);
    }
    return variables;
}

std::shared_ptr<const CredentialService::Grant> CredentialService::grant(std::string context) {
    const std::string token = newToken();
    const MutexLock lock(_mutex);
    if (token.empty() || !open()) {
        return nullptr;
    }
    auto grant = std::make_shared<const Grant>(*this, token);
    _holders[token].context = std::move(context);
    return grant;
}

bool CredentialService::open() {
    if (_thread.joinable()) {
        return true;
    }
    const std::string folder = newPrivateFolder();
    if (folder.empty()) {
        return false;
    }
    _folder = folder;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = folder + "/" + std::string(askpassSocketName);
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    _listener = FileDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const std::string link = folder + "/" + std::string(askpassProgramName);
    if (::symlink(programFile().c_str(), link.c_str()) == 0 && _listener.isOpen() &&
        ::bind(_listener.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
        ::listen(_listener.get(), static_cast<int>(questionsAtOnce)) == 0) {
        _queue.emplace(questionsAtOnce);
        _thread = startSignalFreeThread([this] {
            removeAbandonedPrivateFolders();
            accept();
        });
    }
    if (!_thread.joinable()) {
        removePrivateFolder(folder);
    }
    return _thread.joinable();
}

CredentialService::~CredentialService() {
    _end.wake();
    if (_thread.joinable()) {
        _thread.join();
    }
    _queue.reset();
    const MutexLock lock(_mutex);
    if (!_folder.empty()) {
        removePrivateFolder(_folder);
    }
}

void CredentialService::accept() {
    while (true) {
        std::array<pollfd, 2> descriptors{
            {{.fd = _listener.get(), .events = POLLIN, .revents = 0},
             {.fd = _end.descriptor(), .events = POLLIN, .revents = 0}}};
        if (::poll(descriptors.data(), descriptors.size(), -1) < 0) {
            continue;
        }
        if (descriptors[1].revents != 0) {
            return;
        }
        const int connection = ::accept4(_listener.get(), nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0) {
            // Without a descriptor for it, the connection waits, and poll() would return at once.
            ::poll(&descriptors[1], 1, isShortOfResources(errno) ? pauseInMilliseconds : 0);
            continue;
        }
        _queue->addBlock([this, connection] {
            const FileDescriptor owner(connection);
            answer(connection);
        });
    }
}

/// Closes the connection without an answer if the process must not ask, or the question is
/// declined.
void CredentialService::answer(int connection) {
    if (!belongsToThisUser(connection)) {
        return;
    }
    const std::optional<AskpassMessage> message = receiveAskpassMessage(connection);
    if (!message) {
        return;
    }
    const Connection entry(*this, message->token, connection);
    if (!entry.context()) {
        return;
    }
    auto reply = _ask(credentialQuestionOf(message->prompt), *entry.context(), connection);
    if (!reply) {
        return;
    }
    std::string& value = *reply;
    if (value.find_first_of(std::string_view("\n\0", 2)) == std::string::npos) {
        static_cast<void>(sendAskpassAnswer(connection, value));
    }
    ::explicit_bzero(value.data(), value.size());
}

std::optional<std::string> CredentialService::enter(const std::string& token, int connection) {
    const MutexLock lock(_mutex);
    const auto holder = _holders.find(token);
    if (holder == _holders.end()) {
        return std::nullopt;
    }
    holder->second.connections.insert(connection);
    return holder->second.context;
}

void CredentialService::leave(const std::string& token, int connection) {
    const MutexLock lock(_mutex);
    const auto holder = _holders.find(token);
    if (holder != _holders.end()) {
        holder->second.connections.erase(connection);
    }
}

void CredentialService::revoke(const std::string& token) {
    const MutexLock lock(_mutex);
    const auto holder = _holders.find(token);
    if (holder == _holders.end()) {
        return;
    }
    for (const int connection : holder->second.connections) {
        ::shutdown(connection, SHUT_RDWR);
    }
    _holders.erase(holder);
}

}  // namespace neb::nebsc
