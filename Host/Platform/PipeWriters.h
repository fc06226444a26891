// PipeWriters.h - finds the processes that can write to a pipe. Inside the host library only.
#pragma once

#include <sys/types.h>

#include <vector>

#include "Platform/FileDescriptor.h"

namespace neb {

/// Returns the inode number of the pipe that the descriptor belongs to, 0 if it is unknown.
[[nodiscard]] ino_t pipeNumber(const FileDescriptor& descriptor);

/// Returns the processes that have the pipe with that inode number open for writing, as far as
/// /proc shows them.
[[nodiscard]] std::vector<pid_t> processesWritingTo(ino_t pipe);

}  // namespace neb
