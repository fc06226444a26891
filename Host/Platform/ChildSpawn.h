// ChildSpawn.h - starts one child process. Inside the host library only.
#pragma once

#include <sys/types.h>

#include <optional>

#include "Platform/ChildProcess.h"

namespace neb {

/// Where the child's streams go; the descriptors stay the caller's. All are 3 or higher.
struct ChildStreams {
    /// Absent means /dev/null.
    std::optional<int> standardInput;
    int standardOutput;
    int standardError;
};

/// A running child, or why there is none.
struct SpawnedChild {
    pid_t pid = -1;
    /// Set when pid is -1; a clause that names the program or the folder.
    std::string failure;
};

/// Starts `launch` as the leader of a session of its own. May be called from any thread.
[[nodiscard]] SpawnedChild spawnChild(const ChildLaunch& launch, const ChildStreams& streams);

}  // namespace neb
