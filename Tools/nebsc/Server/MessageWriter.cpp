#include "Server/MessageWriter.h"

#include <limits.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "Platform/SignalFreeThread.h"
#include "Server/MessageDecoder.h"

namespace neb::nebsc {

MessageWriter::MessageWriter(int descriptor, std::function<void()> lost)
    : _descriptor(descriptor), _lost(std::move(lost)) {
    _thread = startSignalFreeThread([this] { write(); });
}

MessageWriter::~MessageWriter() {
    {
        const MutexLock lock(_mutex);
        _isEnding = true;
    }
    _wake.wake();
    _changed.notify_all();
    if (_thread.joinable()) {
        _thread.join();
    }
}

void MessageWriter::send(std::string_view content) {
    {
        const MutexLock lock(_mutex);
        if (_isLost) {
            return;
        }
        _messages.push_back(MessageDecoder::framed(content));
        _waitingBytes += _messages.back().size();
        if (!_thread.joinable() && !_isWriting) {
            while (!_messages.empty() && writeNext()) {
            }
            return;
        }
    }
    _changed.notify_all();
}

std::size_t MessageWriter::waitingBytes() const {
    const MutexLock lock(_mutex);
    return _waitingBytes;
}

void MessageWriter::waitForSpace(std::size_t bytes, const std::function<bool()>& isDone) {
    MutexLock lock(_mutex);
    _changed.wait(lock, [this, bytes, &isDone]() NEB_REQUIRES(_mutex) {
        return _waitingBytes < bytes || _isLost || isDone();
    });
}

void MessageWriter::wakeWaiting() {
    // Locked, so that the change is not missed between the check of waitForSpace() and its wait.
    const MutexLock lock(_mutex);
    _changed.notify_all();
}

bool MessageWriter::finish(std::chrono::milliseconds timeout) {
    MutexLock lock(_mutex);
    while (_waitingBytes > 0 && !_isLost) {
        const std::size_t former = _waitingBytes;
        const bool hasMoved = _changed.wait_for(
            lock, timeout,
            [this, former]() NEB_REQUIRES(_mutex) { return _waitingBytes < former || _isLost; });
        if (!hasMoved) {
            return false;
        }
    }
    return !_isLost;
}

void MessageWriter::write() {
    MutexLock lock(_mutex);
    while (true) {
        _changed.wait(lock,
                      [this]() NEB_REQUIRES(_mutex) { return _isEnding || !_messages.empty(); });
        if (_isEnding) {
            return;
        }
        if (!writeNext()) {
            return;
        }
    }
}

/// Writes the oldest message. Unlocks the mutex meanwhile. Returns false if the message could not
/// be written.
bool MessageWriter::writeNext() {
    const std::string message = std::move(_messages.front());
    _messages.pop_front();
    _isWriting = true;
    _mutex.unlock();
    const bool isWritten = writeOne(message);
    _mutex.lock();
    _isWriting = false;
    if (isWritten) {
        return true;
    }
    const bool isReaderGone = !_isEnding;
    _isLost = true;
    _messages.clear();
    _waitingBytes = 0;
    _mutex.unlock();
    _changed.notify_all();
    if (isReaderGone) {
        _lost();
    }
    _mutex.lock();
    return false;
}

/// Never blocks in write(): a pipe that poll() reports as writable takes PIPE_BUF bytes.
bool MessageWriter::writeOne(std::string_view message) {
    while (!message.empty()) {
        std::array<pollfd, 2> descriptors{
            {{.fd = _descriptor, .events = POLLOUT, .revents = 0},
             {.fd = _wake.descriptor(), .events = POLLIN, .revents = 0}}};
        if (::poll(descriptors.data(), descriptors.size(), -1) < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        if (descriptors[1].revents != 0) {
            return false;
        }
        const std::size_t size = std::min<std::size_t>(message.size(), PIPE_BUF);
        const ssize_t count = ::write(_descriptor, message.data(), size);
        if (count < 0 && errno != EAGAIN && errno != EINTR) {
            return false;
        }
        if (count > 0) {
            message.remove_prefix(static_cast<std::size_t>(count));
            {
                const MutexLock lock(_mutex);
                _waitingBytes -= static_cast<std::size_t>(count);
            }
            _changed.notify_all();
        }
    }
    return true;
}

}  // namespace neb::nebsc
