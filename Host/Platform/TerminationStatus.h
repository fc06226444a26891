// TerminationStatus.h - how a child process ended, as a value.
#pragma once

#include <optional>
#include <string>

#include "Platform/Export.h"

namespace neb {

/// A child process either never started, exited with a status, was ended by a signal, or ended in a
/// way that nobody could learn (the host had its children reaped behind our back).
class NEB_EXPORT TerminationStatus {
public:
    /// `reason` is a clause that names the program or folder and the cause, without a full stop:
    /// `the program "/opt/git" could not be started: No such file or directory`.
    static TerminationStatus notStarted(std::string reason);
    static TerminationStatus exited(int exitStatus);
    static TerminationStatus signalled(int signalNumber);
    /// `reason` as for notStarted.
    static TerminationStatus unknown(std::string reason);

    /// The exit status 0 to 255; nothing unless the child exited.
    [[nodiscard]] std::optional<int> exitStatus() const;
    /// The number of the signal that ended the child; nothing otherwise.
    [[nodiscard]] std::optional<int> signalNumber() const;
    [[nodiscard]] bool started() const { return _kind != Kind::notStarted; }
    /// True only for exit status 0.
    [[nodiscard]] bool isSuccess() const { return exitStatus() == 0; }

    /// A clause for people: the reason, `exit status 128`, or `signal 9 (Killed)`.
    [[nodiscard]] std::string description() const;

private:
    enum class Kind { notStarted, exited, signalled, unknown };
    TerminationStatus(Kind kind, int number, std::string reason);

    Kind _kind;
    int _number;
    std::string _reason;
};

}  // namespace neb
