#include "LifeSign.h"

#include <unistd.h>

#include <chrono>

#include "Platform/SignalFreeThread.h"

namespace neb::nebsc {

namespace {

/// A sign that cannot be written is no reason to stop the work.
void write(const std::string& text) {
    static_cast<void>(::write(STDERR_FILENO, text.data(), text.size()) >= 0);
}

}  // namespace

LifeSign::LifeSign(std::string_view activity) : _activity(activity) {
    if (::isatty(STDERR_FILENO) == 1) {
        _thread = startSignalFreeThread([this] { show(); });
    }
}

LifeSign::~LifeSign() {
    if (!_thread.joinable()) {
        return;
    }
    {
        const std::lock_guard lock(_mutex);
        _isEnded = true;
    }
    _end.notify_one();
    _thread.join();
}

void LifeSign::show() {
    const auto start = std::chrono::steady_clock::now();
    std::size_t width = 0;
    std::unique_lock lock(_mutex);
    for (int seconds = 1;; ++seconds) {
        if (_end.wait_until(lock, start + std::chrono::seconds(seconds),
                            [this] { return _isEnded; })) {
            break;
        }
        const std::string count = std::to_string(seconds) + " s";
        // Not by a terminal's own sequence for it: a dumb one has none.
        write("\r" + _activity + " … " + count);
        constexpr std::size_t widthOfDots = 3;
        width = _activity.size() + widthOfDots + count.size();
    }
    if (width > 0) {
        write("\r" + std::string(width, ' ') + "\r");
    }
}

}  // namespace neb::nebsc
