#include "Platform/CapturedStream.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace neb {

namespace {

constexpr std::size_t usualPipeCapacity = 1U << 16;
constexpr std::size_t limitPerTurn = 1U << 20;

}  // namespace

bool CapturedStream::readSome(std::size_t limit) {
    char* const room = _data.roomFor(std::min(limit, usualPipeCapacity));
    ssize_t count = 0;
    do {
        count = ::read(_readEnd.get(), room, std::min(limit, _data.room()));
    } while (count < 0 && errno == EINTR);
    if (count > 0) {
        _data.add(static_cast<std::size_t>(count));
        return true;
    }
    if (count == 0 || errno != EAGAIN) {
        _readEnd.close();
    }
    return false;
}

void CapturedStream::readAvailable() {
    const std::size_t former = data().size();
    _isDrained = false;
    while (!_isDrained && data().size() - former < limitPerTurn) {
        _isDrained = !readSome(limitPerTurn);
    }
}

bool CapturedStream::readRestAndClose() {
    int left = 0;
    if (isOpen() && ::ioctl(_readEnd.get(), FIONREAD, &left) == 0) {
        const std::size_t target = data().size() + static_cast<std::size_t>(std::max(left, 0));
        while (data().size() < target && readSome(target - data().size())) {
        }
        // The next read may report the end.
        readSome(1);
    }
    const bool wasHeld = isOpen();
    _readEnd.close();
    return wasHeld;
}

}  // namespace neb
