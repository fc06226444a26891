#include "Reply.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "Platform/ErrnoText.h"
#include "Presentation.h"

namespace neb::nebsc {

namespace {

/// Writes everything, to a descriptor that does not block too. Answers 0 or the errno of the
/// failure.
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

}  // namespace

std::string complaint(std::string_view sentence) {
    return "nebsc: " + printable(sentence) + "\n";
}

Reply refusal(std::string_view sentence, int exitStatus) {
    return {.standardOutput = {}, .standardError = complaint(sentence), .exitStatus = exitStatus};
}

int deliver(const Reply& reply) {
    int exitStatus = reply.exitStatus;
    std::string complaints = reply.standardError;
    if (const int failure = writeAll(STDOUT_FILENO, reply.standardOutput); failure != 0) {
        complaints +=
            complaint("Standard output could not be written: " + textOfErrno(failure) + ".");
        exitStatus = std::max(exitStatus, exitFailed);
    }
    // There is nobody left to tell when this fails.
    static_cast<void>(writeAll(STDERR_FILENO, complaints));
    return exitStatus;
}

}  // namespace neb::nebsc
