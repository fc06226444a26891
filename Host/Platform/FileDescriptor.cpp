#include "Platform/FileDescriptor.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace neb {

namespace {

constexpr int firstFreeDescriptor = 3;
constexpr int largeCapacity = 1 << 20;

/// Moves a descriptor to a number above the standard streams. Returns 0 or an error number.
int moveAboveStandardStreams(FileDescriptor& descriptor) {
    if (descriptor.get() >= firstFreeDescriptor) {
        return 0;
    }
    const int lifted = ::fcntl(descriptor.get(), F_DUPFD_CLOEXEC, firstFreeDescriptor);
    if (lifted < 0) {
        return errno;
    }
    descriptor = FileDescriptor(lifted);
    return 0;
}

}  // namespace

FileDescriptor::FileDescriptor(FileDescriptor&& other) noexcept
    : _descriptor(std::exchange(other._descriptor, -1)) {}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
    if (this != &other) {
        close();
        _descriptor = std::exchange(other._descriptor, -1);
    }
    return *this;
}

int FileDescriptor::close() {
    if (_descriptor < 0) {
        return 0;
    }
    // Not repeated on EINTR: Linux has closed the descriptor, and another thread may have reused
    // it.
    const bool isClosed = ::close(std::exchange(_descriptor, -1)) == 0;
    return isClosed || errno == EINTR ? 0 : errno;
}

int openPipe(Pipe& pipe, PipeSize size) {
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        return errno;
    }
    Pipe opened{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
    for (FileDescriptor* end : {&opened.readEnd, &opened.writeEnd}) {
        if (const int failure = moveAboveStandardStreams(*end); failure != 0) {
            return failure;
        }
    }
#ifdef F_SETPIPE_SZ
    // This fails when the user has used up the memory for pipes. A small pipe is only slower.
    if (size == PipeSize::large) {
        static_cast<void>(::fcntl(opened.writeEnd.get(), F_SETPIPE_SZ, largeCapacity));
    }
#endif
    pipe = std::move(opened);
    return 0;
}

int openMemoryFile(FileDescriptor& file, std::string_view bytes) {
    FileDescriptor opened(::memfd_create("input", MFD_CLOEXEC));
    if (!opened.isOpen()) {
        return errno;
    }
    int failure = moveAboveStandardStreams(opened);
    if (failure == 0) {
        failure = writeAll(opened.get(), bytes);
    }
    if (failure == 0 && ::lseek(opened.get(), 0, SEEK_SET) != 0) {
        failure = errno;
    }
    if (failure == 0) {
        file = std::move(opened);
    }
    return failure;
}

int setNonBlocking(const FileDescriptor& descriptor) {
    const int flags = ::fcntl(descriptor.get(), F_GETFL);
    if (flags < 0 || ::fcntl(descriptor.get(), F_SETFL, flags | O_NONBLOCK) != 0) {
        return errno;
    }
    return 0;
}

int writeAll(int descriptor, std::string_view bytes, WhenFull whenFull) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno == EAGAIN && whenFull == WhenFull::wait) {
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

}  // namespace neb
