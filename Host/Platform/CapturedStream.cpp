#include "Platform/CapturedStream.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace neb {

namespace {

/// What a pipe holds as a rule.
constexpr std::size_t pieceSize = 1U << 16;
/// What a stream may take before another has its turn.
constexpr std::size_t shareOfTurn = 1U << 20;

}  // namespace

bool CapturedStream::readPiece(std::size_t most) {
    char* const place = _data.roomFor(std::min(most, pieceSize));
    ssize_t count = 0;
    do {
        count = ::read(_readEnd.get(), place, std::min(most, _data.room()));
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
    while (data().size() - former < shareOfTurn && readPiece(shareOfTurn)) {
    }
}

bool CapturedStream::readRestAndClose() {
    int left = 0;
    if (isOpen() && ::ioctl(_readEnd.get(), FIONREAD, &left) == 0) {
        const std::size_t target = data().size() + static_cast<std::size_t>(std::max(left, 0));
        while (data().size() < target && readPiece(target - data().size())) {
        }
        // One look further: it may be the end that was missing.
        readPiece(1);
    }
    const bool wasHeld = isOpen();
    _readEnd.close();
    return wasHeld;
}

}  // namespace neb
