// ExitStatus.h - what nebsc tells the program that called it.
#pragma once

namespace neb::nebsc {

inline constexpr int exitDone = 0;
/// The operation failed, or what it found could not be written.
inline constexpr int exitFailed = 1;
/// The call cannot be understood, and nothing was done: a mistyped command, a request that is none,
/// a file that is no plug-in.
inline constexpr int exitNotUnderstood = 2;

/// A signal ended the work, as a shell tells it.
constexpr int exitOfSignal(int signalNumber) {
    return 128 + signalNumber;
}

}  // namespace neb::nebsc
