#include "Platform/ChildPipeline.h"

#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "Platform/ChildSession.h"
#include "Platform/ChildSpawn.h"
#include "Platform/ErrnoText.h"
#include "Platform/PipeWriters.h"

namespace neb {

namespace {

using std::chrono::milliseconds;

/// How long a session that was asked to end may take before it is made to.
constexpr milliseconds endingGrace{2000};
/// How long a session that was stopped may take to be so.
constexpr milliseconds stoppingGrace{100};
/// How long, after the last child's end, another process may keep its streams open. git's own
/// background work lets go within 31 ms of git's end; only a hook's left-over process takes longer.
constexpr milliseconds streamGrace{250};
/// How long a process that outlived its child may keep the input of the next child open.
constexpr milliseconds inputGrace{1000};
/// How often to look where no descriptor tells us.
constexpr milliseconds lookInterval{20};

/// A descriptor that becomes readable when the process ends; not open where the system has none.
FileDescriptor openProcessDescriptor(pid_t pid) {
#ifdef SYS_pidfd_open
    return FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));  // close-on-exec
#else
    static_cast<void>(pid);
    return {};
#endif
}

}  // namespace

ChildPipeline::ChildPipeline(const std::vector<ChildLaunch>& launches, const FileDescriptor& wake)
    : _launches(launches), _wake(wake) {}

ChildPipeline::~ChildPipeline() {
    // Only an exception on the way (no memory) leaves a child behind here.
    for (const Child& child : _children) {
        if (child.pid > 0 && !child.reaped) {
            signalSession(child.pid, SIGKILL);
        }
    }
    reapAll();
}

std::vector<ChildOutcome> ChildPipeline::run(const ChildProcess::Observers& observers) {
    startAll(observers);
    while (!isFinished()) {
        waitForEvent();
        readStreams(observers);
        noteEndedChildren();
        continueEnding();
        releaseInputHeldByOthers();
        releaseStreamsHeldByOthers();
    }
    reapAll();
    _halfMadeLocks.remove();

    std::vector<ChildOutcome> outcomes;
    for (Child& child : _children) {
        outcomes.push_back({.status = *child.status,
                            .output = child.output.takeData(),
                            .errorOutput = child.errorOutput.takeData(),
                            .outputWasHeldOpen = child.outputWasHeldOpen,
                            .duration = child.endMoment - child.startMoment});
    }
    return outcomes;
}

// ---- start ------------------------------------------------------------------------------------

void ChildPipeline::startAll(const ChildProcess::Observers& observers) {
    _children.resize(_launches.size());
    FileDescriptor input;
    bool failed = false;
    for (std::size_t i = 0; i < _launches.size(); ++i) {
        Child& child = _children[i];
        child.startMoment = child.endMoment = Clock::now();
        if (failed) {
            child.status = TerminationStatus::notStarted(
                "the program \"" + _launches[i].launchPath +
                "\" was not started, as another one of its pipeline could not be");
        } else if (auto failure = startOne(i, input)) {
            child.status = TerminationStatus::notStarted(*failure);
            failed = true;
        } else if (observers.started) {
            observers.started(i);
        }
    }
    if (failed) {
        beginEnding();
    }
}

/// Starts the child with the read end `input` as its standard input (the first one has none) and
/// leaves there the read end that the next child is to have. Answers why it could not.
std::optional<std::string> ChildPipeline::startOne(std::size_t index, FileDescriptor& input) {
    const bool isLast = index + 1 == _launches.size();
    const ChildLaunch& launch = _launches[index];
    Child& child = _children[index];

    Pipe output;
    Pipe errorOutput;
    int failure = openPipe(output, PipeSize::large);
    if (failure == 0) {
        failure = openPipe(errorOutput, PipeSize::large);
    }
    if (failure == 0 && isLast) {
        failure = setNonBlocking(output.readEnd);
    }
    if (failure == 0) {
        failure = setNonBlocking(errorOutput.readEnd);
    }
    if (failure != 0) {
        return "the program \"" + launch.launchPath +
               "\" could not be started: no pipe for it: " + textOfErrno(failure);
    }

    ChildStreams streams{.standardInput = std::nullopt,
                         .standardOutput = output.writeEnd.get(),
                         .standardError = errorOutput.writeEnd.get()};
    if (input.isOpen()) {
        streams.standardInput = input.get();
    }
    const SpawnedChild spawned = spawnChild(launch, streams);
    if (spawned.pid < 0) {
        return spawned.failure;
    }
    child.pid = spawned.pid;
    child.processDescriptor = openProcessDescriptor(spawned.pid);
    child.errorOutput = CapturedStream(std::move(errorOutput.readEnd));
    input.close();
    if (isLast) {
        child.output = CapturedStream(std::move(output.readEnd));
    } else {
        child.outputPipe = pipeNumber(output.readEnd);
        input = std::move(output.readEnd);
    }
    return std::nullopt;
}

