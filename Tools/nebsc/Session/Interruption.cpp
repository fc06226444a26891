#include "Session/Interruption.h"

#include <utility>

#include "Platform/SignalFreeThread.h"

namespace neb::nebsc {

namespace {

/// Ends the watcher thread. It is sent only to that thread; in all others it keeps its action.
constexpr int endOfWatch = SIGUSR1;

bool isIgnored(int signalNumber) {
    struct sigaction action {};
    return ::sigaction(signalNumber, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

Interruption::Interruption() {
    ::sigemptyset(&_signals);
    for (const int signalNumber : {SIGINT, SIGTERM, SIGHUP}) {
        if (!isIgnored(signalNumber)) {
            ::sigaddset(&_signals, signalNumber);
        }
    }
    ::pthread_sigmask(SIG_BLOCK, &_signals, &_formerMask);
    _watcher = startSignalFreeThread([this] { watch(); });
    if (!_watcher.joinable()) {
        ::pthread_sigmask(SIG_SETMASK, &_formerMask, nullptr);
    }
}

Interruption::~Interruption() {
    end();
}

std::optional<int> Interruption::end() {
    if (_watcher.joinable()) {
        ::pthread_kill(_watcher.native_handle(), endOfWatch);
        _watcher.join();
        ::pthread_sigmask(SIG_SETMASK, &_formerMask, nullptr);
    }
    return signalNumber();
}

void Interruption::watch() {
    sigset_t awaited = _signals;
    ::sigaddset(&awaited, endOfWatch);
    int signalNumber = 0;
    while (::sigwait(&awaited, &signalNumber) == 0 && signalNumber != endOfWatch) {
        handleSignal(signalNumber);
    }
}

void Interruption::handleSignal(int signalNumber) {
    const MutexLock lock(_mutex);
    if (!_signalNumber) {
        _signalNumber = signalNumber;
    }
    for (const std::function<void()>& cancel : _cancels) {
        cancel();
    }
}

std::optional<int> Interruption::signalNumber() const {
    const MutexLock lock(_mutex);
    return _signalNumber;
}

Interruption::Work::Work(Interruption& interruption, std::function<void()> cancel)
    : _interruption(interruption) {
    const MutexLock lock(interruption._mutex);
    _cancel = interruption._cancels.insert(interruption._cancels.end(), std::move(cancel));
    if (interruption._signalNumber) {
        (*_cancel)();
    }
}

Interruption::Work::~Work() {
    const MutexLock lock(_interruption._mutex);
    _interruption._cancels.erase(_cancel);
}

}  // namespace neb::nebsc
