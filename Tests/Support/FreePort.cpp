#include "Support/FreePort.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

namespace neb::test {

int freePort() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    const int probe = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool isBound = ::bind(probe, reinterpret_cast<sockaddr*>(&address), length) == 0 &&
                         ::getsockname(probe, reinterpret_cast<sockaddr*>(&address), &length) == 0;
    ::close(probe);
    if (!isBound) {
        throw std::runtime_error("no free port");
    }
    return ntohs(address.sin_port);
}

}  // namespace neb::test
