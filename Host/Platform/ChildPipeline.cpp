#include "Platform/ChildPipeline.h"

#include <poll.h>
#include <signal.h>

#include <algorithm>

namespace neb {

namespace {

using std::chrono::milliseconds;

/// The time between SIGTERM and SIGKILL, and between SIGKILL and giving up.
constexpr milliseconds endingGrace{2000};
/// The time that processes get to stop after SIGSTOP. On a busy machine they may have to wait until
/// they run again, and could create a file until then.
constexpr milliseconds stoppingGrace{2000};
/// The time for those that are blocked in the kernel.
constexpr milliseconds blockedGrace{100};
/// The longest time between two looks at the processes, which get a processor in between.
constexpr milliseconds longestStopCheck{16};
/// The time, after the end of the last child, that other processes may keep its streams open. The
/// background processes of git close them within 31 ms; only those of hooks take longer.
constexpr milliseconds streamGrace{250};
/// The time that a process that outlives its child may keep the input of the next child open.
constexpr milliseconds inputGrace{1000};
/// An output that grows by less than this at each of so many reads in a row is read only every
/// millisecond: a process that wakes for each line of another one slows both down.
constexpr std::size_t smallGrowth = 1U << 14;
constexpr int smallReadsBeforeRest = 16;
constexpr milliseconds restBetweenReads{1};
/// The interval of checks for events that no descriptor reports.
constexpr milliseconds checkInterval{20};

}  // namespace

ChildPipeline::ChildPipeline(const std::vector<ChildLaunch>& launches,
                             const ChildObservers& observers, const ChildLimits& limits,
                             const FileDescriptor& wake)
    : _launches(launches), _observers(observers), _wake(wake), _limits(limits) {}

/// Kills the children that are left if an exception (out of memory) ended the run.
ChildPipeline::~ChildPipeline() {
    for (const PipelineChild& child : _children) {
        if (child.mustBeReaped()) {
            child.signalSession(SIGKILL);
        }
    }
    for (PipelineChild& child : _children) {
        child.reap();
    }
}

std::vector<ChildOutcome> ChildPipeline::run() {
    startAll();
    while (!isFinished()) {
        waitForEvent();
        readStreams();
        for (PipelineChild& child : _children) {
            child.checkForEnd();
        }
        checkLimits();
        advanceEnding();
        releaseInputHeldByOthers();
        closeStreamsHeldByOthers();
    }
    std::vector<ChildOutcome> outcomes;
    for (PipelineChild& child : _children) {
        child.reap();
        outcomes.push_back(child.takeOutcome());
    }
    if (_exceededLimit) {
        outcomes[_exceedingChild].exceededLimit = _exceededLimit;
    }
    return outcomes;
}

void ChildPipeline::startAll() {
    _children.resize(_launches.size());
    FileDescriptor input;
    bool failed = false;
    for (std::size_t i = 0; i < _launches.size(); ++i) {
        if (failed) {
            _children[i].recordNotStarted(
                "the program \"" + _launches[i].launchPath +
                "\" was not started, as another one of its pipeline could not be");
        } else if (!_children[i].start(_launches[i], input, i + 1 < _launches.size())) {
            failed = true;
        } else if (_observers.started) {
            _observers.started(i);
        }
    }
    if (failed) {
        requestEnd();
    }
}

// ---- the loop ---------------------------------------------------------------------------------

bool ChildPipeline::anyRunning() const {
    return std::any_of(_children.begin(), _children.end(),
                       [](const PipelineChild& child) { return child.isRunning(); });
}

/// Those behind it wait for its output.
std::size_t ChildPipeline::firstRunning() const {
    const auto found = std::find_if(_children.begin(), _children.end(),
                                    [](const PipelineChild& child) { return child.isRunning(); });
    return static_cast<std::size_t>(found - _children.begin());
}

bool ChildPipeline::anyStreamOpen() const {
    return std::any_of(_children.begin(), _children.end(),
                       [](const PipelineChild& child) { return child.hasOpenStream(); });
}

bool ChildPipeline::anyProcessAlive() const {
    return std::any_of(_children.begin(), _children.end(),
                       [](const PipelineChild& child) { return !child.liveProcesses().empty(); });
}

/// A cancelled run leaves no process behind, so it also waits for the rest of the sessions.
bool ChildPipeline::isFinished() const {
    if (anyRunning() || anyStreamOpen()) {
        return false;
    }
    return _ending == Ending::none || _ending == Ending::givenUp || !anyProcessAlive();
}

std::vector<pollfd> ChildPipeline::descriptorsToPoll() const {
    std::vector<pollfd> descriptors;
    const auto add = [&descriptors](int descriptor) {
        if (descriptor >= 0) {
            descriptors.push_back({.fd = descriptor, .events = POLLIN, .revents = 0});
        }
    };
    add(_ending == Ending::none ? _wake.get() : -1);
    for (const PipelineChild& child : _children) {
        const bool rests = _restsBeforeNextRead && &child == &_children.back();
        add(rests ? -1 : child.output.descriptor());
        add(child.errorOutput.descriptor());
        if (child.isRunning()) {
            add(child.processDescriptor());
        }
    }
    return descriptors;
}

bool ChildPipeline::mustCheckRegularly() const {
    return _ending != Ending::none ||
           std::any_of(_children.begin(), _children.end(), [](const PipelineChild& child) {
               return child.isRunning() && child.processDescriptor() < 0;
           });
}

/// Returns the milliseconds until something is due, -1 if only a descriptor can report an event.
int ChildPipeline::pollTimeout() const {
    const Moment now = Clock::now();
    std::optional<Moment> next;
    for (const std::optional<Moment> moment :
         {_restsBeforeNextRead ? std::optional<Moment>(now + restBetweenReads) : std::nullopt,
          _ending == Ending::none && anyRunning() ? _limits.deadline() : std::nullopt,
          mustCheckRegularly() ? std::optional<Moment>(now + checkInterval) : std::nullopt,
          anyStreamOpen() ? streamDeadline() : std::nullopt, inputDeadline()}) {
        if (moment && (!next || *moment < *next)) {
            next = moment;
        }
    }
    if (!next) {
        return -1;
    }
    const auto left = std::chrono::ceil<milliseconds>(*next - now).count();
    return static_cast<int>(std::max<decltype(left)>(left, 0));
}

void ChildPipeline::waitForEvent() {
    std::vector<pollfd> descriptors = descriptorsToPoll();
    // If poll fails (a signal, no memory), the loop continues and calls it again.
    const int count = ::poll(descriptors.data(), descriptors.size(), pollTimeout());
    if (count > 0 && _ending == Ending::none && descriptors.front().revents != 0) {
        requestEnd();
    }
}

void ChildPipeline::readStreams() {
    const std::uint64_t previousOutput = _children.back().output.arrived();
    std::uint64_t largestGrowth = 0;
    for (std::size_t i = 0; i < _children.size(); ++i) {
        PipelineChild& child = _children[i];
        const auto arrived = [&child] {
            return child.output.arrived() + child.errorOutput.arrived();
        };
        const std::uint64_t before = arrived();
        child.readStreams();
        const std::uint64_t growth = arrived() - before;
        _limits.addOutput(growth, Clock::now());
        if (growth > largestGrowth) {
            largestGrowth = growth;
            _lastWriter = i;
        }
    }
    checkLimits();
    reportOutput(_children.back().output.arrived() - previousOutput);
}

void ChildPipeline::reportOutput(std::uint64_t growth) {
    _smallReads = growth < smallGrowth ? _smallReads + 1 : 0;
    _restsBeforeNextRead = growth > 0 && _smallReads >= smallReadsBeforeRest;
    if (_observers.outputGrew && growth > 0 && _ending == Ending::none) {
        CapturedStream& output = _children.back().output;
        const Moment begin = Clock::now();
        output.removeFirst(
            _observers.outputGrew({.data = output.data(), .isDrained = output.isDrained()}));
        _limits.addHeldBack(begin, Clock::now());
    }
}

/// Children that are ending already have another reason for it.
void ChildPipeline::checkLimits() {
    if (_ending == Ending::none && anyRunning()) {
        _exceededLimit = _limits.exceededLimit(Clock::now());
        if (_exceededLimit) {
            _exceedingChild =
                _exceededLimit == ChildLimit::outputBytes ? _lastWriter : firstRunning();
            requestEnd();
        }
    }
}

// ---- ending the children ----------------------------------------------------------------------

/// git removes its lock files on SIGTERM. SIGCONT resumes stopped processes so that they handle it.
void ChildPipeline::requestEnd() {
    if (_ending != Ending::none) {
        return;
    }
    reportStoppedProcesses();
    _ending = Ending::requested;
    _nextEnding = Clock::now() + endingGrace;
    signalAll(SIGTERM);
    signalAll(SIGCONT);
}

void ChildPipeline::reportStoppedProcesses() {
    if (!_observers.stopped) {
        return;
    }
    signalAll(SIGSTOP);
    waitUntilStopped();
    std::vector<pid_t> processes;
    for (const PipelineChild& child : _children) {
        const std::vector<pid_t> live = child.liveProcesses();
        processes.insert(processes.end(), live.begin(), live.end());
    }
    _observers.stopped(processes);
}

void ChildPipeline::waitUntilStopped() const {
    const Moment begin = Clock::now();
    milliseconds pause{1};
    while (true) {
        StopProgress progress = StopProgress::complete;
        for (const PipelineChild& child : _children) {
            progress = std::max(progress, child.stopProgress());
        }
        const auto grace = progress == StopProgress::running ? stoppingGrace : blockedGrace;
        if (progress == StopProgress::complete || Clock::now() >= begin + grace) {
            return;
        }
        ::poll(nullptr, 0, static_cast<int>(pause.count()));
        pause = std::min(2 * pause, longestStopCheck);
    }
}

void ChildPipeline::advanceEnding() {
    const Moment now = Clock::now();
    if (_ending == Ending::requested && now >= _nextEnding) {
        _ending = Ending::forced;
        _nextEnding += endingGrace;
    }
    if (_ending != Ending::forced) {
        return;
    }
    signalAll(SIGKILL);
    if (now >= _nextEnding) {
        _ending = Ending::givenUp;
        for (PipelineChild& child : _children) {
            child.giveUp();
        }
    }
}

void ChildPipeline::signalAll(int signalNumber) {
    for (const PipelineChild& child : _children) {
        child.signalSession(signalNumber);
    }
}

// ---- streams that other processes hold open ---------------------------------------------------

/// Absent while a child runs.
std::optional<ChildPipeline::Moment> ChildPipeline::streamDeadline() const {
    if (anyRunning()) {
        return std::nullopt;
    }
    Moment lastEnd{};
    for (const PipelineChild& child : _children) {
        lastEnd = std::max(lastEnd, child.endMoment());
    }
    return lastEnd + streamGrace;
}

void ChildPipeline::closeStreamsHeldByOthers() {
    if (const auto deadline = streamDeadline(); deadline && Clock::now() >= *deadline) {
        for (PipelineChild& child : _children) {
            child.closeStreams();
        }
    }
}

bool ChildPipeline::endedBeforeNext(std::size_t index) const {
    return index + 1 < _children.size() && !_children[index].isRunning() &&
           _children[index + 1].isRunning();
}

/// Absent unless a child runs whose input may be held open.
std::optional<ChildPipeline::Moment> ChildPipeline::inputDeadline() const {
    std::optional<Moment> deadline;
    for (std::size_t i = 0; i < _children.size(); ++i) {
        if (endedBeforeNext(i)) {
            const Moment moment = std::max(_children[i].endMoment() + inputGrace, _nextInputCheck);
            deadline = deadline ? std::min(*deadline, moment) : moment;
        }
    }
    return deadline;
}

/// Kills the processes that keep a child waiting for the end of its input. A fork of the host is
/// not killed; then the pipeline cannot finish and is ended.
void ChildPipeline::releaseInputHeldByOthers() {
    const Moment now = Clock::now();
    if (const auto deadline = inputDeadline(); !deadline || now < *deadline) {
        return;
    }
    for (std::size_t i = 0; i < _children.size(); ++i) {
        if (endedBeforeNext(i) && !_children[i].killHoldersOfOutput()) {
            requestEnd();
        }
    }
    _nextInputCheck = now + inputGrace;
}

}  // namespace neb
