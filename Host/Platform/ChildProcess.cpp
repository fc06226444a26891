#include "Platform/ChildProcess.h"

#include <unistd.h>

#include "Platform/ChildPipeline.h"
#include "Platform/ErrnoText.h"
#include "Platform/Interceptor.h"

namespace neb {

namespace {

std::vector<ChildOutcome> noneStarted(const std::vector<ChildLaunch>& launches,
                                      const std::string& reason) {
    std::vector<ChildOutcome> outcomes;
    outcomes.reserve(launches.size());
    for (const ChildLaunch& launch : launches) {
        outcomes.push_back({.status = TerminationStatus::notStarted(
                                "the program \"" + launch.launchPath + "\" " + reason),
                            .output = {},
                            .errorOutput = {}});
    }
    return outcomes;
}

}  // namespace

/// Lets cancel() reach a pipeline while its observer may block.
class ChildProcess::BlockedRun {
public:
    BlockedRun(ChildProcess& process, ChildPipeline& pipeline) : _process(process) {
        setPipeline(&pipeline);
    }
    BlockedRun(const BlockedRun&) = delete;
    BlockedRun& operator=(const BlockedRun&) = delete;
    ~BlockedRun() { setPipeline(nullptr); }

private:
    void setPipeline(ChildPipeline* pipeline) {
        const MutexLock lock(_process._mutex);
        _process._blockedPipeline = pipeline;
    }

    ChildProcess& _process;
};

std::vector<ChildOutcome> ChildProcess::run(const std::vector<ChildLaunch>& launches,
                                            const Observers& observers, const ChildLimits& limits) {
    if (const auto interceptor = Interceptor::ofThread()) {
        return interceptor->runChildren(*this, launches, observers,
                                        [&](const Observers& observing) {
                                            const Interceptor::Scope scope(nullptr);
                                            return run(launches, observing, limits);
                                        });
    }
    FileDescriptor wake;
    if (const int failure = openWakePipe(wake); failure != 0) {
        return noneStarted(launches,
                           "could not be started: no pipe for it: " + textOfErrno(failure));
    }
    if (isCancelled()) {
        closeWakePipe();
        return noneStarted(launches, "was not started, as it was cancelled before");
    }
    Observers reachable = observers;
    ChildPipeline pipeline(launches, reachable, limits, wake);
    if (observers.outputGrew) {
        reachable.outputGrew = [&](const ArrivedOutput& output) {
            const BlockedRun blocked(*this, pipeline);
            return observers.outputGrew(output);
        };
    }
    std::vector<ChildOutcome> outcomes = pipeline.run();
    closeWakePipe();
    return outcomes;
}

int ChildProcess::openWakePipe(FileDescriptor& readEnd) {
    Pipe pipe;
    if (const int failure = openPipe(pipe, PipeSize::ordinary); failure != 0) {
        return failure;
    }
    const MutexLock lock(_mutex);
    readEnd = std::move(pipe.readEnd);
    _wakeWrite = std::move(pipe.writeEnd);
    return 0;
}

void ChildProcess::closeWakePipe() {
    const MutexLock lock(_mutex);
    _wakeWrite.close();
}

void ChildProcess::cancel() {
    const MutexLock lock(_mutex);
    _cancelled = true;
    _cancellation.notify_all();
    _wakeWrite.close();  // the reader sees the end of the pipe; nothing is written that could raise
                         // SIGPIPE
    if (_blockedPipeline != nullptr) {
        _blockedPipeline->requestEnd();
    }
}

bool ChildProcess::waitUnlessCancelled(std::chrono::milliseconds duration) {
    const auto interceptor = Interceptor::ofThread();
    if (interceptor && interceptor->replacesProcesses()) {
        duration = std::chrono::milliseconds(0);
    }
    MutexLock lock(_mutex);
    return !_cancellation.wait_for(lock, duration,
                                   [this]() NEB_REQUIRES(_mutex) { return _cancelled; });
}

bool ChildProcess::isCancelled() const {
    const MutexLock lock(_mutex);
    return _cancelled;
}

}  // namespace neb
