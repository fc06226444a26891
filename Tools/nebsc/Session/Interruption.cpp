#include "Session/Interruption.h"

#include <utility>

#include "Platform/SignalFreeThread.h"

namespace neb::nebsc {

namespace {

/// Ends the watcher thread. It is sent only to that thread; in all others it keeps its action.
constexpr int endOfWatch = SIGUSR1;
/// No signal: the time limit has passed.
constexpr int endOfTime = -1;

bool isIgnored(int signalNumber) {
    struct sigaction action {};
    return ::sigaction(signalNumber, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

Interruption::Interruption(std::optional<std::chrono::milliseconds> timeLimit)
    : _timeLimit(timeLimit) {
    ::sigemptyset(&_signals);
    for (const int signalNumber : {SIGINT, SIGQUIT, SIGTERM, SIGHUP}) {
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
    bool isTimeLimited = _timeLimit.has_value();
    for (int signalNumber = 0; signalNumber != endOfWatch;) {
        if (isTimeLimited) {
            signalNumber = waitUntilEndOfTime(awaited);
            isTimeLimited = signalNumber != endOfTime;
        } else if (::sigwait(&awaited, &signalNumber) != 0) {
            return;
        }
        if (signalNumber == endOfTime) {
            handleEndOfTime();
        } else if (signalNumber != endOfWatch) {
            handleSignal(signalNumber);
        }
    }
}

/// Returns the next signal, or endOfTime.
int Interruption::waitUntilEndOfTime(const sigset_t& awaited) const {
    constexpr auto perSecond = std::chrono::nanoseconds(std::chrono::seconds(1)).count();
    int signalNumber = -1;
    while (signalNumber < 0) {
        const auto left = std::chrono::nanoseconds(_start + *_timeLimit - Clock::now()).count();
        if (left <= 0) {
            return endOfTime;
        }
        const timespec time{.tv_sec = left / perSecond, .tv_nsec = left % perSecond};
        signalNumber = ::sigtimedwait(&awaited, nullptr, &time);
    }
    return signalNumber;
}

void Interruption::handleEndOfTime() {
    const MutexLock lock(_mutex);
    _isTimeUp = true;
    for (const auto& cancel : _cancels) {
        cancel();
    }
}

void Interruption::handleSignal(int signalNumber) {
    const MutexLock lock(_mutex);
    const bool isFromKeyboard = signalNumber == SIGINT || signalNumber == SIGQUIT;
    if (isFromKeyboard && _terminalLoans > 0) {
        return;
    }
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

bool Interruption::hasOccurred() const {
    const MutexLock lock(_mutex);
    return _signalNumber || _isTimeUp;
}

std::optional<std::chrono::milliseconds> Interruption::exceededTimeLimit() const {
    const MutexLock lock(_mutex);
    return _isTimeUp && !_signalNumber ? _timeLimit : std::nullopt;
}

Interruption::Work::Work(Interruption& interruption, std::function<void()> cancel)
    : _interruption(interruption) {
    const MutexLock lock(interruption._mutex);
    _cancel = interruption._cancels.insert(interruption._cancels.end(), std::move(cancel));
    if (interruption._signalNumber || interruption._isTimeUp) {
        (*_cancel)();
    }
}

Interruption::Work::~Work() {
    const MutexLock lock(_interruption._mutex);
    _interruption._cancels.erase(_cancel);
}

Interruption::TerminalLoan::TerminalLoan(Interruption& interruption) : _interruption(interruption) {
    const MutexLock lock(_interruption._mutex);
    ++_interruption._terminalLoans;
}

Interruption::TerminalLoan::~TerminalLoan() {
    const MutexLock lock(_interruption._mutex);
    --_interruption._terminalLoans;
}

}  // namespace neb::nebsc
