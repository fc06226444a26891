// ChildPipeline.h - one run of a pipeline of children. Inside the host library only.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <vector>

#include "Platform/ChildRun.h"
#include "Platform/FileDescriptor.h"
#include "Platform/LimitWatch.h"
#include "Platform/PipelineChild.h"

struct pollfd;

namespace neb {

/// Starts the children, collects what they write, ends them on request and reaps them. ChildProcess
/// is its public interface. Not thread-safe.
class ChildPipeline {
public:
    /// All arguments must outlive the object. The run is cancelled when `wake` becomes readable.
    ChildPipeline(const std::vector<ChildLaunch>& launches, const ChildObservers& observers,
                  const ChildLimits& limits, const FileDescriptor& wake);
    ChildPipeline(const ChildPipeline&) = delete;
    ChildPipeline& operator=(const ChildPipeline&) = delete;
    ~ChildPipeline();

    /// Runs the children to their end and returns an outcome for each. Call this once.
    std::vector<ChildOutcome> run();
    /// Begins to end all children. Only within an observer, or on another thread while one runs and
    /// cannot return: the observer may block, but the children end.
    void requestEnd();

private:
    using Clock = PipelineChild::Clock;
    using Moment = PipelineChild::Moment;

    /// How far the children have been made to end: none -> requested -> forced -> givenUp.
    enum class Ending {
        none,
        /// SIGTERM was sent.
        requested,
        /// SIGKILL is sent repeatedly, because new processes may have been forked.
        forced,
        /// A process survived SIGKILL, which happens only inside the kernel.
        givenUp,
    };

    void startAll();

    [[nodiscard]] bool isFinished() const;
    [[nodiscard]] bool anyRunning() const;
    /// Returns the first child that runs; one must.
    [[nodiscard]] std::size_t firstRunning() const;
    [[nodiscard]] bool anyStreamOpen() const;
    [[nodiscard]] bool anyProcessAlive() const;
    void waitForEvent();
    [[nodiscard]] std::vector<pollfd> descriptorsToPoll() const;
    [[nodiscard]] int pollTimeout() const;
    [[nodiscard]] bool mustCheckRegularly() const;
    void readStreams();
    void reportOutput(std::uint64_t growth);
    void checkLimits();

    void reportStoppedProcesses();
    void waitUntilStopped() const;
    void advanceEnding();
    void signalAll(int signalNumber);

    [[nodiscard]] std::optional<Moment> streamDeadline() const;
    void closeStreamsHeldByOthers();
    [[nodiscard]] bool endedBeforeNext(std::size_t index) const;
    [[nodiscard]] std::optional<Moment> inputDeadline() const;
    void releaseInputHeldByOthers();

    const std::vector<ChildLaunch>& _launches;
    const ChildObservers& _observers;
    const FileDescriptor& _wake;
    LimitWatch _limits;
    /// The child whose output grew most at the last growth.
    std::size_t _lastWriter = 0;
    std::optional<ChildLimit> _exceededLimit;
    /// The child that exceeded the limit.
    std::size_t _exceedingChild = 0;
    std::vector<PipelineChild> _children;
    Ending _ending = Ending::none;
    Moment _nextEnding{};      // when `requested` or `forced` is over
    Moment _nextInputCheck{};  // not before this time
    int _smallReads = 0;       // in a row
    bool _restsBeforeNextRead = false;
};

}  // namespace neb
