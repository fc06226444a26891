#include "Terminal/StreamedOutput.h"

#include <limits.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "Platform/ErrnoText.h"
#include "Platform/FileDescriptor.h"
#include "Platform/SignalFreeThread.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

/// At least what an ordinary pipe holds.
constexpr std::size_t pipeCapacity = std::size_t{1} << 16;
/// The longest time for which text is held back. Most short output is complete earlier.
constexpr int longestHoldMilliseconds = 100;

bool isRegularFile(int descriptor) {
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

/// Whether poll() reports the end of the last reader.
bool hasReader(int descriptor) {
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 &&
           (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}

/// Writes the text. Returns 0 or an error number; ECANCELED if `stop` becomes readable first. A
/// descriptor that is ready takes PIPE_BUF bytes without blocking.
int writeUntil(int stop, int descriptor, std::string_view text) {
    if (isRegularFile(descriptor)) {
        return writeAll(descriptor, text);
    }
    while (!text.empty()) {
        std::array<pollfd, 2> ready{pollfd{.fd = descriptor, .events = POLLOUT, .revents = 0},
                                    pollfd{.fd = stop, .events = POLLIN, .revents = 0}};
        if (::poll(ready.data(), ready.size(), -1) < 0) {
            if (errno != EINTR) {
                return errno;
            }
            continue;
        }
        if (ready[1].revents != 0) {
            return ECANCELED;
        }
        const ssize_t count =
            ::write(descriptor, text.data(), std::min<std::size_t>(text.size(), PIPE_BUF));
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR && errno != EAGAIN) {
            return errno;
        }
    }
    return 0;
}

}  // namespace

StreamedOutput::StreamedOutput(PagerChoice chooses) : _choosesPager(std::move(chooses)) {}

StreamedOutput::~StreamedOutput() {
    stopHoldTimer();
    stopWatching();
}

// ---- writing ----------------------------------------------------------------------------------

bool StreamedOutput::write(std::string_view text) {
    const MutexLock lock(_writing);
    return writeText(text);
}

bool StreamedOutput::writeText(std::string_view text) {
    if (!isWanted() || text.empty()) {
        _hasDiscardedText = _hasDiscardedText || (_isStopped && !text.empty());
        return isWanted();
    }
    if (_pager) {
        writeToPager(text);
    } else if (_isOpen) {
        writeDirectly(text);
    } else if (_choosesPager && canHavePager(STDOUT_FILENO)) {
        hold(text);
    } else {
        openFor(text, false);
    }
    return isWanted();
}

void StreamedOutput::stop() {
    _isStopped = true;
    _stop.wake();
}

void StreamedOutput::hold(std::string_view text) {
    _heldText += text;
    if (needsPager(STDOUT_FILENO, _heldText)) {
        openFor(std::exchange(_heldText, {}), true);
    } else {
        startHoldTimer();
    }
}

void StreamedOutput::startHoldTimer() {
    if (_isReaderObserved && !_holdTimer.joinable()) {
        _endOfHold.emplace();
        _holdTimer = startSignalFreeThread([this] { endHoldInTime(); });
    }
}

void StreamedOutput::stopHoldTimer() {
    if (_holdTimer.joinable()) {
        _endOfHold->wake();
        _holdTimer.join();
    }
}

void StreamedOutput::endHoldInTime() {
    pollfd end{.fd = _endOfHold->descriptor(), .events = POLLIN, .revents = 0};
    if (::poll(&end, 1, longestHoldMilliseconds) != 0) {
        return;
    }
    const MutexLock lock(_writing);
    try {
        if (!_heldText.empty() && isWanted()) {
            openFor(std::exchange(_heldText, {}), true);
        }
    } catch (...) {  // nothing else than memory can be missing
        _failure = ENOMEM;
    }
}

/// Opens the output and writes its first text.
void StreamedOutput::openFor(std::string_view text, bool throughPager) {
    const auto command = throughPager ? _choosesPager() : std::optional<std::string>();
    _isOpen = true;
    if (command) {
        openPager(*command);
        writeToPager(text);
    } else {
        openDirectly();
        writeDirectly(text);
    }
}

