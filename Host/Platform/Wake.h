// Wake.h - a descriptor that ends a poll() from another thread.
#pragma once

#include <utility>

#include "Platform/FileDescriptor.h"
#include "Platform/Mutex.h"

namespace neb {

/// A pipe that becomes readable once wake() is called. Thread-safe.
class Wake {
public:
    Wake() {
        Pipe pipe;
        static_cast<void>(openPipe(pipe, PipeSize::ordinary));
        _readEnd = std::move(pipe.readEnd);
        _writeEnd = std::move(pipe.writeEnd);
    }

    /// Returns the descriptor that poll() reports as readable (POLLIN or POLLHUP) after the first
    /// wake(). It is -1, which poll() ignores, if no pipe could be created.
    [[nodiscard]] int descriptor() const { return _readEnd.get(); }

    /// Makes the descriptor readable. Can be called repeatedly.
    void wake() {
        const MutexLock lock(_mutex);
        _writeEnd.close();
    }

private:
    Mutex _mutex;
    FileDescriptor _readEnd;
    FileDescriptor _writeEnd NEB_GUARDED_BY(_mutex);  // closed by wake()
};

}  // namespace neb
