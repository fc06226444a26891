// CapturedStream.h - the data that a child writes to one pipe. Inside the host library only.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Platform/Data.h"
#include "Platform/FileDescriptor.h"

namespace neb {

/// Reads one pipe without blocking and collects the data. Not thread-safe.
class CapturedStream {
public:
    /// How much of the data is kept.
    enum class Keeping {
        everything,
        /// Of more than 8 MiB the beginning and the end, each about 4 MiB, as endsOf() cuts them.
        ends
    };

    /// No pipe: not open and without data.
    CapturedStream() = default;
    /// Takes ownership of `readEnd`, which must be non-blocking.
    explicit CapturedStream(FileDescriptor readEnd, Keeping keeping = Keeping::everything)
        : _readEnd(std::move(readEnd)), _keeping(keeping) {}

    /// The descriptor to poll, -1 after the end of the data.
    [[nodiscard]] int descriptor() const { return _readEnd.get(); }
    [[nodiscard]] bool isOpen() const { return _readEnd.isOpen(); }

    /// Reads what is available, but at most about 1 MiB, so that other streams are read as well.
    void readAvailable();
    /// Whether the last readAvailable() read everything that was there.
    [[nodiscard]] bool isDrained() const { return _isDrained; }
    /// Forgets the first `count` bytes of data().
    void removeFirst(std::size_t count) { _data.removeFirst(count); }
    /// Reads what the pipe contains now, and closes it. Returns whether another process still has
    /// the write end open, so that more data could follow.
    bool readRestAndClose();

    /// The number of bytes that were read, kept or not.
    [[nodiscard]] std::uint64_t arrived() const { return _arrived; }
    /// Whether some of it was left out. Keeping::ends decides that in takeData().
    [[nodiscard]] bool wasCut() const { return _wasCut; }
    /// Returns the data so far; of Keeping::ends, perhaps more than is kept. Views of its bytes are
    /// valid until the next read.
    [[nodiscard]] const Data& data() const { return _data.data(); }
    /// Returns the data and leaves none here.
    [[nodiscard]] Data takeData();

private:
    /// Reads at most `limit` bytes. Returns false if nothing is available or the data has ended.
    bool readSome(std::size_t limit);
    /// If there are more than `limit` bytes, keeps only the ends.
    void keepEndsBeyond(std::size_t limit);

    FileDescriptor _readEnd;
    Keeping _keeping = Keeping::everything;
    GrowingData _data;
    std::uint64_t _arrived = 0;
    bool _wasCut = false;
    bool _isDrained = true;
};

}  // namespace neb
