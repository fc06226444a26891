// Wake.h - ends a wait in poll(), from another thread.
#pragma once

#include <mutex>

#include "Platform/FileDescriptor.h"

namespace neb::nebsc {

class Wake {
public:
    Wake() { static_cast<void>(openPipe(_pipe, PipeSize::ordinary)); }

    /// What poll() finds readable (POLLIN or POLLHUP) from the first wake() on; -1, at which poll()
    /// does not look, where the system had no pipe to give.
    [[nodiscard]] int descriptor() const { return _pipe.readEnd.get(); }

    /// From any thread, any number of times.
    void wake() {
        const std::lock_guard lock(_mutex);
        _pipe.writeEnd.close();
    }

private:
    std::mutex _mutex;
    Pipe _pipe;  // its write end is guarded by _mutex; its closing is the message
};

}  // namespace neb::nebsc
