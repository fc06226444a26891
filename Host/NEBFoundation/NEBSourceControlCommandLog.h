// NEBSourceControlCommandLog.h - which child processes an operation is built to run, and which ran.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Mutex.h"
#include "Platform/TerminationStatus.h"

namespace neb {

/// One command line.
struct NEBSourceControlCommand {
    std::string launchPath;
    /// Without the executable itself.
    std::vector<std::string> arguments;
    /// Absent: the host's own.
    std::optional<std::string> currentDirectoryPath;
    /// The command that reads this one's output; absent as a rule.
    std::shared_ptr<const NEBSourceControlCommand> pipeTo;
};

/// One child process that ran.
struct NEBSourceControlCommandRun {
    std::string launchPath;
    std::vector<std::string> arguments;
    std::optional<std::string> currentDirectoryPath;
    /// Absent while it runs, and when it did not exit (a signal ended it).
    std::optional<int> terminationStatus;
    /// Absent while it runs.
    std::optional<std::chrono::nanoseconds> duration;
};

/// Keeps the child processes of an operation and of the operations that it runs, in the order in
/// which they were started. Every member may be called from any thread.
class NEB_EXPORT NEBSourceControlCommandLog {
public:
    /// Who is told of each child as it starts and as it ends, by its index among the runs, on the
    /// thread of the operation that runs it: more than one thread where operations run side by
    /// side. Neither must be there.
    struct Observers {
        std::function<void(std::size_t, const NEBSourceControlCommand&)> started = {};
        std::function<void(std::size_t, const TerminationStatus&, std::chrono::nanoseconds)> ended =
            {};
    };

    NEBSourceControlCommandLog() : NEBSourceControlCommandLog(Observers()) {}
    explicit NEBSourceControlCommandLog(Observers observers) : _observers(std::move(observers)) {}

    /// Records a start; the answer is for ended().
    [[nodiscard]] std::size_t started(const NEBSourceControlCommand& command);
    void ended(std::size_t index, const TerminationStatus& status,
               std::chrono::nanoseconds duration);
    /// Adds to what the children have written to standard output.
    void received(std::size_t bytes) { _receivedBytes += bytes; }

    [[nodiscard]] std::vector<NEBSourceControlCommandRun> runs() const;
    /// All that has come from standard output so far, while children run too.
    [[nodiscard]] std::uint64_t receivedBytes() const { return _receivedBytes; }

private:
    const Observers _observers;
    std::atomic<std::uint64_t> _receivedBytes = 0;
    mutable Mutex _mutex;
    std::vector<NEBSourceControlCommandRun> _runs NEB_GUARDED_BY(_mutex);
};

}  // namespace neb
