// FileDescriptor.h - an open file descriptor with an owner, and pipes.
#pragma once

#include <string_view>

#include "Platform/Export.h"

namespace neb {

/// Owns a file descriptor and closes it in the destructor. Movable, not copyable. Not thread-safe.
class NEB_EXPORT FileDescriptor {
public:
    /// Nothing is open.
    FileDescriptor() = default;
    /// Takes ownership of `descriptor`; -1 means that nothing is open.
    explicit FileDescriptor(int descriptor) : _descriptor(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept;
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() { close(); }

    /// The number of the descriptor, -1 if nothing is open.
    [[nodiscard]] int get() const { return _descriptor; }
    [[nodiscard]] bool isOpen() const { return _descriptor >= 0; }
    /// Closes the descriptor if it is open. Returns 0, or the error number of a failure to write
    /// earlier bytes. Nothing is open afterwards in either case.
    int close();

private:
    int _descriptor = -1;
};

/// Both ends of a pipe.
struct Pipe {
    FileDescriptor readEnd;
    FileDescriptor writeEnd;
};

enum class PipeSize {
    ordinary,
    /// As large as an ordinary user may make it, up to 1 MiB.
    large,
};

/// Opens a pipe. Returns 0 or an error number; after an error nothing is open. Both ends are
/// close-on-exec and numbered 3 or higher, so they never take the number of a standard stream that
/// the host has closed. Thread-safe.
[[nodiscard]] NEB_EXPORT int openPipe(Pipe& pipe, PipeSize size);

/// Makes reads and writes non-blocking. Returns 0 or an error number.
[[nodiscard]] NEB_EXPORT int setNonBlocking(const FileDescriptor& descriptor);

/// Opens a file in memory that holds the bytes, to be read from its start. Returns 0 or an error
/// number; after an error nothing is open. Close-on-exec and numbered 3 or higher. Thread-safe.
[[nodiscard]] NEB_EXPORT int openMemoryFile(FileDescriptor& file, std::string_view bytes);

/// What writeAll() does when a non-blocking descriptor accepts no more bytes.
enum class WhenFull { wait, fail };

/// Writes all bytes. Returns 0 or an error number; EAGAIN for WhenFull::fail. Thread-safe, but
/// concurrent writes to the same descriptor may be mixed.
[[nodiscard]] NEB_EXPORT int writeAll(int descriptor, std::string_view bytes,
                                      WhenFull whenFull = WhenFull::wait);

}  // namespace neb
