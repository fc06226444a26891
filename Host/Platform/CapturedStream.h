// CapturedStream.h - collects what a child writes into one pipe. Inside the host library only.
#pragma once

#include "Platform/Data.h"
#include "Platform/FileDescriptor.h"

namespace neb {

class CapturedStream {
public:
    /// No stream: at its end from the beginning, with nothing collected.
    CapturedStream() = default;
    /// Reads from `readEnd`, which must be non-blocking.
    explicit CapturedStream(FileDescriptor readEnd) : _readEnd(std::move(readEnd)) {}

    /// The descriptor to poll, -1 once the end was reached.
    [[nodiscard]] int descriptor() const { return _readEnd.get(); }
    [[nodiscard]] bool isOpen() const { return _readEnd.isOpen(); }

    /// Takes what can be had without waiting, up to a share that leaves other streams their turn.
    void readAvailable();
    /// Takes what lies in the pipe now, whoever may go on writing, and closes. Answers whether
    /// somebody still holds the other end, so that more might have come.
    bool readRestAndClose();

    /// What was read so far; its bytes are good until the next read.
    [[nodiscard]] const Data& data() const { return _data.data(); }
    /// Moves the bytes out.
    [[nodiscard]] Data takeData() { return _data.take(); }

private:
    /// Reads at most `most` bytes; false when there is nothing to read now or ever.
    bool readPiece(std::size_t most);

    FileDescriptor _readEnd;
    GrowingData _data;
};

}  // namespace neb
