// NEBSourceControlCommandLog.h - which child processes an operation is built to run, and which ran.
#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Export.h"

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
    /// Records a start; the answer is for ended().
    [[nodiscard]] std::size_t started(const NEBSourceControlCommand& command);
    void ended(std::size_t index, std::optional<int> terminationStatus,
               std::chrono::nanoseconds duration);

    [[nodiscard]] std::vector<NEBSourceControlCommandRun> runs() const;

private:
    mutable std::mutex _mutex;
    std::vector<NEBSourceControlCommandRun> _runs;  // guarded by _mutex
};

}  // namespace neb
