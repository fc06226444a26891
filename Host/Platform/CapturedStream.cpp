#include "Platform/CapturedStream.h"

#include <sys/ioctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>

namespace neb {

namespace {

constexpr std::size_t pieceSize = 1U << 16;
constexpr int piecesPerTurn = 16;

/// From this length on, an output may become any length.
constexpr std::size_t longOutput = 1U << 20;
/// Room that few outputs outgrow. It is address space alone until something is written there.
constexpr std::size_t plentyOfRoom = 1U << 30;

/// Whether address space is there for the taking.
bool isAddressSpaceFree() {
    rlimit limit{};
    return sizeof(void*) > 4 && ::getrlimit(RLIMIT_AS, &limit) == 0 &&
           limit.rlim_cur == RLIM_INFINITY;
}

/// Sees to it that a long output is not copied again and again as it grows: that costs time, and
/// leaves holes of all sizes in the memory beside what is made of it meanwhile.
void makeRoom(Data& bytes, std::size_t count) {
    if (bytes.size() + count <= bytes.capacity() || bytes.size() < longOutput ||
        bytes.size() + count > plentyOfRoom || !isAddressSpaceFree()) {
        return;
    }
    try {
        bytes.reserve(plentyOfRoom);
    } catch (const std::bad_alloc&) {
        // Then it grows as any string does.
    }
}

}  // namespace

bool CapturedStream::readPiece(std::size_t most) {
    std::array<char, pieceSize> piece;
    ssize_t count = 0;
    do {
        count = ::read(_readEnd.get(), piece.data(), std::min(most, piece.size()));
    } while (count < 0 && errno == EINTR);
    if (count > 0) {
        makeRoom(_bytes, static_cast<std::size_t>(count));
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
