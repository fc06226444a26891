#include "Terminal/Output.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace neb::nebsc {

int writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno == EAGAIN) {
            pollfd writable{.fd = descriptor, .events = POLLOUT, .revents = 0};
            if (::poll(&writable, 1, -1) < 0 && errno != EINTR) {
                return errno;
            }
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

}  // namespace neb::nebsc
