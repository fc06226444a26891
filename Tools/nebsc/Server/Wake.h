// Wake.h - ends a wait in poll(), from another thread.
#pragma once

#include <utility>

#include "Platform/FileDescriptor.h"
#include "Platform/Mutex.h"

namespace neb::nebsc {

class Wake {
public:
    Wake() {
        Pipe pipe;
        static_cast<void>(openPipe(pipe, PipeSize::ordinary));
        _readEnd = std::move(pipe.readEnd);
        _writeEnd = std::move(pipe.writeEnd);
    }

    /// What poll() finds readable (POLLIN or POLLHUP) from the first wake() on; -1, at which poll()
    /// does not look, where the system had no pipe to give.
    [[nodiscard]] int descriptor() const { return _readEnd.get(); }

    /// From any thread, any number of times.
    void wake() {
        const MutexLock lock(_mutex);
        _writeEnd.close();
    }

private:
    Mutex _mutex;
    FileDescriptor _readEnd;
    FileDescriptor _writeEnd NEB_GUARDED_BY(_mutex);  // its closing is the message
};

}  // namespace neb::nebsc
