// ChildRun.h - the values that a run of child processes takes and returns.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Platform/ChildLimits.h"
#include "Platform/Data.h"
#include "Platform/TerminationStatus.h"

namespace neb {

/// The program to run.
struct ChildLaunch {
    /// The absolute path of the executable. PATH is not searched.
    std::string launchPath;
    /// The arguments after argv[0], which is the launch path.
    std::vector<std::string> arguments;
    /// The working directory of the child. Absent: the working directory of the caller.
    std::optional<std::string> currentDirectoryPath;
    /// The whole environment of the child, each element "NAME=value".
    std::vector<std::string> environment;
    /// The bytes of standard input; of the first child of a pipeline only. Absent: /dev/null.
    std::optional<Data> input = std::nullopt;
};

/// The result of one child.
struct ChildOutcome {
    TerminationStatus status;
    /// Standard output of the only child or of the last one of a pipeline. Empty for the others.
    Data output;
    /// Standard error; of more than 8 MiB the beginning and the end, each about 4 MiB.
    Data errorOutput;
    /// Whether another process still had a stream of the child open shortly after the child ended.
    /// The outcome has what was written until then.
    bool outputWasHeldOpen = false;
    /// Whether some of the standard error was left out.
    bool errorOutputWasCut = false;
    /// The limit that this child exceeded, because of which the run was ended. Of the children of a
    /// pipeline, it is the one that wrote most when the output became too large, or the first one
    /// that still ran at the end of the time. Absent in all other outcomes.
    std::optional<ChildLimit> exceededLimit = std::nullopt;
    /// The time from the launch of the child to its end.
    std::chrono::nanoseconds duration{0};
};

/// The standard output of the last child during a run.
struct ArrivedOutput {
    /// Everything that the child has written so far, without what was removed. The bytes are valid
    /// during the call only, because they move when the output grows.
    const Data& data;
    /// Whether the child had not written more when it was read: a reader would have to wait.
    bool isDrained = false;
};

/// Functions that are called during a run, on the thread of the run. All are optional.
struct ChildObservers {
    /// Called with the index of each child as soon as it runs.
    std::function<void(std::size_t)> started = {};
    /// Called whenever the last child has written more to standard output. Returns the number of
    /// bytes at the front that are no longer needed; they are removed from the output. The child
    /// waits while the function runs, as soon as it has filled its pipe.
    std::function<std::size_t(const ArrivedOutput&)> outputGrew = {};
    /// Called when the run is cancelled, with every live process in the sessions of the children.
    /// The processes are stopped (SIGSTOP) during the call and get SIGTERM after it. Must be fast.
    std::function<void(const std::vector<pid_t>&)> stopped = {};
};

}  // namespace neb
