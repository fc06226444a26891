#include "Tuning/Question.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "Platform/FileDescriptor.h"
#include "Platform/Text.h"

namespace neb::nebsc {

namespace {

/// Returns whether input can be read; false once `wake` can be read.
bool awaitInput(int wake) {
    pollfd descriptors[] = {{.fd = wake, .events = POLLIN, .revents = 0},
                            {.fd = STDIN_FILENO, .events = POLLIN, .revents = 0}};
    while (::poll(descriptors, 2, -1) < 0) {
        if (errno != EINTR) {
            return false;
        }
    }
    return descriptors[0].revents == 0;
}

/// Returns the next line; absent if `wake` can be read before it ends.
std::optional<std::string> readLine(int wake) {
    std::string line;
    char byte = 0;
    while (awaitInput(wake)) {
        if (::read(STDIN_FILENO, &byte, 1) != 1 || byte == '\n') {
            return line;
        }
        line += byte;
    }
    return std::nullopt;
}

}  // namespace

bool canAsk() {
    return ::isatty(STDIN_FILENO) == 1 && ::isatty(STDERR_FILENO) == 1;
}

std::optional<bool> ask(Interruption& interruption, std::string_view text) {
    Pipe wake;
    if (openPipe(wake, PipeSize::ordinary) != 0 || setNonBlocking(wake.writeEnd) != 0) {
        return false;
    }
    static_cast<void>(writeAll(STDERR_FILENO, std::string(text) + " [y/N] "));
    const Interruption::Work work(interruption, [&wake] {
        // A full pipe wakes the wait as well.
        static_cast<void>(writeAll(wake.writeEnd.get(), "x", WhenFull::fail));
    });
    const std::optional<std::string> line = readLine(wake.readEnd.get());
    if (!line) {
        return std::nullopt;
    }
    const std::string answer = lowercaseASCII(trimmed(*line));
    return answer == "y" || answer == "yes";
}

}  // namespace neb::nebsc
