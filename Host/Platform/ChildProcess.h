// ChildProcess.h - runs one child process, or a pipeline of them, and collects what they write.
//
//     ChildProcess process;
//     ChildLaunch launch{.launchPath = "/bin/echo", .arguments = {"hello"}};
//     const std::vector<ChildOutcome> outcomes = process.run({launch});
//     outcomes[0].status.isSuccess();   // true
//     outcomes[0].output;               // "hello\n"
//
// Each child leads a session of its own, has /dev/null as its standard input, inherits no
// descriptor but its three standard streams, and starts with default signal dispositions and an
// empty signal mask. The host is left as it was: its working directory, signal handlers and mask
// are never touched, and the cost of a launch does not grow with the host's memory.
//
// run() blocks its thread until the children have ended; cancel() may be called from any thread.
// Nothing throws but std::bad_alloc; every failure is in the outcome.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Data.h"
#include "Platform/Export.h"
#include "Platform/FileDescriptor.h"
#include "Platform/Mutex.h"
#include "Platform/TerminationStatus.h"

namespace neb {

/// What to run. Complete before the run begins; nothing of it changes afterwards.
struct ChildLaunch {
    /// The executable's absolute path; no search is made.
    std::string launchPath;
    /// The arguments behind the executable's name, which is put in front of them.
    std::vector<std::string> arguments;
    /// The child's working directory; absent means the host's own.
    std::optional<std::string> currentDirectoryPath;
    /// The child's whole environment, each element `NAME=value`.
    std::vector<std::string> environment;
};

/// What came of one child.
struct ChildOutcome {
    TerminationStatus status;
    /// Standard output of the last child of a pipeline (of the only one); empty for the others,
    /// whose output went to their neighbour.
    Data output;
    /// Standard error, for every child.
    Data errorOutput;
    /// True when another process still held a stream of the child open some time after the child
    /// had ended. What had been written by then is in the outcome; nobody waited for more.
    bool outputWasHeldOpen = false;
    /// From the launch to the end of the child.
    std::chrono::nanoseconds duration{0};
};

class NEB_EXPORT ChildProcess {
public:
    /// Who is told of a run as it goes on, on the thread of run(). Neither must be there.
    struct Observers {
        /// Told the index of each child as soon as it runs.
        std::function<void(std::size_t)> started = {};
        /// Told, each time when more of it has come, all that the last child has written to
        /// standard output so far: the Data that will be the outcome's. Its bytes are good for the
        /// call only, they move as it grows.
        std::function<void(const Data&)> outputGrew = {};
    };

    ChildProcess() = default;
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess() = default;

    /// Runs the launches at once, the standard output of each joined to the standard input of the
    /// next, and answers one outcome for each, in order. When one cannot be started, its outcome
    /// says why and the others are ended. Call it once for an object.
    [[nodiscard]] std::vector<ChildOutcome> run(const std::vector<ChildLaunch>& launches,
                                                const Observers& observers);
    [[nodiscard]] std::vector<ChildOutcome> run(const std::vector<ChildLaunch>& launches) {
        return run(launches, Observers());
    }

    /// Asks the sessions of all children to end (SIGTERM), makes them after a grace of two seconds
    /// (SIGKILL), and so lets run() return soon. Before run(), it keeps anything from starting.
    /// May be called from any thread, any number of times, and after the end.
    void cancel();

    /// Whether cancel() was called. From any thread.
    [[nodiscard]] bool isCancelled() const;

private:
    [[nodiscard]] int openWakePipe(FileDescriptor& readEnd);
    void closeWakePipe();

    mutable Mutex _mutex;
    bool _cancelled NEB_GUARDED_BY(_mutex) = false;
    FileDescriptor _wakeWrite NEB_GUARDED_BY(_mutex);  // open while run() waits
};

}  // namespace neb
