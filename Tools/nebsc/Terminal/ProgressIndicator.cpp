#include "Terminal/ProgressIndicator.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>

#include "Platform/SignalFreeThread.h"
#include "Terminal/TextWidth.h"

namespace neb::nebsc {

namespace {

/// Ignores failures: the work must go on without its progress indicator.
void write(const std::string& text) {
    static_cast<void>(::write(STDERR_FILENO, text.data(), text.size()) >= 0);
}

}  // namespace

ProgressIndicator::ProgressIndicator(std::string_view activity, bool isWanted)
    : _activity(activity) {
    if (isWanted && ::isatty(STDERR_FILENO) == 1) {
        _thread = startSignalFreeThread([this] { show(); });
    }
}

ProgressIndicator::~ProgressIndicator() {
    end();
}

void ProgressIndicator::end() {
    if (!_thread.joinable()) {
        return;
    }
    {
        const MutexLock lock(_mutex);
        _isEnded = true;
    }
    _end.notify_one();
    _thread.join();
}

ProgressIndicator::Count::Count(ProgressIndicator& indicator,
                                std::function<std::uint64_t()> received)
    : _indicator(indicator) {
    const MutexLock lock(indicator._mutex);
    indicator._received = std::move(received);
}

ProgressIndicator::Pause::Pause(ProgressIndicator& indicator) : _indicator(indicator) {
    const MutexLock lock(indicator._mutex);
    ++indicator._pauses;
    indicator.erase();
}

ProgressIndicator::Pause::~Pause() {
    const MutexLock lock(_indicator._mutex);
    --_indicator._pauses;
}

ProgressIndicator::Count::~Count() {
    const MutexLock lock(_indicator._mutex);
    _indicator._received = nullptr;
}

std::string ProgressIndicator::text(int seconds) const {
    const std::uint64_t bytes = _received ? _received() : 0;
    return _activity + " … " + std::to_string(seconds) + " s" +
           (bytes == 0 ? "" : ", " + textOfSize(bytes));
}

void ProgressIndicator::show() {
    const auto start = std::chrono::steady_clock::now();
    MutexLock lock(_mutex);
    for (int seconds = 1;; ++seconds) {
        if (_end.wait_until(lock, start + std::chrono::seconds(seconds),
                            [this]() NEB_REQUIRES(_mutex) { return _isEnded; })) {
            break;
        }
        if (_pauses == 0) {
            const std::string line = text(seconds);
            write("\r" + paddedTo(_width, line));
            _width = std::max(_width, columnsOf(line));
        }
    }
    erase();
}

/// Overwrites the line with blanks: a dumb terminal cannot erase it.
void ProgressIndicator::erase() {
    if (_width > 0) {
        write("\r" + std::string(_width, ' ') + "\r");
    }
    _width = 0;
}

std::string textOfSize(std::uint64_t bytes) {
    constexpr std::uint64_t thousand = 1000;
    if (bytes < thousand) {
        return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
    }
    constexpr std::array<const char*, 3> units{"kB", "MB", "GB"};
    std::size_t unit = 0;
    // Tenths are truncated, not rounded, so that the result is never "1000.0 kB".
    std::uint64_t tenths = bytes / (thousand / 10);
    while (tenths >= thousand * 10 && unit + 1 < units.size()) {
        tenths /= thousand;
        ++unit;
    }
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " " + units[unit];
}

}  // namespace neb::nebsc
