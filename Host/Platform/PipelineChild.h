// PipelineChild.h - one child of a pipeline. Inside the host library only.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

#include "Platform/CapturedStream.h"
#include "Platform/ChildRun.h"
#include "Platform/ChildSession.h"
#include "Platform/FileDescriptor.h"

namespace neb {

/// The process of one child, the pipes from it, and how it ended. Not thread-safe.
class PipelineChild {
public:
    using Clock = std::chrono::steady_clock;
    using Moment = Clock::time_point;

    /// notStarted -> running -> ended -> reaped; a child that cannot be waited for goes from
    /// running to reaped.
    enum class State {
        notStarted,
        running,
        /// Ended, but not reaped: no other process can get its process number.
        ended,
        /// Reaped by this object or by the host, or given up.
        reaped,
    };

    PipelineChild() = default;
    PipelineChild(const PipelineChild&) = delete;
    PipelineChild& operator=(const PipelineChild&) = delete;
    PipelineChild(PipelineChild&&) = default;
    PipelineChild& operator=(PipelineChild&&) = delete;
    ~PipelineChild() = default;

    /// Starts the process. `input` is the read end of the pipe from the previous child; if it is
    /// not open, standard input is that of the launch, or else /dev/null. If `feedsNext`, the read
    /// end of the pipe to the next child is put there. Returns whether the process was started.
    bool start(const ChildLaunch& launch, FileDescriptor& input, bool feedsNext);
    /// Records why the child was not started, as a clause.
    void recordNotStarted(const std::string& reason);

    [[nodiscard]] bool isRunning() const { return _state == State::running; }
    [[nodiscard]] Moment endMoment() const { return _endMoment; }
    /// Becomes readable when the process ends; -1 where the system has no such descriptors.
    [[nodiscard]] int processDescriptor() const { return _processDescriptor.get(); }
    /// Checks whether the process has ended. Does not wait and does not reap.
    void checkForEnd();
    /// Stops waiting for a process that SIGKILL does not end.
    void giveUp();
    [[nodiscard]] bool mustBeReaped() const;
    /// Waits until the process ends and reaps it, if it must be reaped.
    void reap();

    /// Sends a signal to every process of the session that the child leads.
    void signalSession(int signalNumber) const;
    /// Returns the live processes of the session.
    [[nodiscard]] std::vector<pid_t> liveProcesses() const;
    /// How far the live processes of the session have come after SIGSTOP.
    [[nodiscard]] StopProgress stopProgress() const;

    CapturedStream output;
    CapturedStream errorOutput;
    [[nodiscard]] bool hasOpenStream() const { return output.isOpen() || errorOutput.isOpen(); }
    void readStreams();
    /// Reads what the pipes contain now, and closes them.
    void closeStreams();
    /// Kills the processes that hold the pipe to the next child open. Returns false if one of them
    /// must not be killed.
    bool killHoldersOfOutput();

    [[nodiscard]] ChildOutcome takeOutcome();

private:
    void recordEnd(State state, TerminationStatus status);

    State _state = State::notStarted;
    pid_t _pid = -1;
    FileDescriptor _processDescriptor;
    ino_t _outputPipe = 0;  // the pipe to the next child
    TerminationStatus _status = TerminationStatus::notStarted({});
    bool _outputWasHeldOpen = false;
    Moment _startMoment = Clock::now();
    Moment _endMoment = _startMoment;
};

}  // namespace neb
