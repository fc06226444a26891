// NEBSourceControlCommandLog.h - command lines, and a record of the child processes that ran.
//
//     operation->setCommandLog(std::make_shared<NEBSourceControlCommandLog>());
//     operation->start();
//     operation->commandLog()->runs().front().arguments;    // "status", "--porcelain", …
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

/// A command line. Each argument reaches the program unchanged. A value; copies are independent,
/// except that they share `pipeTo`.
struct NEBSourceControlCommand {
    /// The path of the program, "/usr/bin/git".
    std::string launchPath;
    /// The arguments, without the name of the program. They may contain passwords of URLs.
    std::vector<std::string> arguments;
    /// The folder in which the program runs. Absent: the working directory of the host.
    std::optional<std::string> currentDirectoryPath;
    /// The command that reads the output of this one. Null when no command does.
    std::shared_ptr<const NEBSourceControlCommand> pipeTo;
};

/// A child process that was started. The first three members are those of its
/// NEBSourceControlCommand. A value; copies are independent.
struct NEBSourceControlCommandRun {
    std::string launchPath;
    std::vector<std::string> arguments;
    std::optional<std::string> currentDirectoryPath;
    /// The exit status. Absent while the child runs, and when a signal ended it.
    std::optional<int> terminationStatus;
    /// The time from start to end, measured with a steady clock. Absent while the child runs.
    std::optional<std::chrono::nanoseconds> duration;
};

/// Records the child processes of an operation, and of the operations that it runs, in the order in
/// which they were started. Thread-safe.
class NEB_EXPORT NEBSourceControlCommandLog {
public:
    /// Functions that are called when a child starts and when it ends, with its index in runs().
    /// Both are optional. They are called on the thread of the operation that runs the child, so
    /// several threads may call them at once. They must not throw, and should return soon.
    ///
    ///     NEBSourceControlCommandLog log({.started = [](std::size_t, const auto& command) {
    ///         std::clog << command.launchPath << '\n';
    ///     }});
    struct Observers {
        /// Receives the index and the command line.
        std::function<void(std::size_t, const NEBSourceControlCommand&)> started = {};
        /// Receives the index, how the child ended, and the time that it ran.
        std::function<void(std::size_t, const TerminationStatus&, std::chrono::nanoseconds)> ended =
            {};
    };

    /// Creates an empty log without observers.
    NEBSourceControlCommandLog() : NEBSourceControlCommandLog(Observers()) {}
    /// Creates an empty log that calls the observers.
    explicit NEBSourceControlCommandLog(Observers observers) : _observers(std::move(observers)) {}

    /// Records a start and calls the observer. Returns the index to pass to ended(). Called by the
    /// operation, like the next two functions.
    [[nodiscard]] std::size_t started(const NEBSourceControlCommand& command);
    /// Records the end of the child with that index, which started() has returned, and calls the
    /// observer.
    void ended(std::size_t index, const TerminationStatus& status,
               std::chrono::nanoseconds duration);
    /// Adds to receivedBytes().
    void received(std::size_t bytes) { _receivedBytes += bytes; }

    /// Returns a copy of all records, also while children run.
    [[nodiscard]] std::vector<NEBSourceControlCommandRun> runs() const;
    /// The number of bytes that the children have written to standard output so far.
    [[nodiscard]] std::uint64_t receivedBytes() const { return _receivedBytes; }

private:
    const Observers _observers;
    std::atomic<std::uint64_t> _receivedBytes = 0;
    mutable Mutex _mutex;
    std::vector<NEBSourceControlCommandRun> _runs NEB_GUARDED_BY(_mutex);
};

}  // namespace neb
