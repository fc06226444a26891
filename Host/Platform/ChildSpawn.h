// ChildSpawn.h - starts a child process with posix_spawn.
//
// The caller waits for the child itself. ChildProcess also collects the output and reaps the child.
#pragma once

#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

#include "Platform/ChildRun.h"
#include "Platform/Export.h"

namespace neb {

/// What a child gets as one of its three standard streams.
class ChildStream {
public:
    /// The stream of the caller.
    static ChildStream inherited() { return {Kind::inherited, -1, {}}; }
    /// No open descriptor.
    static ChildStream closed() { return {Kind::closed, -1, {}}; }
    /// A copy of `descriptor`, which must be 3 or higher and stays the caller's.
    static ChildStream copyOf(int descriptor) { return {Kind::descriptor, descriptor, {}}; }
    /// The file at `path`, opened in the child with the flags of open(2). A file that O_CREAT
    /// creates belongs to the owner alone (mode 0600).
    static ChildStream file(std::string path, int flags) {
        return {Kind::file, flags, std::move(path)};
    }

private:
    friend class SpawnParameters;
    enum class Kind { inherited, closed, descriptor, file };
    ChildStream(Kind kind, int number, std::string path)
        : _kind(kind), _number(number), _path(std::move(path)) {}

    Kind _kind;
    int _number;  // the descriptor, or the flags of a file
    std::string _path;
};

/// What a child inherits from the caller.
struct SpawnOptions {
    ChildStream standardInput = ChildStream::inherited();
    ChildStream standardOutput = ChildStream::inherited();
    ChildStream standardError = ChildStream::inherited();
    /// Starts the child as the leader of a new session, with default signal dispositions, an empty
    /// signal mask and, where the system supports it, no descriptors but the standard streams.
    bool isIsolated = false;
    /// Signals that have the default disposition in a child that is not isolated. The child
    /// inherits from the caller whether the other signals are ignored.
    std::vector<int> defaultSignals = {};
    /// Starts a child that is not isolated with an empty signal mask, not with that of the caller.
    bool hasEmptySignalMask = false;
    /// Makes a child that is not isolated the leader of a new process group, so that signals can
    /// reach all its processes. At a terminal it is in the background; see tcsetpgrp(3).
    bool leadsGroup = false;
};

/// A started child, or the reason why it was not started.
struct SpawnedChild {
    /// The process number; -1 if the child was not started.
    pid_t pid = -1;
    /// A clause that names the program or the folder and the cause. Empty if the child was started.
    std::string failure;
};

/// Starts a child. Thread-safe. Throws only std::bad_alloc.
[[nodiscard]] NEB_EXPORT SpawnedChild spawnChild(const ChildLaunch& launch,
                                                 const SpawnOptions& options);

}  // namespace neb
