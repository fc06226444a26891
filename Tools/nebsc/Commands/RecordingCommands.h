// RecordingCommands.h - the commands for recordings; docs/recordings.md describes them.
#pragma once

#include "CommandLine/Command.h"

namespace neb::nebsc {

/// Compares the outcomes of recorded requests with those of now.
extern const Command replayCommand;
/// Records the command that failed last.
extern const Command reportCommand;

}  // namespace neb::nebsc
