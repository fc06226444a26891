#include "Platform/PipelineChild.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "Platform/ChildSpawn.h"
#include "Platform/ErrnoText.h"
#include "Platform/PipeWriters.h"

namespace neb {

namespace {

FileDescriptor openProcessDescriptor(pid_t pid) {
#ifdef SYS_pidfd_open
    return FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));  // close-on-exec
#else
    static_cast<void>(pid);
    return {};
#endif
}

/// Opens the pipes from a child. Returns 0 or an error number.
int openPipes(Pipe& output, Pipe& errorOutput, bool feedsNext) {
    int failure = openPipe(output, PipeSize::large);
    if (failure == 0) {
        failure = openPipe(errorOutput, PipeSize::large);
    }
    if (failure == 0 && !feedsNext) {
        failure = setNonBlocking(output.readEnd);
    }
    return failure == 0 ? setNonBlocking(errorOutput.readEnd) : failure;
}

}  // namespace

bool PipelineChild::start(const ChildLaunch& launch, FileDescriptor& input, bool feedsNext) {
    _startMoment = _endMoment = Clock::now();
    Pipe outputPipe;
    Pipe errorPipe;
    const std::string notStarted =
        "the program \"" + launch.launchPath + "\" could not be started: ";
    if (const int failure = openPipes(outputPipe, errorPipe, feedsNext); failure != 0) {
        recordNotStarted(notStarted + "no pipe for it: " + textOfErrno(failure));
        return false;
    }
    if (const int failure = launch.input ? openMemoryFile(input, *launch.input) : 0; failure != 0) {
        recordNotStarted(notStarted + "no memory for its input: " + textOfErrno(failure));
        return false;
    }
    const SpawnedChild spawned = spawnChild(
        launch, {.standardInput = input.isOpen() ? ChildStream::copyOf(input.get())
                                                 : ChildStream::file("/dev/null", O_RDONLY),
                 .standardOutput = ChildStream::copyOf(outputPipe.writeEnd.get()),
                 .standardError = ChildStream::copyOf(errorPipe.writeEnd.get()),
                 .isIsolated = true});
    if (spawned.pid < 0) {
        recordNotStarted(spawned.failure);
        return false;
    }
    _pid = spawned.pid;
    _state = State::running;
    _processDescriptor = openProcessDescriptor(spawned.pid);
    errorOutput = CapturedStream(std::move(errorPipe.readEnd), CapturedStream::Keeping::ends);
    if (feedsNext) {
        _outputPipe = pipeNumber(outputPipe.readEnd);
        input = std::move(outputPipe.readEnd);
    } else {
        output = CapturedStream(std::move(outputPipe.readEnd));
        input.close();
    }
    return true;
}

void PipelineChild::recordNotStarted(const std::string& reason) {
    _status = TerminationStatus::notStarted(reason);
}

// ---- the end of the process -------------------------------------------------------------------

void PipelineChild::checkForEnd() {
    if (_state != State::running) {
        return;
    }
    siginfo_t information{};
    int result = 0;
    do {
        result =
            ::waitid(P_PID, static_cast<id_t>(_pid), &information, WEXITED | WNOHANG | WNOWAIT);
    } while (result != 0 && errno == EINTR);
    if (result != 0) {
        // The host ignores SIGCHLD or waits for all children.
        recordEnd(State::reaped, TerminationStatus::unknown("how it ended could not be learned: " +
                                                            textOfErrno(errno)));
    } else if (information.si_pid == 0) {
        return;  // still running
    } else if (information.si_code == CLD_EXITED) {
        recordEnd(State::ended, TerminationStatus::exited(information.si_status));
    } else {
        recordEnd(State::ended, TerminationStatus::signalled(information.si_status));
    }
}

void PipelineChild::giveUp() {
    if (_state == State::running) {
        recordEnd(State::reaped, TerminationStatus::unknown("it did not end when it was killed"));
    }
}

void PipelineChild::recordEnd(State state, TerminationStatus status) {
    _state = state;
    _status = std::move(status);
    _endMoment = Clock::now();
}

bool PipelineChild::mustBeReaped() const {
    return _state == State::running || _state == State::ended;
}

void PipelineChild::reap() {
    if (mustBeReaped()) {
        while (::waitpid(_pid, nullptr, 0) < 0 && errno == EINTR) {
        }
        _state = State::reaped;
    }
}

// ---- the session ------------------------------------------------------------------------------

void PipelineChild::signalSession(int signalNumber) const {
    if (_state == State::reaped) {
        // Another session may have the number of the child by now.
        signalMembers(_pid, signalNumber);
    } else if (_state != State::notStarted) {
        neb::signalSession(_pid, signalNumber);
    }
}

std::vector<pid_t> PipelineChild::liveProcesses() const {
    return _state == State::notStarted ? std::vector<pid_t>() : liveMembers(_pid);
}

StopProgress PipelineChild::stopProgress() const {
    return _state == State::notStarted ? StopProgress::complete : stopProgressOf(_pid);
}

// ---- the streams ------------------------------------------------------------------------------

void PipelineChild::readStreams() {
    for (CapturedStream* stream : {&output, &errorOutput}) {
        if (stream->isOpen()) {
            stream->readAvailable();
        }
    }
}

void PipelineChild::closeStreams() {
    for (CapturedStream* stream : {&output, &errorOutput}) {
        if (stream->isOpen()) {
            _outputWasHeldOpen |= stream->readRestAndClose();
        }
    }
}

bool PipelineChild::killHoldersOfOutput() {
    if (_outputPipe == 0) {
        return true;
    }
    bool areKilled = true;
    for (const pid_t holder : processesWritingTo(_outputPipe)) {
        _outputWasHeldOpen = true;
        areKilled = killIfFromChild(holder, _pid) && areKilled;
    }
    return areKilled;
}

ChildOutcome PipelineChild::takeOutcome() {
    Data errors = errorOutput.takeData();
    return {.status = _status,
            .output = output.takeData(),
            .errorOutput = std::move(errors),
            .outputWasHeldOpen = _outputWasHeldOpen,
            .errorOutputWasCut = errorOutput.wasCut(),
            .duration = _endMoment - _startMoment};
}

}  // namespace neb