// ---- the loop ---------------------------------------------------------------------------------

bool ChildPipeline::allEnded() const {
    return std::all_of(_children.begin(), _children.end(),
                       [](const Child& child) { return child.status.has_value(); });
}

bool ChildPipeline::anyStreamOpen() const {
    return std::any_of(_children.begin(), _children.end(), [](const Child& child) {
        return child.output.isOpen() || child.errorOutput.isOpen();
    });
}

bool ChildPipeline::isFinished() const {
    if (!allEnded()) {
        return false;
    }
    if (anyStreamOpen() || !_killMoment) {
        return !anyStreamOpen();
    }
    // A session that was told to end is waited for: nothing of it stays behind. After SIGKILL only
    // a process that the kernel itself holds up is left, and nobody can end that one.
    if (Clock::now() > *_killMoment + endingGrace) {
        return true;
    }
    return std::none_of(_children.begin(), _children.end(), [](const Child& child) {
        return child.pid > 0 && sessionHasLiveMembers(child.pid);
    });
}

std::vector<pollfd> ChildPipeline::descriptorsToPoll() const {
    std::vector<pollfd> descriptors;
    const auto add = [&descriptors](int descriptor) {
        if (descriptor >= 0) {
            descriptors.push_back({.fd = descriptor, .events = POLLIN, .revents = 0});
        }
    };
    add(_killMoment ? -1 : _wake.get());
    for (const Child& child : _children) {
        add(child.output.descriptor());
        add(child.errorOutput.descriptor());
        if (!child.status) {
            add(child.processDescriptor.get());
        }
    }
    return descriptors;
}

/// Milliseconds until something is due, -1 when only a descriptor can tell.
int ChildPipeline::pollTimeout() const {
    std::optional<Moment> next;
    const auto consider = [&next](Moment moment) {
        next = next ? std::min(*next, moment) : moment;
    };
    const bool mustLook =
        _killMoment || std::any_of(_children.begin(), _children.end(), [](const Child& child) {
            return !child.status && !child.processDescriptor.isOpen();
        });
    const Moment now = Clock::now();
    if (mustLook) {
        consider(now + lookInterval);
    }
    if (_streamDeadline && anyStreamOpen()) {
        consider(*_streamDeadline);
    }
    if (_inputDeadline) {
        consider(*_inputDeadline);
    }
    if (!next) {
        return -1;
    }
    const auto left = std::chrono::ceil<milliseconds>(*next - now).count();
    return static_cast<int>(std::max<decltype(left)>(left, 0));
}

void ChildPipeline::waitForEvent() {
    std::vector<pollfd> descriptors = descriptorsToPoll();
    // A failure of poll itself (a signal, no memory) is answered by looking again.
    const int count = ::poll(descriptors.data(), descriptors.size(), pollTimeout());
    if (count > 0 && !_killMoment && descriptors.front().revents != 0) {
        beginEnding();
    }
}

void ChildPipeline::readStreams(const ChildProcess::Observers& observers) {
    const std::size_t former = _children.back().output.data().size();
    for (Child& child : _children) {
        for (CapturedStream* stream : {&child.output, &child.errorOutput}) {
            if (stream->isOpen()) {
                stream->readAvailable();
            }
        }
    }
    const Data& output = _children.back().output.data();
    if (observers.outputGrew && output.size() > former && !_killMoment) {
        observers.outputGrew(output);
    }
}

void ChildPipeline::noteEndedChildren() {
    for (Child& child : _children) {
        if (!child.status) {
            noteEnd(child);
        }
    }
    const Moment now = Clock::now();
    if (!_streamDeadline && allEnded()) {
        _streamDeadline = now + streamGrace;
    }
    for (std::size_t i = 0; i + 1 < _children.size(); ++i) {
        if (!_inputDeadline && _children[i].status && !_children[i + 1].status) {
            _inputDeadline = now + inputGrace;
        }
    }
}

