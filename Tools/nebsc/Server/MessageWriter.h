// MessageWriter.h - a queue of framed messages that a thread writes to a descriptor.
//
//     MessageWriter writer(STDOUT_FILENO, [] { … });   // called when the reader is gone
//     writer.send(R"({"jsonrpc":"2.0", …})");
//     writer.finish(std::chrono::seconds(2));
//
// send() never waits for the reader. Only if no thread can be created, send() itself writes.
#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <thread>

#include "Platform/Mutex.h"
#include "Platform/Wake.h"

namespace neb::nebsc {

/// Writes framed messages in the order of send(). Thread-safe, except the constructor, the
/// destructor and finish().
class MessageWriter {
public:
    /// Writes to `descriptor`, which the caller owns; it may be blocking. Calls `lost` once, on the
    /// writing thread, when the reader is gone or writing fails; later messages are discarded.
    MessageWriter(int descriptor, std::function<void()> lost);
    MessageWriter(const MessageWriter&) = delete;
    MessageWriter& operator=(const MessageWriter&) = delete;
    /// Discards messages that are not written yet.
    ~MessageWriter();

    /// Adds a message to the queue.
    void send(std::string_view content);

    /// Returns the number of bytes that are not written yet.
    [[nodiscard]] std::size_t waitingBytes() const;

    /// Blocks until fewer than `bytes` are waiting, the reader is gone, or `isDone` returns true.
    /// `isDone` must not block; wakeWaiting() makes it be called again.
    void waitForSpace(std::size_t bytes, const std::function<bool()>& isDone);
    void wakeWaiting();

    /// Waits until everything is written. Returns false if the reader is gone, or reads nothing
    /// during `timeout`.
    bool finish(std::chrono::milliseconds timeout);

private:
    void write();
    bool writeNext() NEB_REQUIRES(_mutex);
    [[nodiscard]] bool writeOne(std::string_view message);

    const int _descriptor;
    const std::function<void()> _lost;
    Wake _wake;  // ends the wait for the reader
    mutable Mutex _mutex;
    Condition _changed;
    std::deque<std::string> _messages NEB_GUARDED_BY(_mutex);
    std::size_t _waitingBytes NEB_GUARDED_BY(_mutex) = 0;
    bool _isEnding NEB_GUARDED_BY(_mutex) = false;
    bool _isLost NEB_GUARDED_BY(_mutex) = false;
    bool _isWriting NEB_GUARDED_BY(_mutex) = false;
    std::thread _thread;
};

}  // namespace neb::nebsc
