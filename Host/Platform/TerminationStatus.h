// TerminationStatus.h - how a child process ended.
//
//     const auto status = TerminationStatus::exited(128);
//     status.isSuccess();     // false
//     status.exitStatus();    // 128
//     status.description();   // "exit status 128"
#pragma once

#include <optional>
#include <string>

#include "Platform/Export.h"

namespace neb {

/// A child process was not started, exited with a status, was ended by a signal, or ended in an
/// unknown way, because the host reaped it or ignores SIGCHLD.
///
/// A value; copies are independent.
class NEB_EXPORT TerminationStatus {
public:
    /// The child was not started. `reason` is a clause without a full stop that names the program
    /// or folder and the cause: `the program "/opt/tool" could not be started: No such file or
    /// directory`.
    static TerminationStatus notStarted(std::string reason);
    /// The child exited with a status from 0 to 255.
    static TerminationStatus exited(int exitStatus);
    /// A signal ended the child.
    static TerminationStatus signalled(int signalNumber);
    /// It is unknown how the child ended. `reason` is a clause as for notStarted().
    static TerminationStatus unknown(std::string reason);

    /// Returns the exit status, or nothing if the child did not exit.
    [[nodiscard]] std::optional<int> exitStatus() const;
    /// Returns the number of the signal that ended the child, or nothing if no signal did.
    [[nodiscard]] std::optional<int> signalNumber() const;
    /// Whether the child was started, however it ended.
    [[nodiscard]] bool started() const { return _kind != Kind::notStarted; }
    /// Whether the child exited with status 0.
    [[nodiscard]] bool isSuccess() const { return exitStatus() == 0; }

    /// Returns a clause for people: the reason, `exit status 128`, or `signal 9 (Killed)`.
    [[nodiscard]] std::string description() const;

private:
    enum class Kind { notStarted, exited, signalled, unknown };
    TerminationStatus(Kind kind, int number, std::string reason);

    Kind _kind;
    int _number;          // the exit status or the signal
    std::string _reason;  // empty unless notStarted or unknown
};

}  // namespace neb
