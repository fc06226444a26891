// ExitStatus.h - the exit statuses of nebsc.
#pragma once

namespace neb::nebsc {

/// Success.
inline constexpr int exitDone = 0;
/// The operation failed, or its result could not be written.
inline constexpr int exitFailed = 1;
/// Invalid usage; nothing was done: an unknown command, an invalid request, a file that is not a
/// plug-in.
inline constexpr int exitUsageError = 2;

/// Returns the exit status after a signal ended the work, as shells report it.
constexpr int exitOfSignal(int signalNumber) {
    return 128 + signalNumber;
}

}  // namespace neb::nebsc
