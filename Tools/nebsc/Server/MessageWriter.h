// MessageWriter.h - writes framed messages to a descriptor, whoever sends them and however slowly
// they are read.
//
//     MessageWriter writer(STDOUT_FILENO, [] { … });   // called when nobody can be written to
//     writer.send(R"({"jsonrpc":"2.0", …})");
//     writer.finish(std::chrono::seconds(2));
//
// A thread of its own writes, so that send() never waits for the reader; when the system has no
// thread, send() writes. Thread-safe, but for the constructor and finish().
#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <thread>

#include "Platform/Mutex.h"
#include "Server/Wake.h"

namespace neb::nebsc {

class MessageWriter {
public:
    /// Writes to `descriptor`, which stays the caller's and may be blocking. `lost` is called once,
    /// on the thread that writes, when the reader has gone or the descriptor cannot be written;
    /// what is sent from then on goes nowhere.
    MessageWriter(int descriptor, std::function<void()> lost);
    MessageWriter(const MessageWriter&) = delete;
    MessageWriter& operator=(const MessageWriter&) = delete;
    /// Drops what is not written.
    ~MessageWriter();

    /// Adds a message to those that are to be written, in order.
    void send(std::string_view content);

    /// How many bytes wait to be written.
    [[nodiscard]] std::size_t waitingBytes() const;

    /// Waits until all is written; gives up, and answers false, when the reader has gone or takes
    /// nothing for as long as `patience`.
    bool finish(std::chrono::milliseconds patience);

private:
    void write();
    bool writeNext() NEB_REQUIRES(_mutex);
    [[nodiscard]] bool writeOne(std::string_view message);

    const int _descriptor;
    const std::function<void()> _lost;
    Wake _wake;  // of a writer that waits for the reader
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
