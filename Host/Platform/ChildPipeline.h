// ChildPipeline.h - one run of a pipeline of children, from launch to reaping. Inside the host
// library only; ChildProcess is its face.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <vector>

#include "NEBFoundation/NEBSourceControlOrphanedLockFiles.h"
#include "Platform/CapturedStream.h"
#include "Platform/ChildProcess.h"
#include "Platform/FileDescriptor.h"

struct pollfd;

namespace neb {

class ChildPipeline {
public:
    /// `wake` becomes readable when the run is to be cancelled; it stays the caller's.
    ChildPipeline(const std::vector<ChildLaunch>& launches, const FileDescriptor& wake);
    ChildPipeline(const ChildPipeline&) = delete;
    ChildPipeline& operator=(const ChildPipeline&) = delete;
    ~ChildPipeline();

    /// Runs everything to its end. Once for an object.
    std::vector<ChildOutcome> run(const ChildProcess::Observers& observers);

private:
    using Clock = std::chrono::steady_clock;
    using Moment = Clock::time_point;

    struct Child {
        pid_t pid = -1;
        FileDescriptor processDescriptor;  // absent where the system has none: then we look often
        ino_t outputPipe = 0;              // of a child that feeds the next one
        CapturedStream output;
        CapturedStream errorOutput;
        std::optional<TerminationStatus> status;
        bool reaped = false;
        Moment startMoment;
        Moment endMoment;
        bool outputWasHeldOpen = false;
    };

    void startAll(const ChildProcess::Observers& observers);
    std::optional<std::string> startOne(std::size_t index, FileDescriptor& input);

    [[nodiscard]] bool isFinished() const;
    [[nodiscard]] bool anyStreamOpen() const;
    [[nodiscard]] bool allEnded() const;
    void waitForEvent();
    [[nodiscard]] std::vector<pollfd> descriptorsToPoll() const;
    [[nodiscard]] int pollTimeout() const;
    void readStreams(const ChildProcess::Observers& observers);
    void noteEndedChildren();
    static void noteEnd(Child& child);

    void beginEnding();
    void noteOrphanedLockFiles();
    void continueEnding();
    void signalAll(int signalNumber);
    void releaseStreamsHeldByOthers();
    void releaseInputHeldByOthers();
    void reapAll();

    const std::vector<ChildLaunch>& _launches;
    const FileDescriptor& _wake;
    std::vector<Child> _children;
    OrphanedLockFiles _halfMadeLocks;       // of sessions that are being ended
    std::optional<Moment> _killMoment;      // set while the sessions are being ended
    std::optional<Moment> _streamDeadline;  // set once all children have ended
    std::optional<Moment> _inputDeadline;   // set once a child ended before the one it feeds
};

}  // namespace neb
