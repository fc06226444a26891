// FileDescriptor.h - one open file descriptor with an owner.
//
// Not safe for use by several threads at once. Every descriptor made here is close-on-exec and
// numbered 3 or higher, so that a host that runs with standard input, output or error closed
// cannot have a pipe end where a child expects its standard streams.
#pragma once

#include "Platform/Export.h"

namespace neb {

class NEB_EXPORT FileDescriptor {
public:
    FileDescriptor() = default;
    /// Takes ownership of `descriptor`; -1 means none.
    explicit FileDescriptor(int descriptor) : _descriptor(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept;
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() { close(); }

    /// The number, or -1 when nothing is open.
    [[nodiscard]] int get() const { return _descriptor; }
    [[nodiscard]] bool isOpen() const { return _descriptor >= 0; }
    /// Closes now; without effect when nothing is open. Answers 0, or the errno of what the system
    /// could not do with bytes written earlier; nothing is open in either case.
    int close();

private:
    int _descriptor = -1;
};

struct Pipe {
    FileDescriptor readEnd;
    FileDescriptor writeEnd;
};

enum class PipeSize {
    ordinary,
    /// As large as an ordinary user may have it, up to 1 MiB.
    large,
};

/// Opens a pipe into `pipe`. Answers 0, or the errno of the failure, and then leaves nothing open.
[[nodiscard]] NEB_EXPORT int openPipe(Pipe& pipe, PipeSize size);

/// Switches a descriptor to non-blocking reads and writes. Answers 0 or the errno of the failure.
[[nodiscard]] NEB_EXPORT int setNonBlocking(const FileDescriptor& descriptor);

}  // namespace neb
