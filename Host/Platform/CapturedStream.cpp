#include "Platform/CapturedStream.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace neb {

namespace {

constexpr std::size_t pieceSize = 1U << 16;
constexpr int piecesPerTurn = 16;

}  // namespace

bool CapturedStream::readPiece(std::size_t most) {
    std::array<char, pieceSize> piece;
    ssize_t count = 0;
    do {
        count = ::read(_readEnd.get(), piece.data(), std::min(most, piece.size()));
    } while (count < 0 && errno == EINTR);
    if (count > 0) {
        _bytes.append(piece.data(), static_cast<std::size_t>(count));
        return true;
    }
    if (count == 0 || errno != EAGAIN) {
        _readEnd.close();
    }
    return false;
}

void CapturedStream::readAvailable() {
    for (int i = 0; i < piecesPerTurn && readPiece(pieceSize); ++i) {
    }
}

bool CapturedStream::readRestAndClose() {
    int left = 0;
    if (isOpen() && ::ioctl(_readEnd.get(), FIONREAD, &left) == 0) {
        const std::size_t target = _bytes.size() + static_cast<std::size_t>(std::max(left, 0));
        while (_bytes.size() < target && readPiece(target - _bytes.size())) {
        }
        // One look further: it may be the end that was missing.
        readPiece(1);
    }
    const bool wasHeld = isOpen();
    _readEnd.close();
    return wasHeld;
}

}  // namespace neb
