#include "Interruption.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>

namespace neb::nebsc {

namespace {

/// Where the handler writes a signal's number; -1 while nobody wants to know.
std::atomic<int> wakeDescriptor = -1;
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler reads it");

/// What ends the watcher; no signal has this number.
constexpr unsigned char endOfWatch = 0;

void wakeWatcher(unsigned char byte) {
    // A pipe takes more signals than anybody sends.
    static_cast<void>(::write(wakeDescriptor, &byte, 1) == 1);
}

extern "C" void noteSignal(int signalNumber) {
    const int keptErrno = errno;
    wakeWatcher(static_cast<unsigned char>(signalNumber));
    errno = keptErrno;
}

}  // namespace

Interruption::Interruption() {
    if (openPipe(_pipe, PipeSize::ordinary) != 0) {
        return;
    }
    _watcher = std::thread([this] { watch(); });
    wakeDescriptor = _pipe.writeEnd.get();
    struct sigaction action {};
    action.sa_handler = noteSignal;
    action.sa_flags = SA_RESTART;
    for (std::size_t i = 0; i < signals.size(); ++i) {
        ::sigaction(signals[i], nullptr, &_formerActions[i]);
        if (_formerActions[i].sa_handler != SIG_IGN) {
            ::sigaction(signals[i], &action, nullptr);
        }
    }
}

Interruption::~Interruption() {
    end();
}

std::optional<int> Interruption::end() {
    if (_watcher.joinable()) {
        for (std::size_t i = 0; i < signals.size(); ++i) {
            ::sigaction(signals[i], &_formerActions[i], nullptr);
        }
        wakeWatcher(endOfWatch);
        _watcher.join();
        wakeDescriptor = -1;
    }
    return signalNumber();
}

void Interruption::watch() {
    unsigned char byte = endOfWatch;
    while (true) {
        const ssize_t count = ::read(_pipe.readEnd.get(), &byte, 1);
        if (count == 1 && byte != endOfWatch) {
            take(byte);
        } else if (count >= 0 || errno != EINTR) {
            return;
        }
    }
}

void Interruption::take(int signalNumber) {
    const std::lock_guard lock(_mutex);
    if (!_signalNumber) {
        _signalNumber = signalNumber;
    }
    if (_cancel) {
        _cancel();
    }
}

std::optional<int> Interruption::signalNumber() const {
    const std::lock_guard lock(_mutex);
    return _signalNumber;
}

Interruption::Work::Work(Interruption& interruption, std::function<void()> cancel)
    : _interruption(interruption) {
    const std::lock_guard lock(interruption._mutex);
    interruption._cancel = std::move(cancel);
    if (interruption._signalNumber) {
        interruption._cancel();
    }
}

Interruption::Work::~Work() {
    const std::lock_guard lock(_interruption._mutex);
    _interruption._cancel = nullptr;
}

}  // namespace neb::nebsc