/// Looks whether the child has ended, and leaves it unreaped: as long as it is, its number, which
/// is its session's, cannot become another process's.
void ChildPipeline::noteEnd(Child& child) {
    siginfo_t information{};
    int answer = 0;
    do {
        answer = ::waitid(P_PID, static_cast<id_t>(child.pid), &information,
                          WEXITED | WNOHANG | WNOWAIT);
    } while (answer != 0 && errno == EINTR);
    if (answer != 0) {
        child.reaped = true;  // by the host, which ignores SIGCHLD or waits for any child
        child.status =
            TerminationStatus::unknown("how it ended could not be learned: " + textOfErrno(errno));
    } else if (information.si_pid == 0) {
        return;  // still running
    } else if (information.si_code == CLD_EXITED) {
        child.status = TerminationStatus::exited(information.si_status);
    } else {
        child.status = TerminationStatus::signalled(information.si_status);
    }
    child.endMoment = Clock::now();
}

// ---- the end ----------------------------------------------------------------------------------

/// A git that is stopped is either in the middle of making a lock, which can be seen, or knows it.
void ChildPipeline::noteOrphanedLockFiles() {
    signalAll(SIGSTOP);
    const Moment deadline = Clock::now() + stoppingGrace;
    const auto isStopped = [](const Child& child) {
        return child.pid <= 0 || isSessionStopped(child.pid);
    };
    while (!std::all_of(_children.begin(), _children.end(), isStopped) && Clock::now() < deadline) {
        ::poll(nullptr, 0, 1);
    }
    for (const Child& child : _children) {
        if (child.pid > 0) {
            _halfMadeLocks.noteOf(child.pid);
        }
    }
}

/// Asks all sessions to end. git removes its lock files on SIGTERM; SIGCONT lets a stopped process
/// hear of it.
void ChildPipeline::beginEnding() {
    noteOrphanedLockFiles();
    _killMoment = Clock::now() + endingGrace;
    signalAll(SIGTERM);
    signalAll(SIGCONT);
}

/// Makes them end where the grace was not enough: at each look, as a process may have been born
/// since the last one.
void ChildPipeline::continueEnding() {
    const Moment now = Clock::now();
    if (!_killMoment || now < *_killMoment) {
        return;
    }
    signalAll(SIGKILL);
    if (now < *_killMoment + endingGrace) {
        return;
    }
    for (Child& child : _children) {
        if (!child.status) {  // held up inside the kernel: nobody can end it, and we do not wait
            child.reaped = true;
            child.endMoment = now;
            child.status = TerminationStatus::unknown("it did not end when it was killed");
        }
    }
}

/// Signals every session, whole. The number of one whose leader the host has reaped may belong to
/// another session by now, so only its members are signalled, each by its own number.
void ChildPipeline::signalAll(int signalNumber) {
    for (const Child& child : _children) {
        if (child.pid > 0 && child.reaped) {
            signalMembers(child.pid, signalNumber);
        } else if (child.pid > 0) {
            signalSession(child.pid, signalNumber);
        }
    }
}

/// A process that outlived its child may keep the pipe to the next child open, which would wait for
/// its end of input for ever; so the process must go. One that the host has forked is not ours to
/// end: the pipeline cannot come to its end then.
void ChildPipeline::releaseInputHeldByOthers() {
    if (!_inputDeadline || Clock::now() < *_inputDeadline) {
        return;
    }
    for (std::size_t i = 0; i + 1 < _children.size(); ++i) {
        Child& child = _children[i];
        if (!child.status || _children[i + 1].status || child.outputPipe == 0) {
            continue;
        }
        for (const pid_t holder : processesWritingTo(child.outputPipe)) {
            child.outputWasHeldOpen = true;
            if (!killIfFromChild(holder, child.pid) && !_killMoment) {
                beginEnding();
            }
        }
    }
    _inputDeadline = Clock::now() + inputGrace;
}

void ChildPipeline::releaseStreamsHeldByOthers() {
    if (!_streamDeadline || Clock::now() < *_streamDeadline) {
        return;
    }
    for (Child& child : _children) {
        for (CapturedStream* stream : {&child.output, &child.errorOutput}) {
            if (stream->isOpen()) {
                child.outputWasHeldOpen |= stream->readRestAndClose();
            }
        }
    }
}

void ChildPipeline::reapAll() {
    for (Child& child : _children) {
        if (child.pid > 0 && !child.reaped) {
            while (::waitpid(child.pid, nullptr, 0) < 0 && errno == EINTR) {
            }
            child.reaped = true;
        }
    }
}

}  // namespace neb
