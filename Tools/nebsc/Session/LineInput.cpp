#include "Session/LineInput.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

#include "Platform/FileDescriptor.h"

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

}  // namespace

std::optional<InputLine> readInputLine(Interruption& interruption) {
    Pipe wake;
    if (openPipe(wake, PipeSize::ordinary) != 0 || setNonBlocking(wake.writeEnd) != 0) {
        return InputLine{.isEnd = true};
    }
    const Interruption::Work work(interruption, [&wake] {
        // A full pipe wakes the wait as well.
        static_cast<void>(writeAll(wake.writeEnd.get(), "x", WhenFull::fail));
    });
    InputLine line;
    char byte = 0;
    while (awaitInput(wake.readEnd.get())) {
        if (::read(STDIN_FILENO, &byte, 1) != 1) {
            line.isEnd = line.text.empty();
            return line;
        }
        if (byte == '\n') {
            return line;
        }
        line.text += byte;
    }
    return std::nullopt;
}

}  // namespace neb::nebsc
