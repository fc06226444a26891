// Interruption.h - lets a signal end the running work in good order.
//
// A git that runs leads a session of its own, so Ctrl-C at the terminal reaches nebsc alone. While
// an object of this class lives, SIGINT, SIGTERM and SIGHUP cancel the work instead of ending
// nebsc, which then waits for the work and leaves nothing behind. A signal that the process ignores
// (as under nohup) stays ignored.
//
//     Interruption interruption;
//     {
//         const Interruption::Work work(interruption, [&] { operation.cancel(); });
//         operation.start();
//     }
//     interruption.end();   // the signal, when one came; from here on the next one ends nebsc
//
// No handler runs: the signals are blocked, and one thread waits for them. So the object is made on
// the main thread before any other thread that does not block them. One object at a time. Signals
// keep their default where the system has no thread to give.
#pragma once

#include <signal.h>

#include <functional>
#include <optional>
#include <thread>

#include "Platform/Mutex.h"

namespace neb::nebsc {

class Interruption {
public:
    Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption();

    /// Work that can be cancelled, for as long as the object lives. One at a time.
    class Work {
    public:
        /// `cancel` is called on another thread as soon as a signal comes, and at once when one has
        /// come before. It must not block.
        Work(Interruption& interruption, std::function<void()> cancel);
        Work(const Work&) = delete;
        Work& operator=(const Work&) = delete;
        /// Afterwards `cancel` is not called any more.
        ~Work();

    private:
        Interruption& _interruption;
    };

    /// The first signal that came; absent as a rule. From any thread.
    [[nodiscard]] std::optional<int> signalNumber() const;

    /// Gives the signals back what they did before, and answers the first one that came until then.
    /// From the thread that made the object, once the work is done.
    std::optional<int> end();

private:
    void watch();
    void take(int signalNumber);

    mutable Mutex _mutex;
    std::function<void()> _cancel NEB_GUARDED_BY(_mutex);
    std::optional<int> _signalNumber NEB_GUARDED_BY(_mutex);
    sigset_t _signals{};  // those that are waited for
    sigset_t _formerMask{};
    std::thread _watcher;
};

}  // namespace neb::nebsc
