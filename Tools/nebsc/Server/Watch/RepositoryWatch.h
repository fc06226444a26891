// RepositoryWatch.h - reports the changes of a repository until it is stopped.
//
//     RepositoryWatch watch(session.trace(), "/home/me/project", true,
//                           {.changed = [](std::uint32_t changes) { … },
//                            .ended = [](const WatchFailure& failure) { … }});
//     if (const auto failure = watch.prepare()) { … }
//     watch.begin();
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <thread>

#include "Platform/ChildProcess.h"
#include "Platform/Mutex.h"
#include "Platform/Wake.h"
#include "Server/Watch/RepositoryFolders.h"
#include "Server/Watch/WatchedFolders.h"
#include "Session/Trace.h"

namespace neb::nebsc {

/// Watches one repository on a thread of its own. stop() and isStopped() are thread-safe; prepare()
/// and begin() must be called once each, in this order, by one thread at a time.
class RepositoryWatch {
public:
    /// Both are called on the thread of the watch and must not block.
    struct Observer {
        /// Gets a combination of RepositoryChange that is not changedNothing.
        std::function<void(std::uint32_t)> changed;
        /// Called once if the watch cannot continue; nothing is called after it.
        std::function<void(const WatchFailure&)> ended;
    };

    /// Changes are reported this long after the last one, and at the latest this long after the
    /// first one.
    static constexpr std::chrono::milliseconds quietTime{100};
    static constexpr std::chrono::milliseconds longestDelay{1000};

    /// `trace` must outlive this object. `location` is a folder of the repository.
    RepositoryWatch(const Trace& trace, std::string location, bool withWorkingTree,
                    Observer observer)
        : _trace(trace),
          _location(std::move(location)),
          _withWorkingTree(withWorkingTree),
          _observer(std::move(observer)) {}
    RepositoryWatch(const RepositoryWatch&) = delete;
    RepositoryWatch& operator=(const RepositoryWatch&) = delete;
    /// Calls stop() and waits for the end of the thread.
    ~RepositoryWatch();

    /// Finds the repository and begins to collect changes. Returns why it cannot be watched; absent
    /// on success.
    [[nodiscard]] std::optional<WatchFailure> prepare();

    /// Begins to report the changes since prepare(). Does nothing after stop().
    void begin();

    /// Ends prepare() or the reports soon, and returns at once.
    void stop();
    [[nodiscard]] bool isStopped() const;

    /// Waits until nothing of a stopped watch is left. Must not be called by the observer.
    void join();

private:
    using Clock = std::chrono::steady_clock;
    class GitRun;

    [[nodiscard]] std::optional<WatchFailure> findAndWatchFolders();
    void run();
    void reportUntilStopped();
    /// Waits for events. Returns false if the watch is stopped.
    [[nodiscard]] bool wait(std::optional<Clock::time_point> due);
    /// Returns false if the watch has ended.
    [[nodiscard]] bool report(std::uint32_t changes);

    const Trace& _trace;
    const std::string _location;
    const bool _withWorkingTree;
    const Observer _observer;
    std::optional<WatchedFolders> _folders;
    Wake _wake;
    mutable Mutex _mutex;
    bool _isStopped NEB_GUARDED_BY(_mutex) = false;
    ChildProcess* _git NEB_GUARDED_BY(_mutex) = nullptr;  // while it runs
    std::thread _thread NEB_GUARDED_BY(_mutex);
};

}  // namespace neb::nebsc
