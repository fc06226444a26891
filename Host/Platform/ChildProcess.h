// ChildProcess.h - runs a child process, or a pipeline of them, and collects their output.
//
//     ChildProcess process;
//     ChildLaunch launch{.launchPath = "/bin/echo", .arguments = {"hello"}};
//     const std::vector<ChildOutcome> outcomes = process.run({launch});
//     outcomes[0].status.isSuccess();   // true
//     outcomes[0].output;               // "hello\n"
//
// Each child leads a session of its own, reads /dev/null as standard input, inherits only its three
// standard streams, and starts with default signal dispositions and an empty signal mask. The
// working directory, signal handlers and signal mask of the host are not changed. The cost of a
// launch does not depend on the memory size of the host.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "Platform/ChildRun.h"
#include "Platform/Export.h"
#include "Platform/FileDescriptor.h"
#include "Platform/Mutex.h"

namespace neb {

class ChildPipeline;

/// Runs of one or more children, one at a time. Throws only std::bad_alloc; every other failure is
/// reported in the outcomes.
class NEB_EXPORT ChildProcess {
public:
    using Observers = ChildObservers;

    ChildProcess() = default;
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess() = default;

    /// Starts all children, the standard output of each connected to the standard input of the
    /// next, and blocks until they have ended. Returns one outcome for each launch, in order. If a
    /// child cannot be started, its outcome has the reason and the others are ended. May be called
    /// again when it has returned.
    [[nodiscard]] std::vector<ChildOutcome> run(const std::vector<ChildLaunch>& launches,
                                                const Observers& observers,
                                                const ChildLimits& limits = {});
    [[nodiscard]] std::vector<ChildOutcome> run(const std::vector<ChildLaunch>& launches) {
        return run(launches, Observers());
    }

    /// Ends the sessions of all children: SIGTERM, and SIGKILL after two seconds. run() then
    /// returns soon; if an observer blocks, only SIGTERM is sent until it returns. Before run(),
    /// this prevents the children from being started; after it, it does nothing. Thread-safe, also
    /// from within an observer.
    void cancel();

    /// Blocks for the duration, or until cancel() is called. Returns whether it was not called. For
    /// a wait between two runs. Thread-safe.
    [[nodiscard]] bool waitUnlessCancelled(std::chrono::milliseconds duration);

    /// Whether cancel() was called. Thread-safe.
    [[nodiscard]] bool isCancelled() const;

private:
    class BlockedRun;

    [[nodiscard]] int openWakePipe(FileDescriptor& readEnd);
    void closeWakePipe();

    mutable Mutex _mutex;
    bool _cancelled NEB_GUARDED_BY(_mutex) = false;
    Condition _cancellation;
    FileDescriptor _wakeWrite NEB_GUARDED_BY(_mutex);  // open during run()
    // present while an observer runs that may block
    ChildPipeline* _blockedPipeline NEB_GUARDED_BY(_mutex) = nullptr;
};

}  // namespace neb
