// PipeWriters.h - who holds the writing end of a pipe. Inside the host library only.
#pragma once

#include <sys/types.h>

#include <vector>

#include "Platform/FileDescriptor.h"

namespace neb {

/// The number that names the pipe to which the descriptor belongs, 0 when that cannot be told.
[[nodiscard]] ino_t pipeNumber(const FileDescriptor& descriptor);

/// The processes that have the pipe of that number open for writing, as far as /proc tells.
[[nodiscard]] std::vector<pid_t> processesWritingTo(ino_t pipe);

}  // namespace neb
