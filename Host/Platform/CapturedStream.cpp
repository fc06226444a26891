#include "Platform/CapturedStream.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "Platform/TextEnds.h"

namespace neb {

namespace {

constexpr std::size_t usualPipeCapacity = 1U << 16;
constexpr std::size_t limitPerTurn = 1U << 20;
/// The length of both ends together.
constexpr std::size_t longestEnds = 1U << 23;

}  // namespace

bool CapturedStream::readSome(std::size_t limit) {
    char* const room = _data.roomFor(std::min(limit, usualPipeCapacity));
    ssize_t count = 0;
    do {
        count = ::read(_readEnd.get(), room, std::min(limit, _data.room()));
    } while (count < 0 && errno == EINTR);
    if (count > 0) {
        _data.add(static_cast<std::size_t>(count));
        _arrived += static_cast<std::uint64_t>(count);
        // Twice the limit, so that the ends are copied rarely.
        keepEndsBeyond(2 * longestEnds);
        return true;
    }
    if (count == 0 || errno != EAGAIN) {
        _readEnd.close();
    }
    return false;
}

void CapturedStream::keepEndsBeyond(std::size_t limit) {
    if (_keeping == Keeping::everything || data().size() <= limit) {
        return;
    }
    const TextEnds ends = endsOf(data().bytes(), longestEnds);
    GrowingData kept;
    for (const std::string_view part : {ends.first, ends.last}) {
        std::copy(part.begin(), part.end(), kept.roomFor(part.size()));
        kept.add(part.size());
    }
    _data = std::move(kept);
    _wasCut = true;
}

Data CapturedStream::takeData() {
    keepEndsBeyond(longestEnds);
    return _data.take();
}

void CapturedStream::readAvailable() {
    const std::uint64_t former = _arrived;
    _isDrained = false;
    while (!_isDrained && _arrived - former < limitPerTurn) {
        _isDrained = !readSome(limitPerTurn);
    }
}

bool CapturedStream::readRestAndClose() {
    int left = 0;
    if (isOpen() && ::ioctl(_readEnd.get(), FIONREAD, &left) == 0) {
        const std::uint64_t target = _arrived + static_cast<std::uint64_t>(std::max(left, 0));
        while (_arrived < target && readSome(target - _arrived)) {
        }
        // The next read may report the end.
        readSome(1);
    }
    const bool wasHeld = isOpen();
    _readEnd.close();
    return wasHeld;
}

}  // namespace neb
