// Interruption.h - clean cancellation of the running work by a signal or at a time limit.
//
// Each git process runs in a session of its own, so Ctrl-C at the terminal reaches only nebsc.
// While an Interruption exists, SIGINT, SIGQUIT (Ctrl-\ at the terminal), SIGTERM and SIGHUP cancel
// the work instead of ending nebsc; nebsc then waits until the work has cleaned up. A signal that
// the process ignores (as under nohup) stays ignored.
//
//     Interruption interruption;
//     {
//         const Interruption::Work work(interruption, [&] { operation.cancel(); });
//         operation.start();
//     }
//     interruption.end();   // returns the signal, if any; later signals end nebsc as usual
//
// There is no signal handler: the signals are blocked, and one thread waits for them. Therefore,
// create the object on the main thread before any thread that does not block the signals. If the
// thread cannot be started, the signals keep their default action.
#pragma once

#include <signal.h>

#include <chrono>
#include <functional>
#include <list>
#include <optional>
#include <thread>

#include "Platform/Mutex.h"

namespace neb::nebsc {

/// Cancels work when a signal arrives or the time is up. Only one object may exist at a time.
class Interruption {
public:
    using Clock = std::chrono::steady_clock;

    /// The time limit counts from here on; absent: none.
    explicit Interruption(std::optional<std::chrono::milliseconds> timeLimit = std::nullopt);
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    /// Calls end().
    ~Interruption();

    /// Makes work cancellable while the object exists. Several may exist at a time, on any threads.
    class Work {
    public:
        /// Calls `cancel` on another thread for each signal that arrives and when the time is up,
        /// and immediately, on this thread, if that has happened before. `cancel` must not block.
        Work(Interruption& interruption, std::function<void()> cancel);
        Work(const Work&) = delete;
        Work& operator=(const Work&) = delete;
        /// Waits for a running `cancel`; it is not called afterwards.
        ~Work();

    private:
        Interruption& _interruption;
        std::list<std::function<void()>>::iterator _cancel;
    };

    /// While the object exists, SIGINT and SIGQUIT have no effect: Ctrl-C is meant for a program
    /// that runs at the terminal, such as an editor, and nebsc waits for that program.
    class TerminalLoan {
    public:
        explicit TerminalLoan(Interruption& interruption);
        TerminalLoan(const TerminalLoan&) = delete;
        TerminalLoan& operator=(const TerminalLoan&) = delete;
        ~TerminalLoan();

    private:
        Interruption& _interruption;
    };

    /// Returns the first signal that arrived; absent if there was none. Thread-safe.
    [[nodiscard]] std::optional<int> signalNumber() const;

    /// Returns whether a signal arrived or the time limit has passed. Thread-safe.
    [[nodiscard]] bool hasOccurred() const;

    /// Returns the time limit if it has passed and no signal arrived before. Thread-safe.
    [[nodiscard]] std::optional<std::chrono::milliseconds> exceededTimeLimit() const;

    /// Restores the former signal mask. Returns the first signal that arrived; absent if there was
    /// none. Must be called on the thread that created the object, after the work has ended.
    std::optional<int> end();

private:
    void watch();
    [[nodiscard]] int waitUntilEndOfTime(const sigset_t& awaited) const;
    void handleSignal(int signalNumber);
    void handleEndOfTime();

    mutable Mutex _mutex;
    std::list<std::function<void()>> _cancels NEB_GUARDED_BY(_mutex);
    std::optional<int> _signalNumber NEB_GUARDED_BY(_mutex);
    bool _isTimeUp NEB_GUARDED_BY(_mutex) = false;
    int _terminalLoans NEB_GUARDED_BY(_mutex) = 0;
    const std::optional<std::chrono::milliseconds> _timeLimit;
    const Clock::time_point _start = Clock::now();
    sigset_t _signals{};  // the signals that are handled
    sigset_t _formerMask{};
    std::thread _watcher;
};

}  // namespace neb::nebsc
