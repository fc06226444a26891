// IgnoredSignals.h - a scope in which signals are ignored.
#pragma once

#include <signal.h>

#include <cstddef>
#include <utility>
#include <vector>

namespace neb::nebsc {

/// Returns those of the signals that are not ignored: they have their default action or a handler.
[[nodiscard]] inline std::vector<int> signalsNotIgnored(std::vector<int> signals) {
    std::erase_if(signals, [](int signalNumber) {
        struct sigaction action {};
        return ::sigaction(signalNumber, nullptr, &action) != 0 || action.sa_handler == SIG_IGN;
    });
    return signals;
}

/// Ignores signals while it exists. Not thread-safe: changes signal actions of the process.
class IgnoredSignals {
public:
    explicit IgnoredSignals(std::vector<int> signals)
        : _signals(std::move(signals)), _formerActions(_signals.size()) {
        struct sigaction ignore {};
        ignore.sa_handler = SIG_IGN;
        for (std::size_t i = 0; i < _signals.size(); ++i) {
            ::sigaction(_signals[i], &ignore, &_formerActions[i]);
        }
    }
    IgnoredSignals(const IgnoredSignals&) = delete;
    IgnoredSignals& operator=(const IgnoredSignals&) = delete;
    /// Restores the former actions.
    ~IgnoredSignals() {
        for (std::size_t i = 0; i < _signals.size(); ++i) {
            ::sigaction(_signals[i], &_formerActions[i], nullptr);
        }
    }

private:
    std::vector<int> _signals;
    std::vector<struct sigaction> _formerActions;
};

}  // namespace neb::nebsc