void StreamedOutput::openDirectly() {
    _ignoredSignals.emplace(std::vector<int>{SIGPIPE});
    if (hasReader(STDOUT_FILENO)) {
        startWatching(STDOUT_FILENO);
    }
}

void StreamedOutput::openPager(const std::string& command) {
    _pagerCommand = command;
    _unreadText.emplace();
    _pager.emplace(command);
    if (_pager->input() >= 0) {
        startWatching(_pager->input());
    }
}

/// Returns whether the descriptor still has a reader.
bool StreamedOutput::writeTo(int descriptor, std::string_view text) {
    const int failure = _isReaderObserved ? writeUntil(_stop.descriptor(), descriptor, text)
                                          : writeAll(descriptor, text);
    if (failure == ECANCELED) {
        _hasDiscardedText = true;
    } else if (failure != 0 && failure != EPIPE) {
        _failure = failure;
    }
    return failure != EPIPE;
}

void StreamedOutput::writeToPager(std::string_view text) {
    if (_unreadText) {
        _unreadText->append(text);
    }
    if (_pager->input() < 0 || !writeTo(_pager->input(), text)) {
        endPager();
    } else if (_unreadText && _unreadText->size() > pipeCapacity) {
        _unreadText.reset();
    }
}

void StreamedOutput::writeDirectly(std::string_view text) {
    if (!writeTo(STDOUT_FILENO, text)) {
        loseReader();
    }
}

// ---- the end ----------------------------------------------------------------------------------

/// Shows what a pager that could not be executed has not shown.
void StreamedOutput::endPager() {
    stopWatching();
    const bool hasRun = _pager->waitForEnd();
    _pager.reset();
    if (hasRun) {
        loseReader();
        return;
    }
    _diagnostic = diagnostic("The pager " + inQuotes(_pagerCommand) +
                             " could not be started; the output is shown without it.");
    openDirectly();
    writeDirectly(*std::exchange(_unreadText, std::string()));
}

void StreamedOutput::finish(CommandOutput& output) {
    stopHoldTimer();
    if (!_heldText.empty()) {
        openFor(std::exchange(_heldText, {}), false);
    }
    if (_pager) {
        endPager();
    }
    stopWatching();
    output.standardError += _diagnostic;
    if (hasFailed()) {
        output.standardError +=
            diagnostic("Standard output could not be written: " + textOfErrno(_failure) + ".");
        output.exitStatus = std::max(output.exitStatus, exitFailed);
    }
}

// ---- the reader -------------------------------------------------------------------------------

void StreamedOutput::loseReader() {
    const MutexLock lock(_mutex);
    if (!_hasLostReader.exchange(true) && _left) {
        _left();
    }
}

void StreamedOutput::startWatching(int descriptor) {
    stopWatching();
    if (_isReaderObserved && _endOfWatch.emplace().descriptor() >= 0) {
        _watcher = startSignalFreeThread([this, descriptor] { watch(descriptor); });
    }
}

void StreamedOutput::stopWatching() {
    if (_watcher.joinable()) {
        _endOfWatch->wake();
        _watcher.join();
    }
}

void StreamedOutput::watch(int descriptor) {
    std::array<pollfd, 2> ready{
        pollfd{.fd = descriptor, .events = 0, .revents = 0},
        pollfd{.fd = _endOfWatch->descriptor(), .events = POLLIN, .revents = 0}};
    while (::poll(ready.data(), ready.size(), -1) < 0 && errno == EINTR) {
    }
    if (ready[1].revents == 0 && (!_pager || _pager->waitForProcess())) {
        loseReader();
    }
}

StreamedOutput::Reader::Reader(StreamedOutput& output, std::function<void()> left)
    : _output(output) {
    output._isReaderObserved = true;
    const MutexLock lock(output._mutex);
    output._left = std::move(left);
}

StreamedOutput::Reader::~Reader() {
    _output.stopHoldTimer();
    _output._isReaderObserved = false;
    const MutexLock lock(_output._mutex);
    _output._left = nullptr;
}

}  // namespace neb::nebsc
