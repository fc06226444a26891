// RecordingCommands.h - the commands for recordings; docs/recordings.md describes them.
#pragma once

#include "CommandLine/Command.h"
#include "Recording/RecordingReader.h"

namespace neb::nebsc {

/// Compares the outcomes of recorded requests with those of now.
extern const Command replayCommand;
/// Records the command that failed last.
extern const Command reportCommand;

/// Sets HOME to the home folder of the recording, if it has one, because a location that begins
/// with "~" names it. Must be called before the process has another thread.
void useHomeOf(const RecordingReading& recording);

}  // namespace neb::nebsc
