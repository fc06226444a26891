#include "Session/Deadline.h"

#include "Platform/SignalFreeThread.h"

namespace neb::nebsc {

Deadline::Deadline(Time end, std::function<void()> cancel)
    : _thread(startSignalFreeThread([this, end, cancel = std::move(cancel)] {
          MutexLock lock(_mutex);
          if (!_done.wait_until(lock, end, [this]() NEB_REQUIRES(_mutex) { return _isDone; })) {
              cancel();
          }
      })) {}

Deadline::~Deadline() {
    {
        const MutexLock lock(_mutex);
        _isDone = true;
    }
    _done.notify_one();
    if (_thread.joinable()) {
        _thread.join();
    }
}

}  // namespace neb::nebsc
