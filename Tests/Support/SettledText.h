// SettledText.h - waits for a process that is held back.
#pragma once

#include <chrono>
#include <string>
#include <thread>
#include <utility>

namespace neb::test {

/// Calls `read` until it returns the same text twice in succession, not an empty one, and returns
/// that: the progress of a process that waits at a full pipe. The time limit of Tests/run.py ends
/// an endless wait.
template <typename Read>
std::string settledText(Read read) {
    std::string former;
    std::string text = read();
    while (text.empty() || text != former) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        former = std::exchange(text, read());
    }
    return text;
}

}  // namespace neb::test
